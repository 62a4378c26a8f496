#include "tests/krohost/Box.h"

#include <gtest/gtest.h>

#include <algorithm>

using krohost::DemandResult;
using krohost::Target;

namespace {

// What the box has: a node map of 16 numbers, three floats and ten doubles.
constexpr Target nodeMap{1, 0}, p{1, 1}, q{1, 2};
constexpr std::uint64_t nodeMapByteCount = 64, pByteCount = 12, qByteCount = 80;

/// Loads and keeps the targets one after the other; what was unloaded for them, in that order.
std::string unloadedBy(std::uint64_t byteBudget, const std::vector<Target>& targets, KroBool isUnloading = 1) {
    Box box{{.journal = krohost::JournalDetail::calls, .memoryByteBudget = byteBudget}};
    if (!isUnloading)
        box.unloadP = [](KroFieldData*) { return KroBool{0}; };
    EXPECT_TRUE(box.load());
    std::string unloaded;
    box.host.injection().clearJournal();
    for (const Target target : targets)
        unloaded += box.host.load(target) ? "" : "refused ";
    for (const std::string& line : box.host.journal().lines())
        if (line.starts_with("-> Data") && line.find("Unload") != line.npos)
            unloaded += line.substr(3) + " ";
    return unloaded;
}

} // namespace

TEST(MemoryBudget, WhatWasUsedLeastRecentlyMakesRoom) {
    constexpr std::uint64_t all = nodeMapByteCount + pByteCount + qByteCount;
    const std::string unloadP = "DataValueUnload(zone 1, variable 1) ", unloadNodeMap = "DataNodeUnload(zone 1) ";
    EXPECT_EQ(unloadedBy(all, {nodeMap, p, q}), "");
    EXPECT_EQ(unloadedBy(all - 1, {nodeMap, p, q}), unloadNodeMap);
    EXPECT_EQ(unloadedBy(all - 1, {nodeMap, p, nodeMap, q}), unloadP);
    EXPECT_EQ(unloadedBy(qByteCount, {nodeMap, p, q}), unloadNodeMap + unloadP);
    EXPECT_EQ(unloadedBy(qByteCount, {p, q, p}), unloadP + "DataValueUnload(zone 1, variable 2) ");
    EXPECT_EQ(unloadedBy(qByteCount, {p, q}, 0), "refused " + unloadP); // whose client does not agree
}

TEST(MemoryBudget, NobodyWaitsForRoomThatHeHasHimself) {
    Box box{{.memoryByteBudget = nodeMapByteCount + qByteCount - 1}};
    EXPECT_TRUE(box.load());
    {
        const krohost::Hold first = box.host.hold(box.host.dataset(), nodeMap);
        const krohost::Hold second = box.host.hold(box.host.dataset(), q);
        EXPECT_NE(first.data(), nullptr);
        EXPECT_EQ(second.data(), nullptr);
        EXPECT_TRUE(box.host.load(nodeMap)); // what is held already is not in the way
        EXPECT_FALSE(box.host.unload(nodeMap));
    }
    EXPECT_TRUE(box.host.load(q));
    ASSERT_EQ(box.host.dialogs().size(), 1);
    EXPECT_EQ(box.host.dialogs().front().text, R"(Not enough memory for variable 2 "q" of zone 1 "wing": 80 bytes )"
                                               "are needed beside what is in use, 143 may be used");
}

TEST(MemoryBudget, ManyThreadsLoadAllWithinIt) {
    const auto run = [](std::uint64_t byteBudget, bool isKeeping) {
        krohost::Host host{{.memoryByteBudget = byteBudget}};
        host.loadAddOn(ADD_ON);
        EXPECT_TRUE(host.loadFiles({SAMPLES "/cells-3d.vtu", SAMPLES "/wing-and-tail.vtu", SAMPLES "/wing.vtu"}));
        std::vector<std::uint32_t> checksums;
        for (int repetition = 0; repetition < (isKeeping ? 1 : 50); ++repetition)
            for (const DemandResult& result : host.demandAll({.threadCount = 8, .isKeeping = isKeeping})) {
                EXPECT_TRUE(result.isLoaded);
                for (const krohost::StorageSummary& part : result.parts)
                    checksums.push_back(part.crc32);
            }
        std::uint64_t largest = 0, kept = 0;
        for (const Target target : host.dataset().targets()) {
            const krohost::Deferred& data = *host.dataset().find(target);
            largest = std::max(largest, data.byteCount().value_or(0));
            kept += data.isLoaded() ? data.byteCount().value_or(0) : 0;
        }
        EXPECT_LE(kept, byteBudget);
        EXPECT_EQ(kept > 0, isKeeping);
        EXPECT_EQ(host.violations(), std::vector<std::string>{});
        return std::pair{largest, checksums};
    };
    const auto [largest, checksums] = run(1'000'000, false);
    EXPECT_EQ(run(largest, false).second, checksums);
    run(largest, true);
}
