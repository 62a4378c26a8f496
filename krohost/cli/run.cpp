#include "krohost/cli/run.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/commands/addons.h"
#include "krohost/cli/commands/bench.h"
#include "krohost/cli/commands/check.h"
#include "krohost/cli/commands/convert.h"
#include "krohost/cli/commands/diff.h"
#include "krohost/cli/commands/dump.h"
#include "krohost/cli/commands/info.h"
#include "krohost/cli/commands/trace.h"
#include "krohost/cli/input/addOnPath.h"
#include "krohost/cli/input/loading.h"
#include "krohost/cli/report/Report.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/report/tableReport.h"
#include "krohost/cli/terminal/Console.h"
#include "krohost/cli/terminal/ProgressBar.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/damage.h"
#include "krohost/host/runtime/Host.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <exception>
#include <new>

namespace krohost::cli {

namespace {

std::vector<std::string> dialogTexts(const Host& host) {
    std::vector<std::string> texts;
    for (const Dialog& dialog : host.dialogs())
        texts.push_back(dialog.text);
    return texts;
}

/// Ends a run that did not come to a result.
int fail(const CommandLine& line, const Console& console, const std::string& message, int exitCode) {
    if (exitCode == Exit_PipeClosed)
        return exitCode;
    console.error(message);
    return console.print(failureText(line, message), exitCode);
}

HostOptions hostOptions(const CommandLine& line, ProgressBar& progress) {
    HostOptions options;
    if (line.command == Command::trace)
        options.journal = line.isTracingLists ? JournalDetail::all : JournalDetail::calls;
    options.nodeBitCount = line.nodeBitCount;
    options.memoryByteBudget = line.memoryByteBudget.value_or(options.memoryByteBudget);
    options.onProgress = [&](double fraction, const std::string& text) { progress.show(fraction, text); };
    return options;
}

int exitCode(const Host& host, const Report& report) {
    if (Host::isInterrupted())
        return Exit_Interrupted;
    const bool hasDemands = std::all_of(report.demands.begin(), report.demands.end(),
                                        [](const DemandResult& result) { return result.isLoaded; });
    const bool isSound = report.isLoaded && hasDemands && !convert::firstDamage(report.losses);
    return isSound && host.violations().empty() ? Exit_Done : Exit_Failed;
}

/// The first thing that went wrong in a run with this exit code.
std::string errorText(const Host& host, int exitCode) {
    if (exitCode == Exit_Interrupted)
        return "Interrupted.";
    if (exitCode == Exit_Done || (host.dialogs().empty() && host.violations().empty()))
        return exitCode == Exit_Done ? "" : "The load or a demand failed.";
    return host.dialogs().empty() ? host.violations().front() : host.dialogs().front().text;
}

void printProblems(const Host& host, const Console& console, const std::string& stoppedAt) {
    for (const Dialog& dialog : host.dialogs())
        console.dialog(dialog.text);
    if (!stoppedAt.empty())
        console.error(fmt::format("krohost: the load stopped at \"{}\"", stoppedAt));
    for (const std::string& violation : host.violations())
        console.error(fmt::format("contract violation: {}", violation));
    if (Host::isInterrupted())
        console.error("Interrupted.");
}

/// Ends the host, since its add-on's last violations belong to the run, and prints everything. The dataset goes with
/// the host and is put into words before.
int finish(Host& host, const CommandLine& line, const Console& console, const Report& report) {
    nlohmann::ordered_json document;
    std::string text;
    if (line.isJson)
        document = jsonReport(report, host.dataset());
    else if (report.isLoaded)
        text = tableReport(report, host.dataset(), console.outputStyle(), line.isShowingAll);
    host.shutDown();
    printLosses(console, report.losses);
    printProblems(host, console, report.stoppedAt);
    const int code = exitCode(host, report);
    if (line.isJson)
        text = jsonText(std::move(document), dialogTexts(host), host.violations(), errorText(host, code));
    return console.print(text, code);
}

int finishTrace(Host& host, const CommandLine& line, const Console& console, const Report& report) {
    host.shutDown();
    printProblems(host, console, report.stoppedAt);
    const int code = exitCode(host, report);
    if (!line.isJson && !line.isJsonLines) {
        const std::string text = traceText(host.journal(), line);
        if (text.empty())
            console.warning("no call's name begins so");
        return console.print(text, code);
    }
    nlohmann::ordered_json calls = traceList(host.journal(), line);
    std::string text;
    if (line.isJson)
        text = jsonText({{"calls", std::move(calls)}}, dialogTexts(host), host.violations(), errorText(host, code));
    else {
        for (nlohmann::ordered_json& call : calls)
            text += jsonText(call) + '\n';
        text += jsonLine({{"kind", "end"}}, dialogTexts(host), host.violations(), errorText(host, code));
    }
    return console.print(text, code);
}

int finish(Host& host, const CommandLine& line, const Console& console, const Bench& bench) {
    host.shutDown();
    printProblems(host, console, bench.report.stoppedAt);
    const int code = exitCode(host, bench.report);
    if (line.isJson)
        return console.print(jsonLine(bench.figures, dialogTexts(host), host.violations(), errorText(host, code)),
                             code);
    return console.print(bench.figures.empty() ? "" : benchTable(bench.figures), code);
}

int finish(Host& host, const CommandLine& line, const Console& console, const Check& check) {
    host.shutDown();
    printProblems(host, console, "");
    const bool isSound = check.count(check::Severity::error) == 0 && host.violations().empty();
    const int code = Host::isInterrupted() ? Exit_Interrupted : isSound ? Exit_Done : Exit_Failed;
    if (!line.isJson)
        return console.print(checkText(check), code);
    const std::string error =
        code == Exit_Failed && host.dialogs().empty() ? check.firstError() : errorText(host, code);
    return console.print(jsonText(checkDocument(check), dialogTexts(host), host.violations(), error), code);
}

/// Ends a dump that is not to be because of what would be lost.
int refuseLosses(const Host& host, const CommandLine& line, const Console& console, const Report& report) {
    const std::string message = convert::LossesNotAllowed{report.losses}.what();
    console.error(message);
    if (!line.isJson)
        return Exit_Failed;
    return console.print(jsonText({{"losses", lossList(report.losses)}}, dialogTexts(host), host.violations(), message),
                         Exit_Failed);
}

/// Writes what was chosen; the end of a document stands behind what the host says last.
int finishDump(Host& host, const CommandLine& line, const Console& console, const Plan& plan, Report& report) {
    const auto output = report.isLoaded ? dump(host, line, plan, report) : nullptr;
    host.shutDown();
    printLosses(console, report.losses);
    printProblems(host, console, report.stoppedAt);
    const int code = exitCode(host, report);
    if (line.isStrict && !report.losses.empty())
        return refuseLosses(host, line, console, report);
    const convert::Loss* damage = convert::firstDamage(report.losses);
    const std::string error = damage && !Host::isInterrupted() ? damage->message : errorText(host, code);
    if (output)
        finishDump(*output, line, report, dialogTexts(host), host.violations(), error);
    else if (line.isJson)
        return console.print(jsonText({{"loaded", false}}, dialogTexts(host), host.violations(), errorText(host, code)),
                             code);
    return code;
}

int finish(Host& host, const CommandLine& line, const Console& console, Diff diff) {
    host.shutDown();
    printLosses(console, diff.report.losses);
    printProblems(host, console, diff.report.stoppedAt);
    const int ownCode = exitCode(host, diff.report);
    const int code = ownCode == Exit_Done && !diff.isSame ? int{Exit_Different} : ownCode;
    if (!line.isJson)
        return console.print(printable(diff.text), code);
    if (!diff.report.isLoaded)
        diff.document = {{"loaded", false}};
    return console.print(
        jsonText(std::move(diff.document), dialogTexts(host), host.violations(), errorText(host, ownCode)), code);
}

int finish(Host& host, const CommandLine& line, const Console& console, const ConvertOutcome& outcome) {
    host.shutDown();
    printProblems(host, console, outcome.report.stoppedAt);
    printLosses(console, outcome.conversion.losses);
    if (!outcome.error.empty())
        console.error(outcome.error);
    const int ownCode = exitCode(host, outcome.report);
    const int code = ownCode == Exit_Done && !outcome.isDone() ? int{Exit_Failed} : ownCode;
    if (!line.isJson)
        return console.print(convertText(line, outcome), code);
    const convert::Loss* damage = convert::firstDamage(outcome.conversion.losses);
    const std::string error = !outcome.error.empty()            ? outcome.error
                              : damage                          ? damage->message
                              : outcome.conversion.isIncomplete ? outcome.conversion.losses.list().front().message
                                                                : errorText(host, code);
    return console.print(jsonText(convertDocument(outcome), dialogTexts(host), host.violations(), error), code);
}

int finishAddOns(Host& host, const CommandLine& line, const Console& console, const std::filesystem::path& path) {
    const nlohmann::ordered_json document = addOnsDocument(host, path);
    host.shutDown();
    printProblems(host, console, "");
    const int code = host.violations().empty() ? Exit_Done : Exit_Failed;
    return console.print(line.isJson ? jsonText(document, dialogTexts(host), host.violations(), errorText(host, code))
                                     : addOnsTable(document, console.outputStyle()),
                         code);
}

int runCommand(Host& host, const CommandLine& line, const Console& console, ProgressBar& progress) {
    const bool hasFiles = line.command != Command::addons;
    Plan plan = hasFiles ? makePlan(line) : Plan{};
    const std::filesystem::path path = addOnPath(line);
    plan.permission.inputs.add(path);
    requireFreeOutputs(line, plan);
    console.note(fmt::format("the add-on is {}", path.string()));
    host.loadAddOn(path);
    if (!host.dialogs().empty()) // without one of its loaders another would take the files
        throw Failure(host.dialogs().front().text, Exit_AddOnNotLoaded);
    if (line.convert.isRepairing)
        return finish(host, line, console, repair(host, line, plan));
    if (line.command == Command::addons)
        return finishAddOns(host, line, console, path);
    announce(host, line, plan, console);
    progress.setFiles(paths(plan.files));
    if (line.command == Command::bench) {
        const Bench result = bench(host, line, plan, progress);
        progress.clear();
        return finish(host, line, console, result);
    }
    if (line.command == Command::check)
        return finish(host, line, console, check(host, line, plan, progress));
    if (line.command == Command::convert) {
        const ConvertOutcome outcome = convert(host, line, plan);
        progress.clear();
        return finish(host, line, console, outcome);
    }
    if (line.command == Command::diff)
        return finish(host, line, console, diff(host, line, progress));
    Report report = loadAndDemand(host, line, plan, console, progress);
    if (line.command == Command::trace)
        return finishTrace(host, line, console, report);
    if (line.command == Command::dump)
        return finishDump(host, line, console, plan, report);
    return finish(host, line, console, report);
}

int runHost(const CommandLine& line, const Console& console) {
    ProgressBar progress{line};
    Host host{hostOptions(line, progress)};
    try {
        return runCommand(host, line, console, progress);
    } catch (const Failure& failure) {
        progress.clear();
        return fail(line, console, failure.what(), failure.exitCode());
    } catch (const convert::Interrupted&) {
        progress.clear();
        return fail(line, console, "Interrupted.", Exit_Interrupted);
    } catch (const AddOnError& error) {
        printProblems(host, console, "");
        return fail(line, console, error.what(), Exit_AddOnNotLoaded);
    }
}

} // namespace

int run(const CommandLine& line) {
    const Console console{line};
    try {
        return runHost(line, console);
    } catch (const std::bad_alloc&) {
        return fail(line, console, "There is not enough memory.", Exit_Failed);
    } catch (const std::exception& exception) {
        return fail(line, console, exception.what(), Exit_Failed);
    }
}

} // namespace krohost::cli
