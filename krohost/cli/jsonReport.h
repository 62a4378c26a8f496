#pragma once

#include "krohost/cli/Report.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace krohost::cli {

/// The document of `krohost info --json`, its dialogs and violations still empty.
nlohmann::ordered_json jsonReport(const Report& report, const Dataset& dataset);

/// The finished document as text. Text that is not UTF-8 gets replacement characters.
std::string jsonText(nlohmann::ordered_json document, const std::vector<std::string>& dialogs,
                     const std::vector<std::string>& violations);

} // namespace krohost::cli
