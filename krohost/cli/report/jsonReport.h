#pragma once

#include "krohost/cli/report/Report.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace krohost::cli {

/// The document of `krohost info --json`, its dialogs and violations still empty.
nlohmann::ordered_json jsonReport(const Report& report, const Dataset& dataset);

/// Null for an empty text.
nlohmann::ordered_json textOrNull(const std::string& text);

/// JSON that a terminal shows as it is: of what it could take for a command, escapes; of what is not UTF-8, replacement
/// characters. On one line when there is no indent.
std::string jsonText(const nlohmann::ordered_json& value, int indent = -1);

} // namespace krohost::cli
