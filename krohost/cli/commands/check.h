#pragma once

#include "krohost/check/Finding.h"
#include "krohost/cli/CommandLine.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/host/runtime/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace krohost::cli {

void addCheckOptions(CLI::App& command, CommandLine& line);

/// What came of the files, each loaded for itself, so that one does not hide what is wrong with another.
struct Check {
    bool isLoaded = false; ///< every file
    std::size_t zoneCount = 0;
    std::size_t arrayCount = 0; ///< variables and node maps of all zones
    std::size_t loadedArrayCount = 0;
    std::vector<check::Finding> findings; ///< file by file

    std::size_t count(check::Severity severity) const;
    /// The message of the first error; empty when there is none.
    std::string firstError() const;
};

/// Loads each file, demands everything in it and looks for what else is wrong, as the user asked for. Ends early at an
/// interrupt.
Check check(Host& host, const CommandLine& line, const Plan& plan, ProgressBar& progress);

/// A line for each finding, `FILE:LINE:COLUMN: error: what [code]`, and one that sums up.
std::string checkText(const Check& check);
/// The same as JSON; docs/schemas/check.schema.json describes it.
nlohmann::ordered_json checkDocument(const Check& check);

} // namespace krohost::cli
