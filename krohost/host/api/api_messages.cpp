#include "interface/kro.h"

#include "krohost/host/api/callGuard.h"
#include "krohost/host/line/CallbackScope.h"
#include "krohost/host/runtime/Interrupt.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>

using namespace krohost;

namespace {

Dialog dialogHere(std::string text) {
    const CallbackScope* scope = CallbackScope::current();
    const Target target = scope ? scope->deferred().target() : Target{0, 0};
    return {std::move(text), target.zone, target.variable};
}

void showProgress(HostState& host, double fraction) {
    if (host.options.onProgress)
        host.options.onProgress(fraction, host.progressText);
}

} // namespace

void KroUtilProgressStart(const char* title) {
    guardedVoid<entryIndex("KroUtilProgressStart")>([&] { return quoted(title); },
                                                    [&](HostState& host) {
                                                        host.brackets.startProgress();
                                                        host.progressText = requireNotNull(title, "the title");
                                                        showProgress(host, 0);
                                                    });
}

void KroUtilProgressText(const char* text) {
    guardedVoid<entryIndex("KroUtilProgressText")>([&] { return quoted(text); },
                                                   [&](HostState& host) {
                                                       host.brackets.requireProgress();
                                                       host.progressText = requireNotNull(text, "the text");
                                                       host.taskText = host.progressText;
                                                   });
}

KroBool KroUtilProgressUpdate(double fraction) {
    return guarded<entryIndex("KroUtilProgressUpdate")>(
        KroBool{0}, [&] { return fmt::format("{}", fraction); },
        [&](HostState& host) {
            host.brackets.requireProgress();
            if (!(fraction >= 0 && fraction <= 1))
                throw ContractViolation(fmt::format("the fraction is {}, not from 0 to 1", fraction));
            showProgress(host, fraction);
            return interrupt.pollAtProgressUpdate() ? KroBool{0} : KroBool{1};
        });
}

void KroUtilProgressFinish() {
    guardedVoid<entryIndex("KroUtilProgressFinish")>(noArguments,
                                                     [](HostState& host) { host.brackets.finishProgress(); });
}

KroBool KroUtilInterruptIsSet() {
    return krohost::interrupt.poll() ? 1 : 0;
}

void KroUtilDialogErrMsg(const char* message) {
    guardedVoid<entryIndex("KroUtilDialogErrMsg")>(
        [&] { return quoted(message); },
        [&](HostState& host) { host.journal.dialog(dialogHere(requireNotNull(message, "the message"))); });
}

void KroUtilPostLastErrorMessage() {
    guardedVoid<entryIndex("KroUtilPostLastErrorMessage")>(noArguments, [](HostState& host) {
        const std::string text = host.lastError();
        host.journal.dialog(dialogHere(text.empty() ? "No host operation has failed." : text));
    });
}
