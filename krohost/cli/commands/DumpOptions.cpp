#include "krohost/cli/commands/DumpOptions.h"

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/options.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <map>

namespace krohost::cli {

namespace {

const std::map<std::string, DumpFormat> formats{
    {"text", DumpFormat::text}, {"csv", DumpFormat::csv}, {"npy", DumpFormat::npy}, {"raw", DumpFormat::raw}};

std::optional<std::int64_t> parsePlace(const std::string& text) {
    std::int64_t place = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), place);
    const bool isWhole = result.ec == std::errc{} && result.ptr == text.data() + text.size();
    return isWhole && place >= 0 ? std::optional{place} : std::nullopt;
}

} // namespace

std::optional<Range> parseRange(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos)
        return std::nullopt;
    const std::string begin = text.substr(0, colon), end = text.substr(colon + 1);
    const std::optional<std::int64_t> first = begin.empty() ? 0 : parsePlace(begin);
    const std::optional<std::int64_t> last = end.empty() ? std::nullopt : parsePlace(end);
    if (!first || (!last && !end.empty()) || (last && *last < *first))
        return std::nullopt;
    return Range{*first, last};
}

void addDumpOptions(CLI::App& command, CommandLine& line) {
    DumpOptions& options = line.dump;
    addNewLoadOptions(command, line);
    CLI::Option* json = command.add_flag("--json", line.isJson, "Write one JSON document");
    auto* variable =
        command.add_option("--variable", options.variables, "Variable to write; several ones become columns")
            ->allow_extra_args(false)
            ->type_name("NAME");
    auto* nodeMap = command
                        .add_flag(
                            "--node-map", [](std::int64_t) {}, "Write the nodes of each element instead")
                        ->excludes(variable);
    command.add_option("--location", options.location, "Which of two variables of one name is meant")
        ->check(CLI::IsMember({"nodal", "cell"}))
        ->needs(variable);
    command.add_option("--zone", options.zone, "Zone, where there are several")->type_name("N|NAME");
    command.add_option("--section", options.section, "Section, from 1 (default: all)")->needs(nodeMap);
    command
        .add_option_function<std::string>(
            "--range", [&options](const std::string& text) { options.range = parseRange(text); },
            "Values or elements from A up to, but without, B, counted from 0; either may be missing")
        ->check([](const std::string& text) { return parseRange(text) ? "" : text + " is not a range"; })
        ->type_name("A:B");
    command
        .add_option_function<std::string>(
            "--format", [&options](const std::string& name) { options.format = formats.at(name); },
            "How to write: text (the default), csv, npy (NumPy) or raw (little-endian)")
        ->check(CLI::IsMember(&formats))
        ->excludes(json);
    command.add_option("-o,--output", options.outputFile, "File to write (default: standard output)")
        ->type_name("FILE");
    addForceOption(command, line);
    addStrictOption(command, line);
    addHostOptions(command, line);
    addOutputOptions(command, line);
    command.callback([variable, nodeMap] {
        if (variable->count() + nodeMap->count() == 0)
            throw CLI::RequiredError("--variable or --node-map");
    });
}

} // namespace krohost::cli
