#include "interface/kro.h"

#include "krohost/host/api/callGuard.h"
#include "krohost/host/line/CallbackScope.h"

#include <fmt/format.h>

using namespace krohost;

namespace {

/// The object behind a handle. Throws ContractViolation unless the callback of the current thread was given this very
/// handle; another one may have ended its life, so it is compared and not read.
template <class Handle>
const Handle& requireOwn(const Handle* handle) {
    const Deferred& own = CallbackScope::current()->deferred();
    if (static_cast<const Deferred*>(handle) != &own)
        throw ContractViolation("the handle is not the one of this callback");
    return static_cast<const Handle&>(own);
}

void requireLoading() {
    if (CallbackScope::current()->phase() != Phase::load)
        throw ContractViolation("called outside the load");
}

/// The place for which the current callback was called.
std::string ownTarget() {
    const CallbackScope* scope = CallbackScope::current();
    return scope ? describe(scope->deferred().target()) : "unknown handle";
}

/// A call about the callback's own handle that only reads from it.
template <std::size_t entry, class Result, class Handle, class Read>
Result readOwn(Result failure, const Handle* handle, const Read& read) {
    return guarded<entry>(failure, ownTarget, [&](HostState&) { return read(requireOwn(handle)); });
}

template <std::size_t entry, class Item>
Item* sectionStorage(const KroNodeMap* nodeMap, std::int32_t section) {
    const auto describeCall = [&] { return fmt::format("{}, section {}", ownTarget(), section); };
    return guarded<entry>(static_cast<Item*>(nullptr), describeCall, [&](HostState&) -> Item* {
        const KroNodeMap& own = requireOwn(nodeMap);
        requireLoading();
        const bool exists = section >= 1 && static_cast<std::size_t>(section) <= own.parts().size();
        if (!exists || own.itemByteCount() != sizeof(Item))
            return nullptr;
        return static_cast<Item*>(own.parts()[static_cast<std::size_t>(section) - 1].data());
    });
}

} // namespace

void* KroUtilDataValueGetClientData(const KroFieldData* fieldData) {
    return readOwn<entryIndex("KroUtilDataValueGetClientData")>(
        static_cast<void*>(nullptr), fieldData, [](const KroFieldData& own) { return own.clientData(); });
}

void* KroUtilDataValueGetRawPtrByRef(KroFieldData* fieldData) {
    return readOwn<entryIndex("KroUtilDataValueGetRawPtrByRef")>(static_cast<void*>(nullptr), fieldData,
                                                                 [](const KroFieldData& own) {
                                                                     requireLoading();
                                                                     return own.parts().front().data();
                                                                 });
}

FieldDataType_e KroUtilDataValueGetType(const KroFieldData* fieldData) {
    return readOwn<entryIndex("KroUtilDataValueGetType")>(FieldDataType_None, fieldData,
                                                          [](const KroFieldData& own) { return own.type; });
}

std::int64_t KroUtilDataValueGetCount(const KroFieldData* fieldData) {
    return readOwn<entryIndex("KroUtilDataValueGetCount")>(std::int64_t{0}, fieldData,
                                                           [](const KroFieldData& own) { return own.valueCount; });
}

void* KroUtilDataNodeGetClientData(const KroNodeMap* nodeMap) {
    return readOwn<entryIndex("KroUtilDataNodeGetClientData")>(static_cast<void*>(nullptr), nodeMap,
                                                               [](const KroNodeMap& own) { return own.clientData(); });
}

std::int32_t KroUtilDataNodeGetRawItemType(const KroNodeMap* nodeMap) {
    return readOwn<entryIndex("KroUtilDataNodeGetRawItemType")>(
        std::int32_t{0}, nodeMap, [](const KroNodeMap& own) { return own.nodeBitCount == 64 ? 64 : 0; });
}

std::int32_t* KroUtilDataNodeSectionGetRawPtrByRef(KroNodeMap* nodeMap, std::int32_t section) {
    return sectionStorage<entryIndex("KroUtilDataNodeSectionGetRawPtrByRef"), std::int32_t>(nodeMap, section);
}

std::int64_t* KroUtilDataNodeSectionGetRawPtrByRef64(KroNodeMap* nodeMap, std::int32_t section) {
    return sectionStorage<entryIndex("KroUtilDataNodeSectionGetRawPtrByRef64"), std::int64_t>(nodeMap, section);
}

std::int64_t KroUtilDataNodeSectionGetCount(const KroNodeMap* nodeMap, std::int32_t section) {
    return guarded<entryIndex("KroUtilDataNodeSectionGetCount")>(
        std::int64_t{0}, [&] { return fmt::format("{}, section {}", ownTarget(), section); },
        [&](HostState&) { return requireOwn(nodeMap).sectionItemCount(section); });
}
