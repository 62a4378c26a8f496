#pragma once

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace krohost::cli {

/// When a stream gets what is for people only: with `automatic`, when it is a terminal.
enum class When { automatic, always, never };

/// Whether something that is done only at some times is done for the stream with this descriptor.
bool applies(When when, int descriptor);

/// In which form the result is printed: for people, as one document, or with a line for each item.
enum class Form { text, json, jsonLines };

/// How the user wants to be told.
struct OutputOptions {
    Form form = Form::text;
    bool isQuiet = false; ///< no progress and no warnings
    bool isVerbose = false;
    When progress = When::automatic;
    When color = When::automatic;
};

/// --json, with what the help says of it, and --quiet, --verbose, --progress and --color.
CLI::Option* addJsonOption(CLI::App& command, OutputOptions& options, const char* help = "Print one JSON document");
void addOutputOptions(CLI::App& command, OutputOptions& options);

} // namespace krohost::cli
