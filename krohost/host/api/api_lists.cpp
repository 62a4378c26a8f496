#include "interface/kro.h"

#include "krohost/host/api/callGuard.h"

#include "krohost/text/quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

using namespace krohost;

namespace {

template <class List>
List* requireList(List* list) {
    return requireLiving(list, "the list");
}

template <class List>
List* makeList(HostState& host) {
    auto* list = new List;
    list->number = ++host.listNumber;
    ++host.liveListCount;
    return list;
}

template <std::size_t entry, class List>
void freeList(List** place) {
    guardedVoid<entry>([&] { return place ? resultText(std::as_const(*place)) : "null"; },
                       [&](HostState& host) {
                           if (!*requireNotNull(place, "the place of the list"))
                               return;
                           if (requireList(*place)->number == 0)
                               throw ContractViolation("the list is the host's own");
                           --host.liveListCount;
                       });
    if (!place)
        return;
    List* list = std::exchange(*place, nullptr); // also after a refusal: the add-on has given it away
    if (!List::absence(list) && list->number != 0)
        delete list;
}

/// Appends one argument; the entry of the interface tells which of the six functions it is.
template <std::size_t entry, class MakeValue>
KroBool append(KroArgList* list, const char* name, const MakeValue& makeValue) {
    const auto describeCall = [&] { return fmt::format("{}, {}", resultText(list), quoted(name)); };
    return guarded<entry>(KroBool{0}, describeCall, [&](HostState&) {
        auto& arguments = requireList(list)->arguments;
        const std::string argumentName = requireNotNull(name, "the name");
        if (std::any_of(arguments.begin(), arguments.end(),
                        [&](const Argument& argument) { return argument.name == argumentName; }))
            throw ContractViolation(fmt::format("the argument \"{}\" stands twice", argumentName));
        arguments.push_back({argumentName, makeValue()});
        return KroBool{1};
    });
}

IntegerArray copyArray(int itemType, std::int64_t itemCount, const void* items) {
    if (itemType != KroArrayItem_Int32 && itemType != KroArrayItem_Int64)
        throw ContractViolation(fmt::format("{} is not an item type", itemType));
    if (itemCount < 0 || (itemCount > 0 && !items))
        throw ContractViolation("the array has no items or a negative number of them");
    IntegerArray array{static_cast<KroArrayItem_e>(itemType), {}};
    if (itemType == KroArrayItem_Int32)
        array.items.assign(static_cast<const std::int32_t*>(items),
                           static_cast<const std::int32_t*>(items) + itemCount);
    else
        array.items.assign(static_cast<const std::int64_t*>(items),
                           static_cast<const std::int64_t*>(items) + itemCount);
    return array;
}

} // namespace

KroStringList* KroUtilStringListAlloc() {
    return guarded<entryIndex("KroUtilStringListAlloc")>(static_cast<KroStringList*>(nullptr), noArguments,
                                                         makeList<KroStringList>);
}

void KroUtilStringListDealloc(KroStringList** list) {
    freeList<entryIndex("KroUtilStringListDealloc")>(list);
}

void KroUtilStringListClear(KroStringList* list) {
    guardedVoid<entryIndex("KroUtilStringListClear")>([&] { return resultText(list); },
                                                      [&](HostState&) { requireList(list)->strings.clear(); });
}

KroBool KroUtilStringListAppendString(KroStringList* list, const char* string) {
    return guarded<entryIndex("KroUtilStringListAppendString")>(
        KroBool{0}, [&] { return fmt::format("{}, {}", resultText(list), quoted(string)); },
        [&](HostState&) {
            requireList(list)->strings.emplace_back(requireNotNull(string, "the string"));
            return KroBool{1};
        });
}

std::int64_t KroUtilStringListGetCount(const KroStringList* list) {
    return guarded<entryIndex("KroUtilStringListGetCount")>(
        std::int64_t{0}, [&] { return resultText(list); },
        [&](HostState&) { return static_cast<std::int64_t>(requireList(list)->strings.size()); });
}

const char* KroUtilStringListGetRawStringPtr(const KroStringList* list, std::int64_t number) {
    return guarded<entryIndex("KroUtilStringListGetRawStringPtr")>(
        static_cast<const char*>(nullptr), [&] { return fmt::format("{}, {}", resultText(list), number); },
        [&](HostState&) -> const char* {
            const auto& strings = requireList(list)->strings;
            const bool exists = number >= 1 && static_cast<std::uint64_t>(number) <= strings.size();
            return exists ? strings[static_cast<std::size_t>(number) - 1].c_str() : nullptr;
        });
}

KroArgList* KroUtilArgListAlloc() {
    return guarded<entryIndex("KroUtilArgListAlloc")>(static_cast<KroArgList*>(nullptr), noArguments,
                                                      makeList<KroArgList>);
}

void KroUtilArgListDealloc(KroArgList** list) {
    freeList<entryIndex("KroUtilArgListDealloc")>(list);
}

KroBool KroUtilArgListAppendString(KroArgList* list, const char* name, const char* value) {
    return append<entryIndex("KroUtilArgListAppendString")>(
        list, name, [&] { return std::string{requireNotNull(value, "the value")}; });
}

KroBool KroUtilArgListAppendInt(KroArgList* list, const char* name, std::int64_t value) {
    return append<entryIndex("KroUtilArgListAppendInt")>(list, name, [&] { return value; });
}

KroBool KroUtilArgListAppendDouble(KroArgList* list, const char* name, double value) {
    return append<entryIndex("KroUtilArgListAppendDouble")>(list, name, [&] { return value; });
}

KroBool KroUtilArgListAppendFunction(KroArgList* list, const char* name, KroFunction value) {
    return append<entryIndex("KroUtilArgListAppendFunction")>(list, name, [&] { return value; });
}

KroBool KroUtilArgListAppendArbParam(KroArgList* list, const char* name, void* value) {
    return append<entryIndex("KroUtilArgListAppendArbParam")>(list, name, [&] { return value; });
}

KroBool KroUtilArgListAppendArray(KroArgList* list, const char* name, KroArrayItem_e itemType, std::int64_t itemCount,
                                  const void* items) {
    return append<entryIndex("KroUtilArgListAppendArray")>(
        list, name, [&] { return copyArray(static_cast<int>(itemType), itemCount, items); });
}
