#include "krohost/Host.h"
#include "tests/krohost/Loaded.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using krohost::DemandResult;

namespace {

std::vector<std::string> dialogTexts(const krohost::Host& host) {
    std::vector<std::string> texts;
    for (const krohost::Dialog& dialog : host.dialogs())
        texts.push_back(dialog.text);
    return texts;
}

} // namespace

TEST(Demand, GivesValuesAndNodeNumbersAndDropsThem) {
    Loaded load{"box"};
    EXPECT_EQ(load.host.demandValues(1, 1), (std::vector<double>{0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5}));
    const std::vector<std::int64_t> eight{0, 1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(load.host.demandNodeMap(1), (std::vector{eight, eight}));
    EXPECT_FALSE(load.host.dataset().find({1, 1})->isLoaded());
    EXPECT_TRUE(load.host.load({1, 1}));
    EXPECT_TRUE(load.host.dataset().find({1, 1})->isLoaded());
    EXPECT_TRUE(load.host.unload({1, 1}));
    EXPECT_THROW(load.host.load({1, 3}), std::out_of_range);
}

TEST(Demand, SummariesSkipNaNAndChecksumRawBytes) {
    for (const int nodeBitCount : {32, 64}) {
        Loaded load{"box", {.nodeBitCount = nodeBitCount}};
        const std::vector<DemandResult> results = load.host.demandAll();
        ASSERT_EQ(results.size(), 3);
        ASSERT_EQ(results[0].parts.size(), 2);
        EXPECT_EQ(results[0].parts[1].crc32, nodeBitCount == 32 ? 0x790723dc : 0xf93a987e);
        ASSERT_EQ(results[2].parts.size(), 1);
        EXPECT_EQ(results[2].parts[0].count, 3);
        EXPECT_EQ(results[2].parts[0].min, 1);
        EXPECT_EQ(results[2].parts[0].max, 2);
        EXPECT_EQ(results[2].parts[0].crc32, 0x676dbed5);
        EXPECT_EQ(load.host.violations(), std::vector<std::string>{});
    }
}

TEST(Demand, PointsHaveNoNodeMapAndOneCellEach) {
    Loaded load{"points"};
    const krohost::Zone& zone = load.host.dataset().zones.at(0);
    EXPECT_EQ(zone.elementCount, 10);
    EXPECT_TRUE(zone.sections.empty());
    EXPECT_EQ(load.host.demandValues(1, 2)->size(), 10);
    EXPECT_THROW(load.host.demandNodeMap(1), std::out_of_range);
}

TEST(Demand, StorageThatCannotBeHadIsADialog) {
    Loaded huge{"huge", {.storageByteLimit = 1000}};
    EXPECT_EQ(huge.host.demandValues(1, 1), std::nullopt);
    EXPECT_TRUE(huge.host.demandValues(1, 2));
    EXPECT_EQ(
        dialogTexts(huge.host),
        std::vector<std::string>{"Not enough memory for variable 1 \"X\" of zone 1 \"wing\": 8000000000000 bytes are "
                                 "needed, 1000 may be used"});
}

TEST(Demand, SizesThatWrapAreADialogToo) {
    Loaded load{"beyond 64 bits", {.storageByteLimit = std::numeric_limits<std::uint64_t>::max()}};
    EXPECT_EQ(load.host.demandNodeMap(1), std::nullopt);
    EXPECT_EQ(dialogTexts(load.host),
              std::vector<std::string>{"Not enough memory for the node map of zone 1 \"wing\": more "
                                       "than 9223372036854775807 bytes are needed"});
}

TEST(Demand, ResultsAreTheSameFromAnyNumberOfThreads) {
    const auto run = [](unsigned threadCount) {
        Loaded load{"many", {.journal = krohost::JournalDetail::all}};
        std::size_t progressCount = 0;
        const auto results = load.host.demandAll({threadCount, [&](std::size_t, std::size_t) { ++progressCount; }});
        EXPECT_EQ(progressCount, 150);
        EXPECT_TRUE(std::all_of(results.begin(), results.end(), [](const auto& result) { return result.isLoaded; }));
        return load.host.journal().lines();
    };
    EXPECT_EQ(run(1), run(8));
}

TEST(Demand, DialogsSayForWhatTheyWereAndComeInOrder) {
    Loaded load{"fails"};
    EXPECT_FALSE(load.host.demandAll({4, {}})[2].isLoaded);
    ASSERT_EQ(load.host.dialogs().size(), 1);
    EXPECT_EQ(load.host.dialogs()[0].text, "Fake Loader: no values");
    EXPECT_EQ(load.host.dialogs()[0].zone, 1);
    EXPECT_EQ(load.host.dialogs()[0].variable, 2);
    EXPECT_FALSE(load.host.demandValues(1, 2)) << "a failed load may be asked for again";
    EXPECT_EQ(load.host.dialogs().size(), 2);
}

TEST(Interrupt, AtAPollStopsAllDemands) {
    Loaded load{"polls"};
    load.host.interruptAtPoll(5500);
    const auto results = load.host.demandAll({1, {}});
    EXPECT_EQ(std::count_if(results.begin(), results.end(), [](const auto& result) { return result.isLoaded; }), 17);
    EXPECT_TRUE(krohost::Host::isInterrupted());
    load.host.clearInterrupt();
    EXPECT_TRUE(load.host.demandAll({4, {}}).back().isLoaded);
}

TEST(Interrupt, AtAProgressUpdateStopsTheLoad) {
    krohost::Host host;
    host.loadAddOn(FAKE_ADD_ON);
    EXPECT_TRUE(host.loadFiles({"updates progress"}));
    host.clearInterrupt();
    host.interruptAtProgressUpdate(2);
    EXPECT_FALSE(host.loadFiles({"updates progress"}));
}
