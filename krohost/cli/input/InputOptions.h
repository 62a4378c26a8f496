/// What the user says of the files to load, of the host that loads them and of the files to write.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace krohost::cli {

struct InputOptions {
    std::vector<std::string> files; ///< or, for a replay, the layout
    bool isReplay = false;
    std::vector<std::string> appendedFiles;
    std::optional<std::string> loader;  ///< by the files' extension when there is none
    std::string timeSource;             ///< in capitals; empty: left to the loader
    std::vector<double> times;          ///< of the first load
    std::optional<std::int32_t> strand; ///< of the load that appends
};

struct HostSettings {
    std::optional<std::filesystem::path> addOn;
    int nodeBitCount = 0; ///< 0: by the size of the zone
    std::optional<std::uint64_t> memoryByteBudget;
};

struct WriteOptions {
    bool isForced = false; ///< existing files are replaced
    bool isStrict = false; ///< nothing is written that has losses
};

/// FILE alone.
void addFilesOption(CLI::App& command, InputOptions& options);

/// FILE, and where the solution times and strands of a new load come from; with any of these the files go through the
/// loader's instructions.
void addNewLoadOptions(CLI::App& command, InputOptions& options);

/// --append.
void addAppendOption(CLI::App& command, InputOptions& options);

void addAddOnOption(CLI::App& command, HostSettings& settings);

/// --addon, --node-bits and --max-memory.
void addHostOptions(CLI::App& command, HostSettings& settings);

/// --jobs, with the number of threads without it.
void addJobsOption(CLI::App& command, unsigned& threadCount, unsigned defaultCount);

void addForceOption(CLI::App& command, WriteOptions& options);
void addStrictOption(CLI::App& command, WriteOptions& options);

} // namespace krohost::cli
