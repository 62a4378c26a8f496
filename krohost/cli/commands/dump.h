#pragma once

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/terminal/OutputStream.h"
#include "krohost/host/runtime/Host.h"

#include <memory>

namespace krohost::cli {

/// Writes the variables or the node map that the user chose of the loaded dataset; of a JSON document, all but the end.
/// Adds the demands and losses to the report. When one of them failed and the format has no way to say so, nothing is
/// written, and the result is null. Throws Failure for a choice that cannot be served and for output that cannot be
/// written.
std::unique_ptr<OutputStream> dump(Host& host, const CommandLine& line, const Plan& plan, Report& report);

/// Writes the end, for which the host has been shut down. An interrupted dump leaves no file.
void finishDump(OutputStream& output, const CommandLine& line, const Report& report,
                const std::vector<std::string>& dialogs, const std::vector<std::string>& violations,
                const std::string& error);

} // namespace krohost::cli
