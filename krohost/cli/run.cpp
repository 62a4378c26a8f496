#include "krohost/cli/run.h"

#include "krohost/cli/input/addOnPath.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/damage.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <new>

namespace krohost::cli {

namespace {

/// Ends a run that did not come to a result.
int fail(const Command& command, const Console& console, const std::string& message, int exitCode) {
    if (exitCode == Exit_PipeClosed)
        return exitCode;
    console.error(message);
    return console.print(failureText(command, message), exitCode);
}

HostOptions hostOptions(const Command& command, ProgressBar& progress) {
    HostOptions options;
    options.journal = command.journalDetail();
    options.nodeBitCount = command.host.nodeBitCount;
    options.memoryByteBudget = command.host.memoryByteBudget.value_or(options.memoryByteBudget);
    options.onProgress = [&](double fraction, const std::string& text) { progress.show(fraction, text); };
    return options;
}

int exitCode(const Host& host, const Outcome& outcome) {
    if (Host::isInterrupted())
        return Exit_Interrupted;
    const Report& report = outcome.report;
    const bool areDemandsServed = std::all_of(report.demands.begin(), report.demands.end(),
                                              [](const DemandResult& result) { return result.isLoaded; });
    const bool isSound = outcome.isSound && report.isLoaded && areDemandsServed &&
                         !convert::firstDamage(report.losses) && host.violations().empty();
    return !isSound ? Exit_Failed : outcome.isDifferent ? Exit_Different : Exit_Done;
}

/// The first thing that went wrong in a run with this exit code.
std::string errorText(const Host& host, const Outcome& outcome, int exitCode) {
    if (exitCode == Exit_Interrupted)
        return "Interrupted.";
    if (exitCode != Exit_Failed)
        return {};
    const convert::Loss* damage = convert::firstDamage(outcome.report.losses);
    return !outcome.error.empty()       ? outcome.error
           : !host.dialogs().empty()    ? host.dialogs().front().text
           : damage                     ? damage->message
           : !outcome.reason.empty()    ? outcome.reason
           : !host.violations().empty() ? host.violations().front()
                                        : "The load or a demand failed.";
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

Ending ending(const Host& host, const Outcome& outcome, int exitCode) {
    Ending ending{errorText(host, outcome, exitCode), {}, host.violations()};
    for (const Dialog& dialog : host.dialogs())
        ending.dialogs.push_back(dialog.text);
    return ending;
}

/// Ends the host, since its add-on's last violations belong to the run, and prints everything. The dataset goes with
/// the host.
int finish(Host& host, const Command& command, const Console& console, Outcome& outcome) {
    host.shutDown();
    if (outcome.complete)
        outcome.complete(host, outcome);
    printLosses(console, outcome.report.losses);
    printProblems(host, console, outcome.report.stoppedAt);
    if (!outcome.error.empty())
        console.error(outcome.error);
    const int code = exitCode(host, outcome);
    if (outcome.write) {
        outcome.write(ending(host, outcome, code));
        return code;
    }
    std::string text = std::move(outcome.text);
    if (command.output.form == Form::jsonLines) // which are before the end of the document
        text += documentText(command, std::move(outcome.document), ending(host, outcome, code));
    else if (command.output.form == Form::json)
        text = documentText(command, std::move(outcome.document), ending(host, outcome, code));
    return console.print(text, code);
}

int runCommand(Host& host, Command& command, const Console& console, ProgressBar& progress) {
    Plan plan = command.hasFiles() ? makePlan(command.input, command.writing.isForced) : Plan{};
    const std::filesystem::path path = addOnPath(command.host);
    plan.permission.inputs.add(path);
    requireFreeOutputs(command.outputs(), plan);
    console.note(fmt::format("the add-on is {}", path.string()));
    host.loadAddOn(path);
    if (!host.dialogs().empty()) // without one of its loaders another would take the files
        throw Failure(host.dialogs().front().text, Exit_AddOnNotLoaded);
    Session session{host, console, progress, plan, path};
    if (command.usesLoaders())
        announce(host, command.input, plan, console);
    progress.setFiles(paths(plan.files));
    Outcome outcome = command.run(session);
    progress.clear();
    return finish(host, command, console, outcome);
}

int runHost(Command& command, const Console& console) {
    ProgressBar progress{command.output};
    Host host{hostOptions(command, progress)};
    try {
        return runCommand(host, command, console, progress);
    } catch (const Failure& failure) {
        progress.clear();
        return fail(command, console, failure.what(), failure.exitCode());
    } catch (const convert::Interrupted&) {
        progress.clear();
        return fail(command, console, "Interrupted.", Exit_Interrupted);
    } catch (const AddOnError& error) {
        printProblems(host, console, "");
        return fail(command, console, error.what(), Exit_AddOnNotLoaded);
    }
}

} // namespace

int run(Command& command) {
    const Console console{command.output};
    try {
        return runHost(command, console);
    } catch (const std::bad_alloc&) {
        return fail(command, console, "There is not enough memory.", Exit_Failed);
    } catch (const std::exception& exception) {
        return fail(command, console, exception.what(), Exit_Failed);
    }
}

} // namespace krohost::cli
