#include "krohost/cli/CommandLine.h"
#include "krohost/cli/run.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/host/runtime/Host.h"

#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <memory>
#include <variant>

namespace {

/// The signal that asked the run to stop; 0: none.
volatile std::sig_atomic_t receivedSignal = 0;
timespec timeOfSignal{}; // which only the handler uses, where signals wait for each other

/// The first signal stops the current operation in an orderly way; one that comes more than a second later ends the
/// process. Programs that end others, as `timeout` does, send theirs to the process and at once to its group.
void stop(int signalNumber) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (receivedSignal == 0) {
        receivedSignal = signalNumber;
        timeOfSignal = now;
        krohost::Host::requestInterrupt();
        return;
    }
    const auto nanoseconds = (now.tv_sec - timeOfSignal.tv_sec) * 1'000'000'000 + (now.tv_nsec - timeOfSignal.tv_nsec);
    if (nanoseconds < 1'000'000'000)
        return;
    signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

void catchSignals() {
    struct sigaction action {};
    action.sa_handler = stop;
    action.sa_flags = static_cast<int>(SA_RESTART);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&action.sa_mask, number);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction hangUp {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN) // as nohup sets it
        sigaction(SIGHUP, &action, nullptr);
    signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error of the write
    signal(SIGPIPE, SIG_IGN); // and so is a pipe that nobody reads
}

/// No file that is opened later may take the place of a standard stream that the caller has closed. Uses of that stream
/// fail as before.
void occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// As a shell tells of a process that a signal has ended.
int exitCodeAfter(int exitCode) {
    const bool wasStopped = exitCode == krohost::cli::Exit_Interrupted && receivedSignal != 0;
    return wasStopped ? 128 + receivedSignal : exitCode;
}

/// What one demand frees serves the next. By default it goes back to the system page by page and is cleared again,
/// which took a fifteenth of a load of many small pieces; from 4 MiB on, where memory is to go back, it has its own
/// mapping.
void keepFreedMemory() {
    mallopt(M_MMAP_THRESHOLD, 4 << 20);  // NOLINT(concurrency-mt-unsafe): there are no threads yet
    mallopt(M_TRIM_THRESHOLD, 64 << 20); // NOLINT(concurrency-mt-unsafe)
}

} // namespace

int main(int argumentCount, char** arguments) {
    occupyStandardDescriptors();
    auto parsed = krohost::cli::parseCommandLine(argumentCount, arguments);
    if (const int* exitCode = std::get_if<int>(&parsed))
        return *exitCode;
    catchSignals();
    keepFreedMemory();
    return exitCodeAfter(krohost::cli::run(*std::get<std::unique_ptr<krohost::cli::Command>>(parsed)));
}
