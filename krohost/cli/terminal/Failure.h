/// How a run ends.
#pragma once

#include <stdexcept>
#include <string>

namespace krohost::cli {

enum ExitCode {
    Exit_Done = 0,
    Exit_Failed = 1, ///< the load or a demand failed, or the add-on broke its contract
    Exit_Usage = 2,
    Exit_FileNotOpened = 3,
    Exit_AddOnNotLoaded = 4,
    Exit_Different = 5,     ///< what was compared differs
    Exit_Interrupted = 130, ///< by Ctrl-C; the process ends with 128 plus the number of another signal that stopped it
    Exit_PipeClosed = 141   ///< nobody reads standard output any more
};

/// Ends a run before its load, or instead of it: a sentence for the user and the exit code.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& message, ExitCode exitCode) : std::runtime_error{message}, exitCode_{exitCode} {}

    ExitCode exitCode() const { return exitCode_; }

private:
    ExitCode exitCode_;
};

} // namespace krohost::cli
