#pragma once

#include "krohost/cli/shell/CompletionModel.h"

namespace krohost::cli {

/// A script that completes the arguments of krohost in fish.
std::string fishCompletion(const CompletionModel& model);

} // namespace krohost::cli
