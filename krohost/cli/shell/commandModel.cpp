#include "krohost/cli/shell/commandModel.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace krohost::cli {

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> words;
    std::istringstream stream{text};
    for (std::string word; std::getline(stream, word, separator);)
        words.push_back(word);
    return words;
}

/// From "TEXT:{AUTO,NONE}", or from "auto|never", where words in capitals would stand for others.
std::vector<std::string> choices(const std::string& type) {
    const std::size_t begin = type.find('{');
    if (begin != type.npos)
        return split(type.substr(begin + 1, type.find('}') - begin - 1), ',');
    const bool isList = type.find('|') != type.npos && std::none_of(type.begin(), type.end(), [](unsigned char letter) {
                            return std::isupper(letter) || letter == ' ';
                        });
    return isList ? split(type, '|') : std::vector<std::string>{};
}

ValueKind valueKind(const CLI::Option& option, const OptionModel& model) {
    if (option.get_items_expected_max() == 0)
        return ValueKind::none;
    if (!model.choices.empty())
        return ValueKind::choice;
    const std::string& name = model.valueName;
    if (name.find("FILE") == name.npos && name.find("PATH") == name.npos)
        return ValueKind::text;
    return model.takesSeveral ? ValueKind::dataFile : ValueKind::file;
}

/// The type without what its checks add to it: "INT" of "INT:INT in [1 - 9]".
std::string valueName(const std::string& type) {
    const bool hasCheck = type.find_first_of("{[") != type.npos;
    const std::string name = hasCheck ? type.substr(0, type.find(':')) : type;
    return name.empty() ? "VALUE" : name;
}

OptionModel optionModel(const CLI::Option& option) {
    OptionModel model;
    for (const std::string& name : option.get_snames())
        model.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        model.names.push_back("--" + name);
    const std::string type = option.get_type_name();
    model.valueName = option.get_positional() ? option.get_name(true, false) : valueName(type);
    model.choices = choices(type);
    model.takesSeveral = option.get_items_expected_max() > 1;
    model.isRequired = option.get_required();
    model.description = option.get_description();
    model.kind = valueKind(option, model);
    return model;
}

} // namespace

CommandModel commandModel(const CLI::App& command) {
    CommandModel model{command.get_name(), command.get_description(), command.get_footer(), {}, {}};
    for (const CLI::Option* option : command.get_options())
        if (!option->get_group().empty())
            (option->get_positional() ? model.positionals : model.options).push_back(optionModel(*option));
    return model;
}

std::vector<CommandModel> subcommandModels(const CLI::App& app) {
    std::vector<CommandModel> models;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty())
            models.push_back(commandModel(*command));
    return models;
}

} // namespace krohost::cli
