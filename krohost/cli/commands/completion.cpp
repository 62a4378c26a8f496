#include "krohost/cli/commands/completion.h"

#include "krohost/cli/input/addOnPath.h"
#include "krohost/cli/shell/bashCompletion.h"
#include "krohost/cli/shell/fishCompletion.h"
#include "krohost/cli/shell/zshCompletion.h"
#include "krohost/host/runtime/Host.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <map>

namespace krohost::cli {

namespace {

/// Of the loaders' patterns those that are an extension, and the time series that krohost reads itself.
std::vector<std::string> dataFileExtensions() {
    std::vector<std::string> extensions{"pvd", "series"};
    try {
        Host host;
        host.loadAddOn(addOnPath({}));
        for (const Loader& loader : host.loaders())
            for (const std::string& pattern : loader.patterns)
                if (pattern.starts_with("*.") && std::all_of(pattern.begin() + 2, pattern.end(),
                                                             [](unsigned char letter) { return std::isalnum(letter); }))
                    extensions.push_back(pattern.substr(2));
    } catch (const AddOnError&) {
        return {};
    }
    std::sort(extensions.begin(), extensions.end());
    extensions.erase(std::unique(extensions.begin(), extensions.end()), extensions.end());
    return extensions;
}

} // namespace

void addCompletionCommand(CLI::App& app) {
    using Script = std::string (*)(const CompletionModel&);
    static const std::map<std::string, Script> scripts{
        {"bash", bashCompletion}, {"fish", fishCompletion}, {"zsh", zshCompletion}};
    CLI::App* command = app.add_subcommand("completion", "Print completions for a shell, to be sourced by it");
    command
        ->add_option_function<std::string>(
            "SHELL",
            [&app](const std::string& shell) {
                const CompletionModel model{commandModel(app), subcommandModels(app), dataFileExtensions()};
                // What a version flag carries is printed instead of a run.
                throw CLI::CallForVersion(scripts.at(shell)(model), CLI::ExitCodes::Success);
            },
            "The shell")
        ->required()
        ->check(CLI::IsMember(&scripts));
}

} // namespace krohost::cli
