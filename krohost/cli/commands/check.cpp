#include "krohost/check/checkFile.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/text/counted.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <thread>

namespace krohost::cli {

namespace {

using check::Finding;
using check::Severity;
using nlohmann::ordered_json;

const char* inWords(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

struct CheckOptions {
    bool isExplaining = false; ///< says what a loader refuses
    bool isDeep = false;       ///< decodes every value
    unsigned threadCount = 1;
};

/// What came of the files, each loaded for itself, so that one does not hide what is wrong with another.
struct Checked {
    bool isLoaded = false; ///< every file
    std::size_t zoneCount = 0;
    std::size_t arrayCount = 0; ///< variables and node maps of all zones
    std::size_t loadedArrayCount = 0;
    std::vector<check::Finding> findings; ///< file by file

    std::size_t count(check::Severity severity) const;
    /// The message of the first error; empty when there is none.
    std::string firstError() const;
};

std::size_t Checked::count(Severity severity) const {
    return static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [severity](const Finding& finding) { return finding.severity == severity; }));
}

std::string Checked::firstError() const {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [](const Finding& finding) { return finding.severity == Severity::error; });
    return found == findings.end() ? "" : found->message;
}

/// Loads files one after the other.
class Checker {
public:
    Checker(Host& host, const CheckOptions& options, ProgressBar& progress)
        : host_{host}, options_{options}, progress_{progress} {}

    Checked run(const std::vector<SeriesFile>& files) {
        result_.isLoaded = true;
        for (const SeriesFile& file : files) {
            if (!Host::isInterrupted())
                load(file.path);
            if (!Host::isInterrupted() && (options_.isExplaining || options_.isDeep))
                read(file.path);
        }
        progress_.clear();
        return std::move(result_);
    }

private:
    void load(const std::string& path) {
        path_ = path;
        hasFailedDemand_ = false;
        dialogCount_ = host_.dialogs().size();
        isLoaded_ = host_.loadFiles({path});
        result_.isLoaded = result_.isLoaded && isLoaded_;
        if (!isLoaded_)
            return add("load", "the file was not loaded", reason({0, 0}));
        result_.zoneCount += host_.dataset().zones.size();
        const auto demands = host_.demandAll({options_.threadCount, progress_.onDemand()});
        result_.arrayCount += demands.size();
        for (const DemandResult& demand : demands)
            look(demand);
    }

    void look(const DemandResult& demand) {
        const std::string name = host_.dataset().name(demand.target);
        hasFailedDemand_ = hasFailedDemand_ || !demand.isLoaded;
        if (!demand.isLoaded)
            return add("demand", name + " was not loaded", reason(demand.target));
        ++result_.loadedArrayCount;
        if (demand.target.variable != 0)
            return;
        const auto nodeCount = host_.dataset().zones[static_cast<std::size_t>(demand.target.zone) - 1].nodeCount;
        for (std::size_t index = 0; index < demand.parts.size(); ++index) {
            const StorageSummary& section = demand.parts[index];
            if (section.min < 0 || section.max >= static_cast<double>(nodeCount))
                add("node-map",
                    fmt::format("section {} of {} has node numbers from {:.0f} to {:.0f} (accepted: 0 to {})",
                                index + 1, name, section.min, section.max, nodeCount - 1));
        }
    }

    /// The dialogs for a target, or those of the load, since the file's load began.
    std::string reason(Target target) const {
        std::string texts;
        for (std::size_t index = dialogCount_; index < host_.dialogs().size(); ++index)
            if (const Dialog& dialog = host_.dialogs()[index];
                dialog.zone == target.zone && dialog.variable == target.variable)
                texts += (texts.empty() ? "" : "\n") + dialog.text;
        return texts;
    }

    void add(const char* code, std::string message, std::string reason = {}) {
        result_.findings.push_back({Severity::error, code, path_, {}, std::move(message), std::move(reason)});
    }

    void read(const std::string& path) {
        const auto poll = [] {
            if (Host::isInterrupted())
                throw Failure("Interrupted.", Exit_Interrupted);
        };
        const bool isDeep = options_.isDeep || hasFailedDemand_; // what a demand fails on is among the values
        auto findings = check::checkFile(path, {options_.isExplaining, isDeep}, poll);
        if (isLoaded_ && !hasFailedDemand_)
            std::for_each(findings.begin(), findings.end(), weakenMalformation);
        result_.findings.insert(result_.findings.end(), std::make_move_iterator(findings.begin()),
                                std::make_move_iterator(findings.end()));
    }

