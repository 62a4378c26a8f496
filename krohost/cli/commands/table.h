#pragma once

#include "krohost/cli/commands/Command.h"

#include <array>

namespace krohost::cli {

extern const CommandEntry infoCommand, replayCommand, traceCommand, benchCommand, dumpCommand, diffCommand,
    checkCommand, convertCommand, addOnsCommand;

/// In the order of the help; the first is the default.
inline const std::array commandTable{&infoCommand, &replayCommand, &traceCommand,   &benchCommand, &dumpCommand,
                                     &diffCommand, &checkCommand,  &convertCommand, &addOnsCommand};

} // namespace krohost::cli
