#include "krohost/cli/terminal/OutputOptions.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <map>

namespace krohost::cli {

namespace {

void addWhenOption(CLI::App& command, const char* name, When& when, const char* help) {
    const std::map<std::string, When> words{
        {"auto", When::automatic}, {"always", When::always}, {"never", When::never}};
    command.add_option(name, when, help)
        ->transform(CLI::CheckedTransformer(words).description(""))
        ->type_name("auto|always|never");
}

} // namespace

bool applies(When when, int descriptor) {
    return when == When::always || (when == When::automatic && isatty(descriptor) == 1);
}

CLI::Option* addJsonOption(CLI::App& command, OutputOptions& options, const char* help) {
    return command.add_flag(
        "--json", [&options](std::int64_t) { options.form = Form::json; }, help);
}

void addOutputOptions(CLI::App& command, OutputOptions& options) {
    command.add_flag("-q,--quiet", options.isQuiet, "Show no progress and no warnings");
    command.add_flag("-v,--verbose", options.isVerbose, "Say more: the add-on, the loader and the times taken");
    addWhenOption(command, "--progress", options.progress, "Show progress (default: on a terminal)");
    addWhenOption(command, "--color", options.color, "Use colours (default: on a terminal, unless NO_COLOR is set)");
}

} // namespace krohost::cli