    /// What is no XML between the tags of a file that loads well is passed over there.
    static void weakenMalformation(Finding& finding) {
        if (finding.severity != Severity::error || (finding.code != "xml" && finding.code != "markup-too-long"))
            return;
        finding.severity = Severity::warning;
        finding.message += "; the loader passes over it, and what comes after it is not checked";
    }

    Host& host_;
    const CheckOptions& options_;
    ProgressBar& progress_;
    Checked result_;
    std::string path_;
    std::size_t dialogCount_ = 0; // before the current load
    bool isLoaded_ = false;       // the current file
    bool hasFailedDemand_ = false;
};

/// A line for each finding, `FILE:LINE:COLUMN: error: what [code]`, and one that sums up.
std::string checkText(const Checked& checked) {
    std::string text;
    for (const Finding& finding : checked.findings) {
        const std::string place =
            finding.position ? fmt::format(":{}:{}", finding.position->line, finding.position->column) : "";
        text += fmt::format("{}{}: {}: {} [{}]\n", printableLine(finding.file), place, inWords(finding.severity),
                            printableLine(finding.message), finding.code);
    }
    const bool isAll = checked.loadedArrayCount == checked.arrayCount;
    const std::size_t warningCount = checked.count(Severity::warning);
    return text + fmt::format("{}{} in {} loaded, {}{}\n",
                              isAll ? "" : std::to_string(checked.loadedArrayCount) + " of ",
                              counted(checked.arrayCount, "array"), counted(checked.zoneCount, "zone"),
                              counted(checked.count(Severity::error), "problem"),
                              warningCount == 0 ? "" : ", " + counted(warningCount, "warning"));
}

/// docs/schemas/check.schema.json describes it.
ordered_json checkDocument(const Checked& checked) {
    ordered_json findings = ordered_json::array();
    for (const Finding& finding : checked.findings) {
        const auto number = [&](std::uint64_t reader::Position::*member) {
            return finding.position ? ordered_json(*finding.position.*member) : ordered_json();
        };
        findings.push_back({{"severity", inWords(finding.severity)},
                            {"code", finding.code},
                            {"file", textOrNull(finding.file)},
                            {"line", number(&reader::Position::line)},
                            {"column", number(&reader::Position::column)},
                            {"byte", number(&reader::Position::byte)},
                            {"message", finding.message},
                            {"reason", textOrNull(finding.reason)}});
    }
    return {{"loaded", checked.isLoaded},
            {"counts",
             {{"zones", checked.zoneCount},
              {"arrays", checked.arrayCount},
              {"loadedArrays", checked.loadedArrayCount},
              {"errors", checked.count(Severity::error)},
              {"warnings", checked.count(Severity::warning)}}},
            {"findings", findings}};
}

/// Loads each file, demands everything in it and looks for what else is wrong. Ends early at an interrupt.
class Check : public Command {
public:
    explicit Check(CLI::App& app) {
        addFilesOption(app, input);
        app.add_flag("--explain", options_.isExplaining, "Say what a loader refuses, and where in the file");
        app.add_flag("--deep", options_.isDeep, "Decode every value and say what a loader passes over");
        addJobsOption(app, options_.threadCount, std::max(1U, std::thread::hardware_concurrency()));
        addHostOptions(app, host);
        addJsonOption(app, output);
        addOutputOptions(app, output);
    }

    Outcome run(Session& session) override {
        const Checked checked = Checker{session.host, options_, session.progress}.run(session.plan.files);
        Outcome outcome;
        outcome.report.isLoaded = true; // what is not is among the findings
        outcome.isSound = checked.count(Severity::error) == 0;
        outcome.reason = checked.firstError();
        if (output.form == Form::json)
            outcome.document = checkDocument(checked);
        else
            outcome.text = checkText(checked);
        return outcome;
    }

private:
    CheckOptions options_;
};

} // namespace

const CommandEntry checkCommand{"check", "Load everything in each file and list what is wrong with it",
                                "  krohost check wing.vtu                    whether everything loads\n"
                                "  krohost check --deep --explain wing.vtu   and what is wrong where in the file\n"
                                "  krohost check --json 'step*.vtu'\n",
                                makeCommand<Check>};

} // namespace krohost::cli
