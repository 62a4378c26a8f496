#pragma once

#include "krohost/cli/shell/commandModel.h"

#include <string>
#include <vector>

namespace krohost::cli {

/// What completions are made from. The first command is the one that a command line without any means.
struct CompletionModel {
    CommandModel tool; ///< what may be in place of a command
    std::vector<CommandModel> commands;
    std::vector<std::string> extensions; ///< of data files, without the dot; none: all files are
};

} // namespace krohost::cli
