#include "tests/krohost/Box.h"

#include <gtest/gtest.h>

#include <limits>

using krohost::DemandResult;

namespace {

/// Demands the node map, p and q of the box.
std::vector<bool> demandAll(Box& box) {
    EXPECT_TRUE(box.load());
    std::vector<bool> loaded;
    for (const DemandResult& result : box.host.demandAll())
        loaded.push_back(result.isLoaded);
    return loaded;
}

} // namespace

TEST(Demand, StorageThatCannotBeHadIsADialog) {
    Box box{{.nodeBitCount = 32, .storageByteLimit = 1000}};
    box.zone["IMax"] = 1'000'000'000'000;
    EXPECT_EQ(demandAll(box), (std::vector{false, true, false}));
    EXPECT_EQ(box.host.dialogs().front().text,
              R"(The node numbers of the node map of zone 1 "wing" do not fit 32 bits)");
    EXPECT_EQ(box.host.dialogs().back().text, R"(Not enough memory for variable 2 "q" of zone 1 "wing": )"
                                              "8000000000000 bytes are needed, 1000 may be used");
}

TEST(Demand, SizesThatWrapAreADialogToo) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    Box box{{.storageByteLimit = std::numeric_limits<std::uint64_t>::max()}};
    box.zone["JMax"] = most;
    box.zone["NumElemsPerSection"] = Counts{most - 1, 1};
    EXPECT_EQ(demandAll(box), (std::vector{false, false, true}));
    EXPECT_EQ(box.host.dialogs().front().text, R"(Not enough memory for the node map of zone 1 "wing": )"
                                               "more than 9223372036854775807 bytes are needed");
}
