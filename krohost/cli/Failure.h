#pragma once

#include "krohost/cli/CommandLine.h"

#include <stdexcept>
#include <string>

namespace krohost::cli {

/// Ends a run before its load, or instead of it: a sentence for the user and the exit code.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& message, ExitCode exitCode) : std::runtime_error{message}, exitCode_{exitCode} {}

    ExitCode exitCode() const { return exitCode_; }

private:
    ExitCode exitCode_;
};

} // namespace krohost::cli
