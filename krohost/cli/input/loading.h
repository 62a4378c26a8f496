#pragma once

#include "krohost/cli/input/InputOptions.h"
#include "krohost/cli/input/series.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/convert/Outputs.h"
#include "krohost/host/runtime/Host.h"

#include <optional>
#include <string>
#include <vector>

namespace krohost::cli {

/// What a run is to load.
struct Plan {
    std::vector<SeriesFile> files;         ///< none in a replay
    std::optional<Instructions> layout;    ///< of a replay
    std::vector<SeriesFile> appendedFiles; ///< of the second load, if there is one
    convert::Permission permission;        ///< for the files that are written
};

std::vector<std::string> paths(const std::vector<SeriesFile>& files);

/// Looks at what the user named. Throws Failure when it cannot be opened or a collection or layout is malformed.
Plan makePlan(const InputOptions& options, bool isForced);

/// The solution times that were given for a load and that a replay of what it has recorded would not give.
std::vector<double> changedTimes(const InputOptions& options, const Plan& plan, const Instructions& recorded);

/// A file that is to be written.
struct PlannedOutput {
    std::string path; ///< empty: none
    bool mayBeStream; ///< as a FIFO or a terminal
};

/// Looks at the files that are to be written. Throws Failure when one may not be.
void requireFreeOutputs(const std::vector<PlannedOutput>& outputs, Plan& plan);

/// The name of the loader for the first load. Throws Failure for one that is not registered, and AddOnError.
std::string loaderName(const Host& host, const InputOptions& options, const Plan& plan);

/// Says how many files are to be loaded, and warns where no loader is known to be for the first of them.
void announce(const Host& host, const InputOptions& options, const Plan& plan, const Console& console);

/// Loads, then appends. True when everything was loaded.
bool load(Host& host, const std::string& loaderName, const InputOptions& options, const Plan& plan);

} // namespace krohost::cli
