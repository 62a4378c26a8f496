#include "krohost/Host.h"
#include "krohost/cli/CommandLine.h"
#include "krohost/cli/run.h"

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

} // namespace

int main(int argumentCount, char** arguments) {
    const auto parsed = krohost::cli::parseCommandLine(argumentCount, arguments);
    if (const int* exitCode = std::get_if<int>(&parsed))
        return *exitCode;
    catchInterruptOnce();
    return krohost::cli::run(std::get<krohost::cli::CommandLine>(parsed));
}
