#include "krohost/host/model/Deferred.h"

#include "krohost/host/line/callAddOn.h"
#include "krohost/host/model/itemType.h"

#include <fmt/format.h>

#include <array>
#include <new>
#include <utility>

namespace krohost {

namespace {

/// Both kinds of handle offer the same three callbacks.
template <class Callbacks, class Handle>
std::optional<KroBool> callPhase(const Callbacks& callbacks, Handle* handle, Phase phase) {
    switch (phase) {
    case Phase::load:
        return callbacks.load(handle);
    case Phase::unload:
        return callbacks.unload(handle);
    case Phase::cleanup:
        callbacks.cleanup(handle);
    }
    return std::nullopt;
}

} // namespace

std::string describe(Target target) {
    return target.variable == 0 ? fmt::format("zone {}", target.zone)
                                : fmt::format("zone {}, variable {}", target.zone, target.variable);
}

std::optional<std::uint64_t> Deferred::byteCount() const {
    std::uint64_t sum = 0;
    for (const std::int64_t itemCount : itemCounts()) {
        std::uint64_t partByteCount = 0;
        if (itemCount < 0 ||
            __builtin_mul_overflow(static_cast<std::uint64_t>(itemCount), itemByteCount(), &partByteCount) ||
            __builtin_add_overflow(sum, partByteCount, &sum))
            return std::nullopt;
    }
    return sum;
}

bool Deferred::load(Journal& journal) {
    std::vector<Storage> parts;
    for (const std::int64_t itemCount : itemCounts())
        parts.emplace_back(itemCount, itemByteCount());
    parts_ = std::move(parts);
    isLoaded_ = run(Phase::load, journal);
    verifyGuards(journal);
    if (!isLoaded_)
        parts_.clear();
    return isLoaded_;
}

bool Deferred::unload(Journal& journal) {
    if (isLoaded_ && run(Phase::unload, journal)) {
        isLoaded_ = false;
        parts_.clear();
    }
    return !isLoaded_;
}

// A line that the journal has no memory for does not keep the client from its last call.
void Deferred::cleanup(Journal& journal) noexcept {
    try {
        unload(journal);
    } catch (const std::bad_alloc&) {
        journal.noteLoss();
    }
    try {
        run(Phase::cleanup, journal);
    } catch (const std::bad_alloc&) {
        journal.noteLoss();
    }
}

bool Deferred::run(Phase phase, Journal& journal) {
    const CallbackScope scope{*this, phase};
    return callAddOn(
        journal, callbackName(phase), [this] { return describe(target_); },
        [this, phase] { return callClient(phase); });
}

void Deferred::verifyGuards(Journal& journal) const {
    for (std::size_t partIndex = 0; partIndex < parts_.size(); ++partIndex) {
        const char* place = parts_[partIndex].trespass();
        if (!place)
            continue;
        const std::string part = target_.variable == 0 ? fmt::format(", section {}", partIndex + 1) : std::string{};
        journal.violation(fmt::format("{} wrote {} of the storage of {}{}", callbackName(Phase::load), place,
                                      describe(target_), part));
    }
}

std::int64_t nodeNumberCount(std::int64_t elementCount, std::int64_t nodesPerElement) {
    std::int64_t product = 0;
    return __builtin_mul_overflow(elementCount, nodesPerElement, &product) ? -1 : product;
}

} // namespace krohost

using krohost::Phase;

std::size_t KroFieldData::itemByteCount() const {
    return krohost::withItemType(type, []<class Item>(krohost::ItemTag<Item>) { return sizeof(Item); });
}

const char* KroFieldData::callbackName(Phase phase) const {
    constexpr std::array names{"DataValueLoad", "DataValueUnload", "DataValueCleanup"};
    return names[static_cast<std::size_t>(phase)];
}

std::optional<KroBool> KroFieldData::callClient(Phase phase) {
    return krohost::callPhase(callbacks, this, phase);
}

std::int64_t KroNodeMap::sectionItemCount(std::int32_t section) const {
    const bool exists = section >= 1 && static_cast<std::size_t>(section) <= counts_.size();
    return exists ? counts_[static_cast<std::size_t>(section) - 1] : 0;
}

const char* KroNodeMap::callbackName(Phase phase) const {
    constexpr std::array names{"DataNodeLoad", "DataNodeUnload", "DataNodeCleanup"};
    return names[static_cast<std::size_t>(phase)];
}

std::optional<KroBool> KroNodeMap::callClient(Phase phase) {
    return krohost::callPhase(callbacks, this, phase);
}
