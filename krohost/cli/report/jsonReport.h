#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/report/Report.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace krohost::cli {

/// The document of `krohost info --json`, its dialogs and violations still empty.
nlohmann::ordered_json jsonReport(const Report& report, const Dataset& dataset);

/// JSON that a terminal shows as it is: of what it could take for a command, escapes; of what is not UTF-8, replacement
/// characters. On one line when there is no indent.
std::string jsonText(const nlohmann::ordered_json& value, int indent = -1);

/// The finished document as text: with what went wrong, the first thing as its `error` (empty: nothing did).
std::string jsonText(nlohmann::ordered_json document, const std::vector<std::string>& dialogs,
                     const std::vector<std::string>& violations, const std::string& error);
/// The same on one line.
std::string jsonLine(nlohmann::ordered_json document, const std::vector<std::string>& dialogs,
                     const std::vector<std::string>& violations, const std::string& error);

/// What a command prints as a result when it did not come to one: nothing but for programs.
std::string failureText(const CommandLine& line, const std::string& message);

} // namespace krohost::cli
