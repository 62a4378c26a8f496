#include "krohost/cli/commands/dumpFormats.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/conversion.h"
#include "krohost/convert/csv.h"
#include "krohost/convert/damage.h"
#include "krohost/convert/zoneFiles.h"
#include "krohost/reader/pieceArrays.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <map>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

const std::map<std::string, DumpFormat> formats{
    {"text", DumpFormat::text}, {"csv", DumpFormat::csv}, {"npy", DumpFormat::npy}, {"raw", DumpFormat::raw}};

/// The files that the zone may come from: one, where a file is known for each zone.
std::vector<std::filesystem::path> filesOf(const Dataset& dataset, const Zone& zone, const Plan& plan) {
    const std::vector<std::string> names = paths(plan.files);
    if (names.size() == 1 && dataset.zones.size() == 1)
        return {names.front()};
    auto [files, collections, areKnown] = convert::zoneFiles({names.begin(), names.end()}, dataset.zones.size());
    if (areKnown)
        files = {files[static_cast<std::size_t>(zone.number) - 1]};
    return files;
}

class Dump : public Command {
public:
    explicit Dump(CLI::App& app) {
        addNewLoadOptions(app, input);
        CLI::Option* json = addJsonOption(app, output, "Write one JSON document");
        addSelectionOptions(app, selection_);
        app.add_option_function<std::string>(
               "--format", [this](const std::string& name) { format_ = formats.at(name); },
               "How to write: text (the default), csv, npy (NumPy) or raw (little-endian)")
            ->check(CLI::IsMember(&formats))
            ->excludes(json);
        app.add_option("-o,--output", outputFile_, "File to write (default: standard output)")->type_name("FILE");
        addForceOption(app, writing);
        addStrictOption(app, writing);
        addHostOptions(app, host);
        addOutputOptions(app, output);
    }

    std::vector<PlannedOutput> outputs() const override { return {{outputFile_, true}}; }

    /// When a demand failed and the format has no way to say so, nothing is written. Throws Failure for a choice that
    /// cannot be served.
    Outcome run(Session& session) override {
        Outcome outcome;
        if (output.form == Form::json)
            outcome.document = {{"loaded", false}};
        if (!load(session, input, outcome.report))
            return outcome;
        const Dataset& dataset = session.host.dataset();
        requireSafeOutput();
        const bool needsOneSection = format_ == DumpFormat::csv || format_ == DumpFormat::npy;
        const Selection selection = select(dataset, selection_, needsOneSection && output.form == Form::text);
        LoadedSelection values{dataset, selection, {}};
        std::vector<Hold> holds; // of the one node map, or of each variable
        for (const Part& part : selection.parts) {
            if (holds.empty() || !selection.isNodeMap) {
                holds.push_back(session.host.hold(dataset, part.target));
                outcome.report.demands.push_back({part.target, holds.back().data() != nullptr, {}});
            }
            values.parts.push_back({part, holds.back().data()});
        }
        const bool areLoaded = std::all_of(values.parts.begin(), values.parts.end(),
                                           [](const LoadedPart& part) { return part.data != nullptr; });
        if (areLoaded || output.form == Form::json)
            write(session, values, outcome);
        return outcome;
    }

private:
    void requireSafeOutput() const {
        const bool isBinary = format_ == DumpFormat::npy || format_ == DumpFormat::raw;
        if (isBinary && selection_.variables.size() > 1)
            throw Failure("The formats npy and raw take one variable.", Exit_Usage);
        if (isBinary && outputFile_.empty() && isatty(STDOUT_FILENO) == 1)
            throw Failure("The formats npy and raw are not for terminals; name a file with -o.", Exit_Usage);
    }

    void write(const Session& session, const LoadedSelection& values, Outcome& outcome) const {
        outcome.report.losses = lossesOf(values, session.plan);
        if (writing.isStrict && !outcome.report.losses.empty()) {
            outcome.isSound = false;
            outcome.error = convert::LossesNotAllowed{outcome.report.losses}.what();
            if (output.form == Form::json)
                outcome.document = {{"losses", lossList(outcome.report.losses)}};
            return;
        }
        const auto stream = std::make_shared<OutputStream>(outputFile_, session.plan.permission);
        const bool isJson = output.form == Form::json;
        writeDump(*stream, isJson ? DumpFormat::json : format_, values);
        outcome.write = [this, stream, isJson,
                         losses = isJson ? jsonText(lossList(outcome.report.losses)) : ""](const Ending& ending) {
            if (isJson)
                fmt::format_to(std::back_inserter(stream->buffer()),
                               "\"losses\":{},\"error\":{},\"dialogs\":{},\"violations\":{}}}\n", losses,
                               jsonText(textOrNull(ending.error)), jsonText(ending.dialogs),
                               jsonText(ending.violations));
            if (outputFile_.empty() || !Host::isInterrupted()) // an interrupted dump leaves no file
                stream->finish();
        };
    }

    convert::Losses lossesOf(const LoadedSelection& values, const Plan& plan) const {
        const std::vector<std::string>& wanted = selection_.variables;
        const bool isNodeMap = values.selection.isNodeMap;
        const auto isWanted = [&](const reader::Array& array) {
            if (array.association == reader::Association::cells || array.association == reader::Association::fieldData)
                return isNodeMap && array.association == reader::Association::cells;
            const std::vector<std::string> names = reader::variableNames(array);
            const char* location = array.association == reader::Association::cellData ? "cell" : "nodal";
            return (selection_.location.empty() || selection_.location == location) &&
                   std::find_first_of(names.begin(), names.end(), wanted.begin(), wanted.end()) != names.end();
        };
        const Zone& zone = values.selection.zone;
        const bool areNodesNarrow = isNodeMap && zone.nodeMap->itemByteCount() == sizeof(std::int32_t);
        try {
            const std::vector<std::filesystem::path> files = filesOf(values.dataset, zone, plan);
            convert::Losses losses = convert::narrowingLosses(files, {isWanted, areNodesNarrow, isWanted});
            if (format_ == DumpFormat::csv && output.form == Form::text)
                convert::addCsvRenamings(wanted, losses);
            return losses;
        } catch (const convert::Interrupted&) {
            return {};
        }
    }

    SelectionOptions selection_;
    DumpFormat format_ = DumpFormat::text;
    std::string outputFile_; // empty: standard output
};

} // namespace

const CommandEntry dumpCommand{"dump", "Write the values of variables, or a node map",
                               "  krohost dump wing.vtu --variable pressure --range :5\n"
                               "  krohost dump wing.vtu --variable X --variable Y --format csv -o xy.csv\n"
                               "  krohost dump wing.vtu --node-map --format npy -o nodes.npy\n",
                               makeCommand<Dump>};

} // namespace krohost::cli
