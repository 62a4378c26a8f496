#include "krohost/Host.h"
#include "krohost/cli/CommandLine.h"
#include "krohost/cli/run.h"

#include <malloc.h>
#include <signal.h>

#include <variant>

namespace {

/// The first Ctrl-C stops the current operation in an orderly way; the second one ends the process.
void catchInterruptOnce() {
    struct sigaction action {};
    action.sa_handler = [](int) { krohost::Host::requestInterrupt(); };
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
}

/// What one demand frees serves the next. By default it goes back to the system page by page and is cleared again, which
/// took a fifteenth of a load of many small pieces; from 4 MiB on, where memory is to go back, it has its own mapping.
void keepFreedMemory() {
    mallopt(M_MMAP_THRESHOLD, 4 << 20);
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
}

} // namespace

int main(int argumentCount, char** arguments) {
    const auto parsed = krohost::cli::parseCommandLine(argumentCount, arguments);
    if (const int* exitCode = std::get_if<int>(&parsed))
        return *exitCode;
    catchInterruptOnce();
    keepFreedMemory();
    return krohost::cli::run(std::get<krohost::cli::CommandLine>(parsed));
}
