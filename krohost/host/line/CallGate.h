#pragma once

#include "krohost/host/line/entries.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>

namespace krohost {

/// Counts the calls of every function of the interface and knows which of them to refuse. [any thread]
class CallGate {
public:
    /// Lets the `callNumber`-th call from now (from 1) of a function fail. Throws std::out_of_range for an unknown name
    /// and std::invalid_argument for a function whose contract has no failure.
    void refuse(std::string_view name, std::int64_t callNumber);

    /// Counts a call; throws CallFailure when it is to be refused.
    void pass(std::size_t entryIndex);

    std::int64_t callCount(std::string_view name) const { return counts_[entryIndex(name)].load(); }

private:
    std::array<std::atomic<std::int64_t>, entries.size()> counts_{};
    std::atomic<bool> hasRefusals_{false};
    std::mutex mutex_;
    std::set<std::pair<std::size_t, std::int64_t>> refusals_; // function, number of its call since the start
};

} // namespace krohost
