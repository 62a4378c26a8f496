#include "krohost/cli/Console.h"

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

} // namespace

bool applies(When when, int descriptor) {
    return when == When::always || (when == When::automatic && isatty(descriptor) == 1);
}

std::string printable(const std::string& text) {
    std::string result;
    const auto at = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
    };
    for (std::size_t index = 0; index < text.size(); ++index) {
        const int byte = at(index);
        if (byte == 0xC2 && at(index + 1) >= 0x80 && at(index + 1) < 0xA0) // U+0080 to U+009F
            result += fmt::format("\\x{:02x}", at(++index));
        else if ((byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F)
            result += fmt::format("\\x{:02x}", byte);
        else
            result += text[index];
    }
    return result;
}

std::string Style::wrapped(const char* code, std::string_view text) const {
    return isColoured_ ? fmt::format("{}{}\x1b[0m", code, text) : std::string{text};
}

Console::Console(const CommandLine& line)
    : isQuiet_{line.isQuiet}, isVerbose_{line.isVerbose}, outputStyle_{isColoured(line.color, STDOUT_FILENO)},
      errorStyle_{isColoured(line.color, STDERR_FILENO)} {}

void Console::error(const std::string& text) const {
    fmt::print(stderr, "{}\n", errorStyle_.error(printable(text)));
}

void Console::hint(const std::string& text) const {
    fmt::print(stderr, "{}\n", printable(text));
}

void Console::warning(const std::string& text) const {
    if (!isQuiet_)
        fmt::print(stderr, "krohost: warning: {}\n", printable(text));
}

void Console::note(const std::string& text) const {
    if (isVerbose_)
        fmt::print(stderr, "krohost: {}\n", printable(text));
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
