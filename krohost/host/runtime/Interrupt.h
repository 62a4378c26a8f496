#pragma once

#include <atomic>
#include <cstdint>

namespace krohost {

/// The user's wish to stop, and its injection at a chosen moment. One per process, because a signal handler sets it.
/// Numbers of polls and updates count from 1 and from the last reset. [any thread]
class Interrupt {
public:
    /// Asks the current operation to stop. May be called from a signal handler.
    void request() noexcept { isRequested_.store(true, std::memory_order_relaxed); }
    bool isRequested() const noexcept { return isRequested_.load(std::memory_order_relaxed); }

    /// Back to the start: not requested, nothing armed or counted.
    void reset() noexcept;

    void requestAtPoll(std::int64_t pollNumber) noexcept;
    void requestAtProgressUpdate(std::int64_t updateNumber) noexcept { updateNumber_ = updateNumber; }

    /// Makes polls be counted.
    void countPolls() noexcept { isCounting_.store(true, std::memory_order_relaxed); }
    std::int64_t pollCount() const noexcept { return pollCount_.load(); }

    /// A question from the add-on whether to stop. A few nanoseconds unless polls are counted.
    bool poll() noexcept {
        if (isCounting_.load(std::memory_order_relaxed)) [[unlikely]]
            countPoll();
        return isRequested();
    }

    /// The same, asked by a progress update.
    bool pollAtProgressUpdate() noexcept;

private:
    void countPoll() noexcept;

    std::atomic<bool> isRequested_{false};
    std::atomic<bool> isCounting_{false};
    std::atomic<std::int64_t> pollCount_{0};
    std::atomic<std::int64_t> pollNumber_{0}; // 0: none
    std::atomic<std::int64_t> updateCount_{0};
    std::atomic<std::int64_t> updateNumber_{0}; // 0: none
};

extern Interrupt interrupt;

} // namespace krohost
