#include "krohost/host/runtime/HostState.h"

#include "krohost/host/line/CallbackScope.h"
#include "krohost/host/line/callAddOn.h"
#include "krohost/host/line/contract.h"
#include "krohost/host/line/entries.h"
#include "krohost/host/model/strandGroups.h"
#include "krohost/host/runtime/Interrupt.h"
#include "krohost/text/letterCase.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace krohost {

namespace {

std::atomic<HostState*> currentHost{nullptr};

} // namespace

std::uint64_t physicalMemoryByteCount() {
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool Loader::matches(const std::string& fileName) const {
    const std::string extension = lowerCase(std::filesystem::path{fileName}.extension().string());
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const std::string& pattern) { return lowerCase(pattern) == "*" + extension; });
}

HostState::HostState(HostOptions hostOptions)
    : options{std::move(hostOptions)}, journal{options.journal}, budget{options.memoryByteBudget} {
    HostState* none = nullptr;
    if (!currentHost.compare_exchange_strong(none, this))
        throw std::logic_error("a process has one host at a time");
    if (journal.isOn())
        interrupt.countPolls();
}

/// A wish to stop that comes before there is a host counts for it.
HostState::~HostState() {
    interrupt.reset();
    currentHost = nullptr;
}

HostState* HostState::current() noexcept {
    return currentHost.load(std::memory_order_acquire);
}

void HostState::admit(std::size_t entryIndex) {
    const Caller caller = entries[entryIndex].caller;
    const bool isForMainThread = caller == Caller::mainThread || caller == Caller::mainThreadLocked;
    const bool isInCallback = CallbackScope::current() != nullptr;
    if (hasEnded_)
        throw ContractViolation("called after the host has ended");
    if (isForMainThread && std::this_thread::get_id() != mainThread_)
        throw ContractViolation("called on a thread that is not the main thread");
    if (isForMainThread && isInCallback)
        throw ContractViolation("called inside a load-on-demand callback");
    if (caller == Caller::mainThreadLocked && !brackets.isLocked())
        throw ContractViolation("called while the host is not locked");
    if (caller == Caller::loadCallback && !isInCallback)
        throw ContractViolation("called outside a load-on-demand callback");
    if (entries[entryIndex].refusal != Refusal::afterClosing)
        gate.pass(entryIndex);
}

void HostState::recordFailure(std::size_t entryIndex) {
    std::string text{entries[entryIndex].name};
    text += ": ";
    try {
        throw;
    } catch (const ContractViolation& violation) {
        text += violation.what();
        journal.violation(text);
    } catch (const std::bad_alloc&) {
        text += "memory is exhausted";
    } catch (const std::exception& exception) {
        text += exception.what();
    }
    const std::lock_guard lock{lastErrorMutex_};
    lastError_ = std::move(text);
}

std::string HostState::lastError() const {
    const std::lock_guard lock{lastErrorMutex_};
    return lastError_;
}

bool HostState::call(const std::string& name, const std::string& arguments,
                     const std::function<std::optional<KroBool>()>& callback) {
    const bool result = callAddOn(
        journal, name, [&] { return arguments; }, callback);
    for (const std::string& open : brackets.closeAll())
        journal.violation(fmt::format("{} returned with {}", name, open));
    return result;
}

bool HostState::runLoad(const std::string& name, const std::string& arguments,
                        const std::function<std::optional<KroBool>()>& callback) {
    taskText.clear();
    firstZoneOfLoad = dataset ? dataset->zones.size() : 0;
    const bool isLoaded = call(name, arguments, callback);
    if (isLoaded)
        taskText.clear();
    if (isLoaded && dataset)
        assignStrandGroups(*dataset, firstZoneOfLoad);
    return isLoaded;
}

const Loader* HostState::findLoader(const std::string& name) const {
    const auto found =
        std::find_if(loaders.begin(), loaders.end(), [&](const Loader& loader) { return loader.name == name; });
    return found == loaders.end() ? nullptr : &*found;
}

const KroAddOn& HostState::requireAddOn(const KroAddOn* addOn) const {
    for (const KroAddOn& registered : addOns)
        if (&registered == addOn)
            return registered;
    throw ContractViolation("the add-on is not registered");
}

Dataset& HostState::requireDataset() {
    if (!dataset)
        throw CallFailure("there is no dataset");
    return *dataset;
}

