// Demands from many threads: what the thread sanitizer is to look at.

#include "krohost/host/runtime/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

namespace test {

namespace {

using krohost::DemandResult;
using krohost::Host;

constexpr unsigned threadCount = 8;

/// Two files of equal layout that differ in the values of "v".
std::array<std::string, 2> twoVersions(const Encoding& encoding) {
    const MeshPiece row = sideBySide(std::vector(100, singleCell(12)));
    std::vector<std::int64_t> values = numbers(row.pointCount());
    std::array<std::string, 2> texts;
    for (std::string& text : texts) {
        text = vtu().piece(row.withPointData(integers("v", ElementType::Int32, values))).encoding(encoding).text();
        std::ranges::reverse(values);
    }
    return texts;
}

std::vector<std::uint32_t> checksums(const DemandResult& result) {
    std::vector<std::uint32_t> sums;
    for (const krohost::StorageSummary& part : result.parts)
        sums.push_back(part.crc32);
    return sums;
}

/// A dataset of files in several encodings, and all that may rightly come of each demand.
class Concurrency : public testing::Test {
protected:
    Concurrency() {
        host_.loadAddOn(ADD_ON);
        for (const Encoding& encoding : {Encoding{Format::AppendedRaw}, Encoding{}, Encoding{Format::Base64, true},
                                         Encoding{Format::AppendedBase64}}) {
            paths_.push_back(folder_ / (std::to_string(paths_.size()) + ".vtu"));
            versions_.push_back(twoVersions(encoding));
            // Elsewhere the arrays of the other version begin at other places, and what is there is any number.
            if (encoding.format != Format::AppendedRaw)
                versions_.back()[1] = versions_.back()[0];
        }
        for (const std::size_t version : {1, 0}) {
            for (std::size_t index = 0; index < paths_.size(); ++index)
                writeFile(paths_[index], versions_[index][version]);
            EXPECT_TRUE(host_.loadFiles(paths_));
            for (const DemandResult& result : host_.demandAll())
                right_.insert({host_.dataset().name(result.target), checksums(result)});
        }
    }
    ~Concurrency() override {
        host_.shutDown();
        EXPECT_EQ(host_.violations(), std::vector<std::string>{});
    }

    /// Demands everything; what comes is right. Returns how many demands failed.
    std::ptrdiff_t demandAll() {
        const std::vector<DemandResult> results = host_.demandAll({.threadCount = threadCount});
        for (const DemandResult& result : results)
            EXPECT_TRUE(!result.isLoaded || right_.contains({host_.dataset().name(result.target), checksums(result)}))
                << host_.dataset().name(result.target);
        return std::ranges::count(results, false, &DemandResult::isLoaded);
    }

    /// Replaces, cuts and deletes one file after the other until it is asked to stop; then all are there again.
    void change(const std::stop_token& stop) const {
        const auto pause = [] { std::this_thread::sleep_for(std::chrono::microseconds(100)); };
        const auto replace = [&](std::size_t index, const std::string& text) {
            writeFile(folder_ / "new", text);
            std::filesystem::rename(folder_ / "new", paths_[index]);
            pause();
        };
        for (std::size_t round = 0; !stop.stop_requested(); ++round) {
            const std::size_t index = round % paths_.size();
            const auto& [first, second] = versions_[index];
            replace(index, second);
            truncate(paths_[index], first.size() * (round % 10) / 10);
            pause();
            std::filesystem::remove(paths_[index]);
            pause();
            replace(index, first);
        }
    }

    TemporaryFolder folder_;
    std::vector<std::string> paths_;
    std::vector<std::array<std::string, 2>> versions_; // of each file
    std::set<std::pair<std::string, std::vector<std::uint32_t>>> right_;
    Host host_;
};

} // namespace

TEST_F(Concurrency, FilesThatChangeUnderneathGiveWhatIsRightOrADialog) {
    std::ptrdiff_t failedCount = 0, roundCount = 0;
    {
        const std::jthread changes([this](const std::stop_token& stop) { change(stop); });
        for (; roundCount < 500 || (failedCount == 0 && roundCount < 10000); ++roundCount)
            failedCount += demandAll();
    }
    EXPECT_EQ(host_.dialogs().size(), failedCount);
    EXPECT_GT(failedCount, 0);
    EXPECT_LT(failedCount, roundCount * std::ssize(host_.dataset().targets()));
    EXPECT_EQ(demandAll(), 0);
}

TEST_F(Concurrency, AnInterruptStopsEveryDemandAtItsNextPoll) {
    for (const std::int64_t poll : {1, 2, 3, 5, 8, 100}) {
        host_.injection().interruptAtPoll(poll);
        EXPECT_GT(demandAll(), 0);
        EXPECT_LT(host_.injection().pollCount(), poll + threadCount);
        host_.clearInterrupt();
        EXPECT_EQ(demandAll(), 0);
    }
}

TEST(ConcurrentDemands, GiveTheSameFromAnyNumberOfThreads) {
    const auto run = [](unsigned count) {
        Host host{{.journal = krohost::JournalDetail::all}};
        host.loadAddOn(ADD_ON);
        EXPECT_TRUE(host.loadFiles({SAMPLES "/cells-3d.vtu", SAMPLES "/wing-and-tail.vtu", SAMPLES "/wing.vtu"}));
        std::size_t progressCount = 0;
        const auto results = host.demandAll({count, [&](std::size_t, std::size_t) { ++progressCount; }});
        EXPECT_EQ(progressCount, results.size());
        EXPECT_TRUE(std::ranges::all_of(results, &DemandResult::isLoaded));
        return host.journal().lines();
    };
    EXPECT_EQ(run(1), run(threadCount));
}

} // namespace test
