#pragma once

#include "krohost/cli/shell/CompletionModel.h"

namespace krohost::cli {

/// A script that completes the arguments of krohost in zsh.
std::string zshCompletion(const CompletionModel& model);

} // namespace krohost::cli
