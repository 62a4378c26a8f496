#pragma once

#include "krohost/cli/commands/Command.h"

#include <memory>
#include <variant>

namespace krohost::cli {

/// Reads the arguments; `krohost FILE...` is `krohost info FILE...`. After help or a usage error, which it prints,
/// gives the exit code instead of the command.
std::variant<std::unique_ptr<Command>, int> parseCommandLine(int argumentCount, const char* const* arguments);

} // namespace krohost::cli
