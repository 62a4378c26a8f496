/// The commands and options of the tool, as the parser of the command line describes them.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace krohost::cli {

/// What is typed after an option or in place of a positional argument.
enum class ValueKind {
    none, ///< it is a flag
    text,
    file,
    dataFile, ///< a file that a loader or krohost itself can load
    choice    ///< one of a list
};

struct OptionModel {
    std::vector<std::string> names; ///< "-j", "--jobs"; none for a positional argument
    std::string valueName;          ///< "FILE"
    ValueKind kind = ValueKind::none;
    std::vector<std::string> choices;
    bool takesSeveral = false;
    bool isRequired = false;
    std::string description;
};

struct CommandModel {
    std::string name;
    std::string description;
    std::string footer;
    std::vector<OptionModel> options;
    std::vector<OptionModel> positionals;
};

/// A command without its subcommands. What is in no group of the help is left out.
///
/// A value is a file when its type says FILE, and a data file when there may be several of them.
CommandModel commandModel(const CLI::App& command);

/// The models of the commands that the help shows.
std::vector<CommandModel> subcommandModels(const CLI::App& app);

} // namespace krohost::cli
