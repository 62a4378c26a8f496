#include "krohost/cli/commands/LoadCommand.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/report/tableReport.h"

#include <CLI/CLI.hpp>

namespace krohost::cli {

namespace {

class Info : public LoadCommand {
public:
    explicit Info(CLI::App& app, bool isReplay) {
        input.isReplay = isReplay;
        if (isReplay)
            app.add_option("FILE", input.files, "The recorded load")->required()->expected(1);
        else
            addNewLoadOptions(app, input);
        addLoadOptions(app);
        app.add_flag("--all", isShowingAll_, "Show every zone, also of a dataset with many");
        addHostOptions(app, host);
        addJsonOption(app, output);
        addOutputOptions(app, output);
        if (isReplay)
            app.add_option("--strand", input.strand,
                           "Strand of the files that --append adds (default: one above the highest)")
                ->needs("--append");
    }

    Outcome run(Session& session) override {
        Outcome outcome;
        Report& report = outcome.report;
        report = loadAndDemand(session);
        const Dataset& dataset = session.host.dataset();
        if (!report.demands.empty())
            report.losses.add(lossesOfLoad(session.plan, allArrays(dataset)));
        if (output.form == Form::json)
            outcome.document = jsonReport(report, dataset);
        else if (report.isLoaded)
            outcome.text = tableReport(report, dataset, session.console.outputStyle(), isShowingAll_);
        return outcome;
    }

    nlohmann::ordered_json emptyDocument() const override { return jsonReport({}, {}); }

private:
    bool isShowingAll_ = false; // every zone, however many there are
};

} // namespace

const CommandEntry infoCommand{
    "info", "Show zones and variables (the default)",
    "  krohost wing.vtu                          what the file holds\n"
    "  krohost info --demand wing.vtu            with the range and checksum of all values\n"
    "  krohost info --json wing.vtu              the same for programs\n"
    "  krohost 'step*.vtu'                       a time series\n"
    "  krohost --record layout.json run.pvd      keeps how it was loaded, for replay\n",
    [](CLI::App& app) -> std::unique_ptr<Command> { return std::make_unique<Info>(app, false); }};

const CommandEntry replayCommand{
    "replay", "The same for a load that --record has written",
    "  krohost replay layout.json                loads once more what was recorded\n"
    "  krohost replay --demand layout.json --append wing.vtu\n",
    [](CLI::App& app) -> std::unique_ptr<Command> { return std::make_unique<Info>(app, true); }};

} // namespace krohost::cli
