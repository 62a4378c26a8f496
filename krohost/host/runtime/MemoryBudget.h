#pragma once

#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>

namespace krohost {

class Deferred;
class Journal;

/// Keeps the storage of all loaded data together within a number of bytes: when others need the room, it has those
/// unloaded that nobody uses, the one used least recently first. [any thread]
class MemoryBudget {
public:
    enum class Answer {
        loaded,  ///< the data are loaded already
        granted, ///< there is room, into which the caller loads them
        refused  ///< there is none, and waiting for it would not help
    };

    explicit MemoryBudget(std::uint64_t byteCount) : freeByteCount_{byteCount} {}

    /// Begins a use of the data by the calling thread, unless refused; they stay as they are until it ends. While other
    /// threads use what fills the budget, waits for them; but never when the calling thread uses data itself, so that
    /// no two threads wait for each other. Kept data stay loaded after their last use, as long as there is room.
    Answer begin(Deferred& data, std::uint64_t byteCount, bool isKept, Journal& journal);
    /// Ends a use, on the thread that began it. Behind the last one, unloads data that are not kept.
    void end(Deferred& data, Journal& journal) noexcept;

    /// Unloads data that nobody uses; true when they are not loaded afterwards.
    bool unload(Deferred& data, Journal& journal);
    /// Cleans up data that nobody uses and forgets them.
    void cleanup(Deferred& data, Journal& journal) noexcept;

private:
    using List = std::list<Deferred*>;

    bool makeRoom(std::uint64_t byteCount, std::unique_lock<std::mutex>& lock, Journal& journal);
    void take(Deferred& data, std::uint64_t byteCount);
    void giveBack(Deferred& data, List& list);

    std::mutex mutex_;
    std::condition_variable roomChanged_;
    std::uint64_t freeByteCount_;
    List idle_, used_; // what has room; of idle data, those used last are at the end
};

} // namespace krohost
