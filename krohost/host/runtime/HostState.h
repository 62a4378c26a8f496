#pragma once

#include "krohost/host/line/Brackets.h"
#include "krohost/host/line/CallGate.h"
#include "krohost/host/line/Journal.h"
#include "krohost/host/model/ArgumentList.h"
#include "krohost/host/model/Dataset.h"
#include "krohost/host/runtime/AddOn.h"
#include "krohost/host/runtime/HostOptions.h"
#include "krohost/host/runtime/Loader.h"
#include "krohost/host/runtime/MemoryBudget.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace krohost {

/// Everything that the functions of the C interface work on. One per process; made and destroyed on the main thread.
/// What is not tagged otherwise is for the main thread, and find, load and the journal for demands on other threads.
class HostState {
public:
    /// Throws std::logic_error while there is another one.
    explicit HostState(HostOptions hostOptions);
    ~HostState();
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;

    /// Null when the process has no host. [any thread]
    static HostState* current() noexcept;

    /// Counts a call of the interface and checks it before it is served. Throws ContractViolation or CallFailure.
    /// [any thread]
    void admit(std::size_t entryIndex);

    /// Keeps the exception that is being handled as the last error and, if it is one, as a violation. [any thread]
    void recordFailure(std::size_t entryIndex);
    std::string lastError() const;

    /// Calls a callback that is made on the main thread, and afterwards closes what it left open: each a violation.
    bool call(const std::string& name, const std::string& arguments,
              const std::function<std::optional<KroBool>()>& callback);

    /// The same for a callback that loads: afterwards zones whose strands were left to the host are grouped, or, when
    /// the load failed, `taskText` says what it was doing.
    bool runLoad(const std::string& name, const std::string& arguments,
                 const std::function<std::optional<KroBool>()>& callback);

    const Loader* findLoader(const std::string& name) const;
    /// Throws ContractViolation for a pointer that is not one of the registered add-ons.
    const KroAddOn& requireAddOn(const KroAddOn* addOn) const;
    /// Throws CallFailure when there is none.
    Dataset& requireDataset();
    /// Throws ContractViolation for a number that no zone has.
    Zone& requireZone(std::int32_t zone);

    /// Takes over a handle and with it the client record. Throws ContractViolation when the place is taken or the
    /// record belongs to another handle.
    template <class Handle>
    void adopt(std::unique_ptr<Handle>& place, std::unique_ptr<Handle> handle) {
        claimRecord(place.get(), handle->clientData());
        place = std::move(handle);
    }

    /// Runs the cleanups of the current dataset and forgets it.
    void dropDataset();

    /// Loads data of a dataset unless they are loaded, and begins a use of them if it can; the caller ends it. What
    /// goes wrong is a dialog or a violation. [any thread, one per target]
    bool load(const Dataset& owner, Deferred& deferred, bool isKeeping);

    /// Tells the add-ons that the host ends, runs every cleanup and looks for what they left behind. Once only.
    void shutDown();

    HostOptions options;
    Journal journal;
    CallGate gate;
    Brackets brackets;
    std::deque<KroAddOn> addOns;
    std::vector<Loader> loaders;
    std::vector<KroStateChangeCallback> stateChangeCallbacks;
    MemoryBudget budget;
    std::optional<Dataset> dataset;
    std::deque<Dataset> earlierDatasets;     // that are kept beside the current one
    std::string progressText;                // shown: a display's title, then the text set last
    std::string taskText;                    // the text that the current load has set last, or a failed one had
    std::size_t firstZoneOfLoad = 0;         // index of the first zone that the current load adds
    std::atomic<std::int64_t> listNumber{0}; // of the list made last
    std::atomic<std::int64_t> liveListCount{0};

private:
    void claimRecord(const Deferred* holder, void* clientData);
    std::optional<std::string> refusalOfStorage(const Dataset& owner, const Deferred& deferred,
                                                std::optional<std::uint64_t> byteCount) const;
    std::optional<std::string> fill(const Dataset& owner, Deferred& deferred, std::uint64_t byteCount, bool isKeeping);
    void cleanUp(Dataset& ended) noexcept;

    std::thread::id mainThread_ = std::this_thread::get_id();
    mutable std::mutex lastErrorMutex_;
    std::string lastError_;
    std::unordered_set<void*> clientRecords_;
    bool isShutDown_ = false;
    std::atomic<bool> hasEnded_{false}; // and nobody may call any more
};

} // namespace krohost
