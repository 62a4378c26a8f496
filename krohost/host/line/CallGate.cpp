#include "krohost/host/line/CallGate.h"

#include "krohost/host/line/contract.h"

#include <fmt/format.h>

#include <stdexcept>

namespace krohost {

void CallGate::refuse(std::string_view name, std::int64_t callNumber) {
    const std::size_t index = entryIndex(name);
    if (entries[index].refusal == Refusal::impossible || callNumber < 1)
        throw std::invalid_argument(fmt::format("call {} of {} cannot be refused", callNumber, name));
    const std::lock_guard lock{mutex_};
    refusals_.emplace(index, counts_[index].load() + callNumber);
    hasRefusals_ = true;
}

void CallGate::pass(std::size_t entryIndex) {
    const std::int64_t callNumber = counts_[entryIndex].fetch_add(1, std::memory_order_relaxed) + 1;
    if (!hasRefusals_.load(std::memory_order_relaxed))
        return;
    const std::lock_guard lock{mutex_};
    if (refusals_.erase({entryIndex, callNumber}) != 0)
        throw CallFailure("the host was told to refuse this call");
}

} // namespace krohost
