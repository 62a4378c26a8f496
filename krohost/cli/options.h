/// Options that several commands share.
#pragma once

#include "krohost/cli/CommandLine.h"

namespace CLI {
class App;
}

namespace krohost::cli {

/// FILE alone.
void addFilesOption(CLI::App& command, CommandLine& line);

/// FILE, and where the solution times and strands of a new load come from; with any of these the files go through the
/// loader's instructions.
void addNewLoadOptions(CLI::App& command, CommandLine& line);

/// --append, --record, --force, --demand and --jobs.
void addLoadOptions(CLI::App& command, CommandLine& line);

/// For commands that write files.
void addForceOption(CLI::App& command, CommandLine& line);

void addStrictOption(CLI::App& command, CommandLine& line);

/// --jobs alone, with the number of threads without it.
void addJobsOption(CLI::App& command, CommandLine& line, unsigned defaultCount);

void addAddOnOption(CLI::App& command, CommandLine& line);

/// --addon, --node-bits and --max-memory.
void addHostOptions(CLI::App& command, CommandLine& line);

/// --quiet, --verbose, --progress and --color.
void addOutputOptions(CLI::App& command, CommandLine& line);

} // namespace krohost::cli
