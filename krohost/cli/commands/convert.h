#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace CLI {
class App;
}

namespace krohost::cli {

void addConvertOptions(CLI::App& command, CommandLine& line);

struct ConvertOutcome {
    Report report;                  ///< of the load
    convert::Conversion conversion; ///< without files when nothing was written
    std::string error;              ///< why, as far as no dialog says it

    bool isConverted() const { return !conversion.files.empty(); }
    /// Everything that there is of the mesh was written.
    bool isDone() const { return isConverted() && !conversion.isIncomplete; }
};

/// Loads what the plan says and writes it, or writes a file that is not loaded so that it is. Throws Failure for what
/// can be known before the load, and AddOnError.
ConvertOutcome convert(Host& host, const CommandLine& line, const Plan& plan);
ConvertOutcome repair(Host& host, const CommandLine& line, const Plan& plan);

/// What was written, as a line for people; empty when nothing was.
std::string convertText(const CommandLine& line, const ConvertOutcome& outcome);
/// The same as JSON; docs/schemas/convert.schema.json describes it.
nlohmann::ordered_json convertDocument(const ConvertOutcome& outcome);

} // namespace krohost::cli