Zone& HostState::requireZone(std::int32_t zone) {
    std::vector<Zone>& zones = requireDataset().zones;
    if (zone < 1 || static_cast<std::size_t>(zone) > zones.size())
        throw ContractViolation(fmt::format("there is no zone {}", zone));
    return zones[static_cast<std::size_t>(zone) - 1];
}

void HostState::claimRecord(const Deferred* holder, void* clientData) {
    if (holder)
        throw ContractViolation(fmt::format("callbacks for {} are registered already", describe(holder->target())));
    if (clientData && !clientRecords_.insert(clientData).second)
        throw ContractViolation("the client record belongs to other callbacks already");
}

void HostState::dropDataset() {
    if (!dataset)
        return;
    cleanUp(*dataset);
    dataset.reset();
}

void HostState::cleanUp(Dataset& ended) noexcept {
    const auto cleanUpOne = [this](Deferred* deferred) {
        if (!deferred)
            return;
        clientRecords_.erase(deferred->clientData());
        budget.cleanup(*deferred, journal);
    };
    for (Zone& zone : ended.zones) {
        cleanUpOne(zone.nodeMap.get());
        for (ZoneVariable& variable : zone.variables)
            cleanUpOne(variable.data.get());
    }
}

std::optional<std::string> HostState::refusalOfStorage(const Dataset& owner, const Deferred& deferred,
                                                       std::optional<std::uint64_t> byteCount) const {
    const Target target = deferred.target();
    const std::int64_t nodeCount = owner.zones[static_cast<std::size_t>(target.zone) - 1].nodeCount;
    const bool isNarrow = target.variable == 0 && deferred.itemByteCount() == 4;
    if (isNarrow && nodeCount - 1 > std::numeric_limits<std::int32_t>::max())
        return fmt::format("The node numbers of {} do not fit 32 bits", owner.name(target));
    if (!byteCount)
        return fmt::format("Not enough memory for {}: more than {} bytes are needed", owner.name(target),
                           std::numeric_limits<std::int64_t>::max());
    if (const auto limit = std::min(options.storageByteLimit, options.memoryByteBudget); *byteCount > limit)
        return fmt::format("Not enough memory for {}: {} bytes are needed, {} may be used", owner.name(target),
                           *byteCount, limit);
    return std::nullopt;
}

bool HostState::load(const Dataset& owner, Deferred& deferred, bool isKeeping) {
    const std::optional<std::uint64_t> byteCount = deferred.byteCount();
    std::optional<std::string> refusal = refusalOfStorage(owner, deferred, byteCount);
    if (!refusal)
        refusal = fill(owner, deferred, *byteCount, isKeeping);
    if (refusal && !refusal->empty())
        journal.dialog({*refusal, deferred.target().zone, deferred.target().variable});
    return !refusal;
}

/// Nothing when the data are loaded and in use, else what there is left to say, which is nothing of a client's failure.
std::optional<std::string> HostState::fill(const Dataset& owner, Deferred& deferred, std::uint64_t byteCount,
                                           bool isKeeping) {
    const MemoryBudget::Answer answer = budget.begin(deferred, byteCount, isKeeping, journal);
    if (answer == MemoryBudget::Answer::refused)
        return fmt::format("Not enough memory for {}: {} bytes are needed beside what is in use, {} may be used",
                           owner.name(deferred.target()), byteCount, options.memoryByteBudget);
    try {
        if (answer == MemoryBudget::Answer::loaded || deferred.load(journal))
            return std::nullopt;
    } catch (const std::bad_alloc&) {
        budget.end(deferred, journal);
        return fmt::format("Not enough memory for {}: {} bytes are needed", owner.name(deferred.target()), byteCount);
    }
    budget.end(deferred, journal);
    return std::string();
}

void HostState::shutDown() {
    if (std::exchange(isShutDown_, true))
        return;
    for (const KroStateChangeCallback callback : stateChangeCallbacks)
        call("StateChangeCallback", std::to_string(Kro_StateChangeShutdown), [&]() -> std::optional<KroBool> {
            callback(Kro_StateChangeShutdown);
            return std::nullopt;
        });
    for (Dataset& earlier : earlierDatasets)
        cleanUp(earlier);
    earlierDatasets.clear();
    dropDataset();
    hasEnded_ = true;
    if (const std::int64_t count = liveListCount; count != 0)
        journal.violation(fmt::format("{} string or argument lists were not freed", count));
    if (journal.hasLoss())
        throw std::bad_alloc();
}

} // namespace krohost
