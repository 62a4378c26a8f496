#pragma once

#include "krohost/cli/commands/ConvertOptions.h"
#include "krohost/cli/commands/DumpOptions.h"
#include "krohost/cli/commands/compareItems.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace krohost::cli {

enum ExitCode {
    Exit_Done = 0,
    Exit_Failed = 1, ///< the load or a demand failed, or the add-on broke its contract
    Exit_Usage = 2,
    Exit_FileNotOpened = 3,
    Exit_AddOnNotLoaded = 4,
    Exit_Different = 5,     ///< what was compared differs
    Exit_Interrupted = 130, ///< by Ctrl-C; the process ends with 128 plus the number of another signal that stopped it
    Exit_PipeClosed = 141   ///< nobody reads standard output any more
};

enum class Command { info, replay, trace, bench, check, dump, diff, convert, addons };

/// When a stream gets what is for people only: with `automatic`, when it is a terminal.
enum class When { automatic, always, never };

/// What the user asked for.
struct CommandLine {
    Command command = Command::info;
    std::vector<std::string> files; ///< of a replay: the layout
    std::vector<std::string> appendedFiles;
    std::optional<std::string> loader;  ///< by the files' extension when there is none
    std::string timeSource;             ///< in capitals; empty: left to the loader
    std::vector<double> times;          ///< of the first load
    std::optional<std::int32_t> strand; ///< of the load that appends
    std::string recordFile;             ///< empty: nothing is recorded
    bool isForced = false;              ///< existing files are replaced
    bool isStrict = false;              ///< nothing is written that has losses
    bool isJson = false;
    bool isJsonLines = false;
    bool isDemanding = false;
    bool isShowingAll = false; ///< every zone, however many there are
    bool isTracingLists = false;
    std::vector<std::string> tracedPrefixes; ///< of the calls that a trace shows; empty: of all
    unsigned threadCount = 1;
    std::optional<std::string> variable; ///< the only one that a bench demands
    bool isExplaining = false;           ///< a check says what a loader refuses
    bool isDeep = false;                 ///< a check decodes every value
    int nodeBitCount = 0;                ///< 0: by the size of the zone
    std::optional<std::uint64_t> memoryByteBudget;
    DumpOptions dump;
    ConvertOptions convert;
    Tolerance tolerance; ///< of diff
    std::optional<std::filesystem::path> addOn;
    bool isQuiet = false; ///< no progress and no warnings
    bool isVerbose = false;
    When progress = When::automatic;
    When color = When::automatic;
};

/// Reads the arguments; `krohost FILE...` is `krohost info FILE...`. After help or a usage error, which it prints,
/// gives the exit code instead.
std::variant<CommandLine, int> parseCommandLine(int argumentCount, const char* const* arguments);

} // namespace krohost::cli
