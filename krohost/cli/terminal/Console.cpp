#include "krohost/cli/terminal/Console.h"

#include "krohost/cli/terminal/Failure.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace krohost::cli {

namespace {

bool isEnvironmentSet(const char* name) {
    const char* value = std::getenv(name);
    return value && *value != '\0';
}

bool isColoured(When when, int descriptor) {
    const char* terminal = std::getenv("TERM");
    const bool isRefused = isEnvironmentSet("NO_COLOR") || (terminal && std::strcmp(terminal, "dumb") == 0);
    return when == When::automatic && isRefused ? false : applies(when, descriptor);
}

/// What cannot be written there is lost: there is nobody to tell.
void say(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace

Console::Console(const OutputOptions& options)
    : isQuiet_{options.isQuiet}, isVerbose_{options.isVerbose}, outputStyle_{isColoured(options.color, STDOUT_FILENO)},
      errorStyle_{isColoured(options.color, STDERR_FILENO)} {}

void Console::error(const std::string& text) const {
    say(errorStyle_.error(printableLine(text)) + '\n');
}

void Console::dialog(const std::string& text) const {
    say(errorStyle_.error(printableDialog(text)) + '\n');
}

void Console::hint(const std::string& text) const {
    say(printable(text) + '\n');
}

void Console::warning(const std::string& text) const {
    if (!isQuiet_)
        say(fmt::format("krohost: warning: {}\n", printableLine(text)));
}

void Console::note(const std::string& text) const {
    if (isVerbose_)
        say(fmt::format("krohost: {}\n", printableLine(text)));
}

int Console::print(const std::string& text, int exitCode) const {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return exitCode;
    if (errno == EPIPE)
        return Exit_PipeClosed;
    error(fmt::format("Standard output cannot be written: {}", std::strerror(errno)));
    return exitCode == Exit_Done ? Exit_Failed : exitCode;
}

} // namespace krohost::cli
