/// Every function of the platform interface, with what the host checks before it serves a call.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace krohost {

/// Who may call: the thread tags of the interface.
enum class Caller { anyThread, mainThread, mainThreadLocked, loadCallback };

/// Whether a call has a result that tells of a failure, so that the host can refuse it. A call that closes a bracket
/// does so in any case and is refused only then, by itself.
enum class Refusal { impossible, possible, afterClosing };

struct Entry {
    std::string_view name;
    Caller caller;
    Refusal refusal;
};

// KroUtilInterruptIsSet is not here: it sits in the innermost loops of the add-on and is served without any check.
inline constexpr std::array entries{
    Entry{"KroUtilLockOn", Caller::mainThread, Refusal::impossible},
    Entry{"KroUtilLockOff", Caller::mainThread, Refusal::impossible},
    Entry{"KroUtilLockStart", Caller::mainThread, Refusal::impossible},
    Entry{"KroUtilLockFinish", Caller::mainThread, Refusal::impossible},
    Entry{"KroUtilAddOnRegister", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilImportAddLoaderX", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilStateChangeAddCallbackX", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilStringListAlloc", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilStringListDealloc", Caller::anyThread, Refusal::impossible},
    Entry{"KroUtilStringListClear", Caller::anyThread, Refusal::impossible},
    Entry{"KroUtilStringListAppendString", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilStringListGetCount", Caller::anyThread, Refusal::impossible},
    Entry{"KroUtilStringListGetRawStringPtr", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAlloc", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListDealloc", Caller::anyThread, Refusal::impossible},
    Entry{"KroUtilArgListAppendString", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAppendInt", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAppendDouble", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAppendFunction", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAppendArbParam", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilArgListAppendArray", Caller::anyThread, Refusal::possible},
    Entry{"KroUtilDataLoadStart", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilDataLoadFinishX", Caller::mainThreadLocked, Refusal::afterClosing},
    Entry{"KroUtilImportSetLoaderInstr", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilExtractTimesFromFileNames", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilDataSetCreateX", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilDataSetGetNumVars", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilDataSetGetNumZones", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilDataSetAddVar", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilVarGetName", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilVarGetValueLocation", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilDataSetAddZoneX", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilZoneSetAuxData", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilDataValueCustomLOD", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilDataNodeCustomLOD", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilDataValueGetClientData", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilDataValueGetRawPtrByRef", Caller::loadCallback, Refusal::possible},
    Entry{"KroUtilDataValueGetType", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilDataValueGetCount", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilDataNodeGetClientData", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilDataNodeGetRawItemType", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilDataNodeSectionGetRawPtrByRef", Caller::loadCallback, Refusal::possible},
    Entry{"KroUtilDataNodeSectionGetRawPtrByRef64", Caller::loadCallback, Refusal::possible},
    Entry{"KroUtilDataNodeSectionGetCount", Caller::loadCallback, Refusal::impossible},
    Entry{"KroUtilProgressStart", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilProgressText", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilProgressUpdate", Caller::mainThreadLocked, Refusal::possible},
    Entry{"KroUtilProgressFinish", Caller::mainThreadLocked, Refusal::impossible},
    Entry{"KroUtilDialogErrMsg", Caller::anyThread, Refusal::impossible},
    Entry{"KroUtilPostLastErrorMessage", Caller::mainThreadLocked, Refusal::impossible},
};

/// The place of a function in the table. Throws std::out_of_range (in a constant expression: does not compile) for a
/// name that is not there.
constexpr std::size_t entryIndex(std::string_view name) {
    const auto* found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.name == name; });
    if (found == entries.end())
        throw std::out_of_range("not a function of the platform interface");
    return static_cast<std::size_t>(found - entries.begin());
}

} // namespace krohost
