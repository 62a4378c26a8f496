#include "krohost/host/runtime/Demand.h"

#include "krohost/host/model/itemType.h"
#include "krohost/host/runtime/Hold.h"
#include "krohost/host/runtime/HostState.h"
#include "krohost/host/runtime/Interrupt.h"

#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <exception>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>

namespace krohost {

static_assert(std::endian::native == std::endian::little, "checksums are those of little-endian bytes");

namespace {

/// Checksum and extremes are taken block by block, so that each byte comes from memory once.
template <class Item>
StorageSummary summarizeStorage(const Storage& storage) {
    constexpr std::size_t blockItemCount = 64 * 1024 / sizeof(Item);
    auto least = std::numeric_limits<Item>::max();
    auto greatest = std::numeric_limits<Item>::lowest();
    if constexpr (std::numeric_limits<Item>::has_infinity) {
        least = std::numeric_limits<Item>::infinity();
        greatest = -least;
    }
    uLong checksum = 0;
    const auto items = storage.items<Item>();
    for (std::size_t begin = 0; begin < items.size(); begin += blockItemCount) {
        const auto block = items.subspan(begin, std::min(blockItemCount, items.size() - begin));
        checksum = crc32_z(checksum, reinterpret_cast<const Bytef*>(block.data()), block.size_bytes());
        for (const Item item : block) { // comparisons with NaN are false
            least = item < least ? item : least;
            greatest = item > greatest ? item : greatest;
        }
    }
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    const bool isEmpty = least > greatest;
    return {storage.itemCount(), isEmpty ? none : static_cast<double>(least),
            isEmpty ? none : static_cast<double>(greatest), static_cast<std::uint32_t>(checksum)};
}

DemandResult serve(HostState& host, Target target, bool isKeeping) {
    DemandResult result{target, false, {}};
    const Hold hold{host, *host.dataset, target, isKeeping};
    result.isLoaded = hold.data() != nullptr;
    if (result.isLoaded && !isKeeping)
        result.parts = summarize(*hold.data());
    return result;
}

/// Serves the targets from as many threads as there are, each taking the next one that nobody has.
class Queue {
public:
    Queue(HostState& host, std::span<const Target> targets, const DemandOptions& options)
        : host_{host}, targets_{targets}, options_{options}, results_(targets.size()), records_(targets.size()) {
        std::transform(targets.begin(), targets.end(), results_.begin(), [](Target target) {
            return DemandResult{target, false, {}};
        });
    }

    std::vector<DemandResult> run() {
        {
            std::vector<std::jthread> helpers = startHelpers();
            work();
        }
        if (failure_)
            std::rethrow_exception(failure_);
        for (Record& record : records_)
            host_.journal.append(std::move(record));
        return std::move(results_);
    }

private:
    std::vector<std::jthread> startHelpers() {
        std::vector<std::jthread> helpers;
        const std::size_t helperCount = std::min<std::size_t>(options_.threadCount, targets_.size());
        try {
            while (helpers.size() + 1 < helperCount)
                helpers.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // No further thread is to be had; those there are do the work.
        }
        return helpers;
    }

    /// A thread that fails, which is for want of memory, ends the work of all.
    void work() noexcept {
        try {
            serveAll();
        } catch (...) {
            const std::lock_guard lock{progressMutex_};
            failure_ = std::current_exception();
            next_ = targets_.size();
        }
    }

    void serveAll() {
        for (std::size_t index = next_++; index < targets_.size() && !interrupt.isRequested(); index = next_++) {
            {
                const Journal::Redirection redirection{records_[index]};
                results_[index] = serve(host_, targets_[index], options_.isKeeping);
            }
            report();
        }
    }

    void report() {
        const std::lock_guard lock{progressMutex_};
        ++doneCount_;
        if (options_.onProgress)
            options_.onProgress(doneCount_, targets_.size());
    }

    HostState& host_;
    std::span<const Target> targets_;
    const DemandOptions& options_;
    std::vector<DemandResult> results_;
    std::vector<Record> records_;
    std::atomic<std::size_t> next_{0};
    std::mutex progressMutex_;
    std::size_t doneCount_ = 0;
    std::exception_ptr failure_;
};

template <class Item, class Result>
std::vector<Result> copyItems(const Storage& storage) {
    const auto items = storage.items<Item>();
    return {items.begin(), items.end()};
}

} // namespace

std::vector<DemandResult> demand(HostState& host, std::span<const Target> targets, const DemandOptions& options) {
    return Queue{host, targets, options}.run();
}

std::vector<StorageSummary> summarize(const Deferred& deferred) {
    return withItemType(deferred, [&]<class Item>(ItemTag<Item>) {
        std::vector<StorageSummary> summaries;
        for (const Storage& part : deferred.parts())
            summaries.push_back(summarizeStorage<Item>(part));
        return summaries;
    });
}

std::vector<double> values(const KroFieldData& fieldData) {
    return withItemType(fieldData,
                        [&]<class Item>(ItemTag<Item>) { return copyItems<Item, double>(fieldData.parts().front()); });
}

std::vector<std::vector<std::int64_t>> nodeNumbers(const KroNodeMap& nodeMap) {
    std::vector<std::vector<std::int64_t>> sections;
    for (const Storage& part : nodeMap.parts())
        sections.push_back(nodeMap.itemByteCount() == 8 ? copyItems<std::int64_t, std::int64_t>(part)
                                                        : copyItems<std::int32_t, std::int64_t>(part));
    return sections;
}

} // namespace krohost
