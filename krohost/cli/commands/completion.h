#pragma once

namespace CLI {
class App;
}

namespace krohost::cli {

/// Adds the command that prints completions for a shell, of all commands and options that `app` has when it is run.
/// Data files are completed by the extensions that the add-on's loaders register; without an add-on, all files are.
void addCompletionCommand(CLI::App& app);

} // namespace krohost::cli
