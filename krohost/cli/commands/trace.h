#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/host/line/Journal.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace CLI {
class App;
}

namespace krohost::cli {

void addTraceOptions(CLI::App& command, CommandLine& line);

/// The calls that the user wants, a line each, as the journal has them.
std::string traceText(const Journal& journal, const CommandLine& line);

/// The same for programs: a list of objects with the `number` of the line (from 1), its `kind` ("call" of the host,
/// "enter" and "return" of a callback of the add-on, "violation") and its `name`, `arguments` and `result`, or the
/// `text` of a violation. What a line does not have is null.
nlohmann::ordered_json traceList(const Journal& journal, const CommandLine& line);

} // namespace krohost::cli
