#pragma once

#include "krohost/cli/commands/Command.h"

namespace krohost::cli {

/// Does what the user asked for and gives the exit code. Results go to standard output, all else to standard error.
int run(Command& command);

} // namespace krohost::cli
