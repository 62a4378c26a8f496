#include "interface/kro.h"

#include "krohost/host/api/callGuard.h"
#include "krohost/host/model/timesFromFileNames.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

using namespace krohost;

namespace {

Loader readLoader(const KroArgList* list) {
    ArgumentReader arguments{list};
    Loader loader;
    loader.name = arguments.string("LoaderName");
    std::istringstream patterns{arguments.string("FileNameExtensions")};
    for (std::string pattern; patterns >> pattern;)
        loader.patterns.push_back(pattern);
    arguments.integer("LoaderCallbackVersion", Kro_LoaderCallbackVersion, Kro_LoaderCallbackVersion);
    loader.load = reinterpret_cast<KroLoaderCallback>(arguments.function("LoaderCallback"));
    loader.loadSelected = reinterpret_cast<KroLoaderSelectedCallback>(arguments.function("LoaderSelectedCallback"));
    loader.clientData = arguments.pointer("ClientData");
    loader.takesSeveralFiles = arguments.flag("AllowMultiFileSelection");
    arguments.flag("LoaderAdvancedOptions");
    arguments.finish();
    return loader;
}

KroStateChangeCallback readStateChangeCallback(const KroArgList* list) {
    ArgumentReader arguments{list};
    const KroFunction callback = arguments.function("CallbackFunction");
    arguments.integer("StateChangeMode", Kro_StateChangeModeAllChanges, Kro_StateChangeModeAllChanges);
    arguments.integer("StateChangeCallbackAPI", Kro_StateChangeCallbackApi, Kro_StateChangeCallbackApi);
    arguments.finish();
    return reinterpret_cast<KroStateChangeCallback>(callback);
}

} // namespace

void KroUtilLockOn() {
    guardedVoid<entryIndex("KroUtilLockOn")>(noArguments, [](HostState& host) { host.brackets.lock(nullptr); });
}

void KroUtilLockOff() {
    guardedVoid<entryIndex("KroUtilLockOff")>(noArguments, [](HostState& host) { host.brackets.unlock(nullptr); });
}

// The add-on behind an unknown pointer must not be read, not even for the journal.
void KroUtilLockStart(KroAddOn* addOn) {
    std::string name = "unknown add-on";
    guardedVoid<entryIndex("KroUtilLockStart")>([&] { return name; },
                                                [&](HostState& host) {
                                                    name = resultText(&host.requireAddOn(addOn));
                                                    host.brackets.lock(addOn);
                                                });
}

void KroUtilLockFinish(KroAddOn* addOn) {
    std::string name = "unknown add-on";
    guardedVoid<entryIndex("KroUtilLockFinish")>([&] { return name; },
                                                 [&](HostState& host) {
                                                     name = resultText(&host.requireAddOn(addOn));
                                                     host.brackets.unlock(addOn);
                                                 });
}

KroAddOn* KroUtilAddOnRegister(std::int32_t apiLevel, const char* name, const char* version, const char* author) {
    const auto describeCall = [&] {
        return fmt::format("{}, {}, {}, {}", apiLevel, quoted(name), quoted(version), quoted(author));
    };
    // Handed out after a violation, since the result is never null; no other call accepts it.
    static KroAddOn unaccepted{0, {}, {}, {}};
    return guarded<entryIndex("KroUtilAddOnRegister")>(&unaccepted, describeCall, [&](HostState& host) {
        if (apiLevel != Kro_AddOnApiLevel)
            throw ContractViolation(fmt::format("the API level is {}, not {}", apiLevel, int{Kro_AddOnApiLevel}));
        const auto number = static_cast<std::int32_t>(host.addOns.size()) + 1;
        return &host.addOns.emplace_back(KroAddOn{number, requireNotNull(name, "the name"),
                                                  requireNotNull(version, "the version"),
                                                  requireNotNull(author, "the author")});
    });
}

KroBool KroUtilImportAddLoaderX(const KroArgList* arguments) {
    return guarded<entryIndex("KroUtilImportAddLoaderX")>(
        KroBool{0}, [&] { return describe(arguments); },
        [&](HostState& host) {
            Loader loader = readLoader(arguments);
            if (host.findLoader(loader.name))
                throw CallFailure(fmt::format("there is a loader {} already", quoted(loader.name)));
            host.loaders.push_back(std::move(loader));
            return KroBool{1};
        });
}

KroBool KroUtilStateChangeAddCallbackX(const KroArgList* arguments) {
    return guarded<entryIndex("KroUtilStateChangeAddCallbackX")>(
        KroBool{0}, [&] { return describe(arguments); },
        [&](HostState& host) {
            host.stateChangeCallbacks.push_back(readStateChangeCallback(arguments));
            return KroBool{1};
        });
}

void KroUtilDataLoadStart() {
    guardedVoid<entryIndex("KroUtilDataLoadStart")>(noArguments,
                                                    [](HostState& host) { host.brackets.startDataLoad(); });
}

KroBool KroUtilDataLoadFinishX(const KroArgList* options) {
    return guarded<entryIndex("KroUtilDataLoadFinishX")>(
        KroBool{0}, [&] { return describe(options); },
        [&](HostState& host) {
            host.brackets.finishDataLoad();
            host.gate.pass(entryIndex("KroUtilDataLoadFinishX"));
            ArgumentReader arguments{options};
            for (const char* name : {"ResetStyle", "ShowInitialPlot", "PromptForOptions"})
                arguments.optionalFlag(name);
            arguments.finish();
            return KroBool{1};
        });
}

KroBool KroUtilImportSetLoaderInstr(const char* loaderName, const KroStringList* instructions) {
    const auto describeCall = [&] { return fmt::format("{}, {}", quoted(loaderName), describe(instructions)); };
    return guarded<entryIndex("KroUtilImportSetLoaderInstr")>(KroBool{0}, describeCall, [&](HostState& host) {
        const std::string name = requireNotNull(loaderName, "the loader's name");
        if (!host.findLoader(name))
            throw ContractViolation(fmt::format("there is no loader {}", quoted(name)));
        host.requireDataset().instructions =
            Instructions{name, requireLiving(instructions, "the instruction list")->strings};
        return KroBool{1};
    });
}

KroBool KroUtilExtractTimesFromFileNames(const KroStringList* fileNames, double* times) {
    const auto describeCall = [&] { return describe(fileNames); };
    return guarded<entryIndex("KroUtilExtractTimesFromFileNames")>(KroBool{0}, describeCall, [&](HostState&) {
        const auto found = timesFromFileNames(requireLiving(fileNames, "the list")->strings);
        double* destination = requireNotNull(times, "the array of times");
        if (!found)
            throw CallFailure("not every file name has a number");
        std::copy(found->begin(), found->end(), destination);
        return KroBool{1};
    });
}
