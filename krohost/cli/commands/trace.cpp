#include "krohost/cli/commands/trace.h"

#include "krohost/cli/options.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

constexpr std::string_view violationMark = "! contract violation: ";

/// A line of the journal, taken apart: `-> name(arguments)`, `<- name = result` or `name(arguments) = result`.
struct Call {
    std::string_view kind, name, arguments, result;
    bool hasArguments = false;
};

/// Where the parenthesis that `text` begins with is closed; parentheses between quotes do not count.
std::size_t closingParenthesis(std::string_view text) {
    int depth = 0;
    bool isQuoted = false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (isQuoted && text[index] == '\\')
            ++index;
        else if (text[index] == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && text[index] == '(')
            ++depth;
        else if (!isQuoted && text[index] == ')' && --depth == 0)
            return index;
    }
    return text.size();
}

Call parse(std::string_view line) {
    Call call;
    call.kind = line.starts_with("-> ") ? "enter" : line.starts_with("<- ") ? "return" : "call";
    if (call.kind != "call")
        line.remove_prefix(3);
    call.name = line.substr(0, line.find_first_of("( "));
    line.remove_prefix(call.name.size());
    call.hasArguments = line.starts_with('(');
    if (call.hasArguments) {
        const std::size_t end = closingParenthesis(line);
        call.arguments = line.substr(1, end - 1);
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    if (line.starts_with(" = "))
        call.result = line.substr(3);
    return call;
}

bool isWanted(std::string_view line, const std::vector<std::string>& prefixes) {
    if (line.starts_with(violationMark))
        return true;
    const std::string_view name = parse(line).name;
    const auto fits = [name](const std::string& prefix) { return name.starts_with(prefix); };
    return prefixes.empty() || std::any_of(prefixes.begin(), prefixes.end(), fits);
}

ordered_json object(const std::string& line, std::size_t number) {
    if (line.starts_with(violationMark))
        return {{"number", number}, {"kind", "violation"}, {"text", line.substr(violationMark.size())}};
    const Call call = parse(line);
    return {{"number", number},
            {"kind", call.kind},
            {"name", call.name},
            {"arguments", call.hasArguments ? ordered_json(call.arguments) : ordered_json()},
            {"result", call.result.empty() ? ordered_json() : ordered_json(call.result)}};
}

} // namespace

void addTraceOptions(CLI::App& command, CommandLine& line) {
    addNewLoadOptions(command, line);
    addLoadOptions(command, line);
    command.add_flag("--lists", line.isTracingLists, "Include the calls that build and read lists");
    command
        .add_option("--only", line.tracedPrefixes,
                    "Only the calls whose names begin so, and contract violations; may be given several times")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("PREFIX");
    addHostOptions(command, line);
    CLI::Option* lines = command.add_flag("--jsonl", line.isJsonLines, "Print one JSON object a line, one line a call");
    command.add_flag("--json", line.isJson, "Print one JSON document with all calls")->excludes(lines);
    addOutputOptions(command, line);
}

std::string traceText(const Journal& journal, const CommandLine& line) {
    std::string text;
    for (const std::string& call : journal.lines())
        if (isWanted(call, line.tracedPrefixes))
            text += printableLine(call) + '\n';
    return text;
}

ordered_json traceList(const Journal& journal, const CommandLine& line) {
    ordered_json list = ordered_json::array();
    for (std::size_t index = 0; index < journal.lines().size(); ++index)
        if (isWanted(journal.lines()[index], line.tracedPrefixes))
            list.push_back(object(journal.lines()[index], index + 1));
    return list;
}

} // namespace krohost::cli
