#include "krohost/cli/commands/LoadCommand.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>

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

class Trace : public LoadCommand {
public:
    explicit Trace(CLI::App& app) {
        addNewLoadOptions(app, input);
        addLoadOptions(app);
        app.add_flag("--lists", isTracingLists_, "Include the calls that build and read lists");
        app.add_option("--only", prefixes_,
                       "Only the calls whose names begin so, and contract violations; may be given several times")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("PREFIX");
        addHostOptions(app, host);
        CLI::Option* lines = app.add_flag(
            "--jsonl", [this](std::int64_t) { output.form = Form::jsonLines; },
            "Print one JSON object a line, one line a call");
        addJsonOption(app, output, "Print one JSON document with all calls")->excludes(lines);
        addOutputOptions(app, output);
    }

    JournalDetail journalDetail() const override { return isTracingLists_ ? JournalDetail::all : JournalDetail::calls; }

    nlohmann::ordered_json emptyDocument() const override {
        return output.form == Form::jsonLines ? ordered_json{{"kind", "end"}} : ordered_json::object();
    }
    bool isOnOneLine() const override { return output.form == Form::jsonLines; }

    /// The calls of the host's end belong to the trace.
    Outcome run(Session& session) override {
        Outcome outcome;
        outcome.report = loadAndDemand(session);
        outcome.complete = [this, &console = session.console](const Host& ended, Outcome& result) {
            addCalls(ended.journal(), result);
            if (output.form == Form::text && result.text.empty())
                console.warning("no call's name begins so");
        };
        return outcome;
    }

private:
    void addCalls(const Journal& journal, Outcome& outcome) const {
        ordered_json calls = ordered_json::array();
        for (std::size_t index = 0; index < journal.lines().size(); ++index) {
            const std::string& line = journal.lines()[index];
            if (!isWanted(line, prefixes_))
                continue;
            if (output.form == Form::text)
                outcome.text += printableLine(line) + '\n';
            else if (output.form == Form::jsonLines)
                outcome.text += jsonText(object(line, index + 1)) + '\n';
            else
                calls.push_back(object(line, index + 1));
        }
        if (output.form == Form::json)
            outcome.document = {{"calls", std::move(calls)}};
        else
            outcome.document = emptyDocument();
    }

    bool isTracingLists_ = false;
    std::vector<std::string> prefixes_; // of the calls that are shown; empty: of all
};

} // namespace

const CommandEntry traceCommand{"trace", "Print every call between host and add-on",
                                "  krohost trace wing.vtu                    the calls of a load\n"
                                "  krohost trace --only KroUtilDataSet --only KroUtilVar wing.vtu\n"
                                "  krohost trace --demand --jsonl wing.vtu   one JSON object a call\n",
                                [](CLI::App& app) -> std::unique_ptr<Command> { return std::make_unique<Trace>(app); }};

} // namespace krohost::cli
