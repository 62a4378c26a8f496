#include "krohost/cli/commands/LoadCommand.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

bool isWanted(const Event& event, const std::vector<std::string>& prefixes) {
    const auto fits = [&event](const std::string& prefix) { return event.name.starts_with(prefix); };
    return event.kind == Event::Kind::violation || prefixes.empty() ||
           std::any_of(prefixes.begin(), prefixes.end(), fits);
}

ordered_json object(const Event& event, std::size_t number) {
    if (event.kind == Event::Kind::violation)
        return {{"number", number}, {"kind", "violation"}, {"text", event.text}};
    const bool isEnd = event.kind == Event::Kind::leave;
    return {{"number", number},
            {"kind", isEnd                              ? "return"
                     : event.kind == Event::Kind::enter ? "enter"
                                                        : "call"},
            {"name", event.name},
            {"arguments", isEnd ? ordered_json() : ordered_json(event.arguments)},
            {"result", textOrNull(event.result)}};
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
        for (std::size_t index = 0; index < journal.events().size(); ++index) {
            const Event& event = journal.events()[index];
            if (!isWanted(event, prefixes_))
                continue;
            if (output.form == Form::text)
                outcome.text += printableLine(inWords(event)) + '\n';
            else if (output.form == Form::jsonLines)
                outcome.text += jsonText(object(event, index + 1)) + '\n';
            else
                calls.push_back(object(event, index + 1));
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
                                makeCommand<Trace>};

} // namespace krohost::cli
