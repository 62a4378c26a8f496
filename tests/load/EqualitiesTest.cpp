// The same file, read in every way there is: what the host holds does not depend on room, on threads or on what was
// interrupted before, a collection gives what its members give alone, and the host's own reader finds the same values.

#include "tests/load/Load.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace test {

namespace {

/// Of one zone its node map's sections, then its variables.
using Checksums = std::vector<std::uint32_t>;

std::vector<Checksums> checksums(krohost::Host& host, unsigned threadCount = 1) {
    std::vector<Checksums> zones(host.dataset().zones.size());
    for (const krohost::DemandResult& result : host.demandAll({.threadCount = threadCount})) {
        EXPECT_TRUE(result.isLoaded) << host.dataset().name(result.target);
        for (const krohost::StorageSummary& part : result.parts)
            zones[static_cast<std::size_t>(result.target.zone) - 1].push_back(part.crc32);
    }
    return zones;
}

std::uint64_t largestByteCount(const krohost::Dataset& dataset) {
    std::uint64_t largest = 0;
    for (const krohost::Target target : dataset.targets())
        largest = std::max(largest, dataset.find(target)->byteCount().value_or(0));
    return largest;
}

/// Of a sample, or of a collection of some.
class Equalities : public testing::TestWithParam<std::string> {
protected:
    static Files files() {
        Files files;
        const auto sample = [](const std::string& name) {
            return std::pair{name, readFile(std::filesystem::path(SAMPLES) / name)};
        };
        if (GetParam().ends_with(".vtu"))
            files.push_back(sample(GetParam()));
        else if (GetParam().ends_with(".vtm"))
            files = {
                {GetParam(), R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><DataSet file="wing.vtu"/>
                                     <DataSet file="cells-3d.vtu"/><DataSet file="points.vtu"/>
                                     </vtkMultiBlockDataSet></VTKFile>)"},
                sample("wing.vtu"),
                sample("cells-3d.vtu"),
                sample("points.vtu")};
        else
            files = {{GetParam(), R"(<VTKFile type="PUnstructuredGrid"><PUnstructuredGrid><Piece Source="wing.vtu"/>
                                     <Piece Source="wing-and-tail.vtu"/></PUnstructuredGrid></VTKFile>)"},
                     sample("wing.vtu"),
                     sample("wing-and-tail.vtu")};
        return files;
    }
};

std::vector<std::string> names() {
    std::vector<std::string> names{"case.vtm", "case.pvtu"};
    for (const auto& entry : std::filesystem::directory_iterator(SAMPLES))
        if (entry.path().extension() == ".vtu")
            names.push_back(entry.path().filename());
    return names;
}

} // namespace

TEST_P(Equalities, OfLoadsWithLittleMemoryInManyThreadsAndAfterInterrupts) {
    std::vector<Checksums> plain;
    std::uint64_t byteBudget = 0;
    {
        Load load{files()};
        plain = checksums(load.host);
        byteBudget = largestByteCount(load.host.dataset());
        for (const std::int64_t poll : {1, 2}) {
            load.host.interruptAtPoll(poll);
            EXPECT_FALSE(load.host.demandAll().back().isLoaded);
            load.host.clearInterrupt();
            EXPECT_EQ(checksums(load.host), plain);
        }
    }
    Load load{files(), {.memoryByteBudget = byteBudget}};
    for (const unsigned threadCount : {1u, 8u})
        EXPECT_EQ(checksums(load.host, threadCount), plain);
}

TEST_P(Equalities, OfTheAddOnAndTheOwnReaderAndOfCollectionsAndTheirMembers) {
    const Files all = files();
    std::vector<Checksums> alone;
    for (std::size_t index = all.size() == 1 ? 0 : 1; index < all.size(); ++index) {
        Files member;
        member.push_back(all[index]);
        Load load{member};
        expectZone(load, zoneByOwnReader(load.path()));
        alone.push_back(checksums(load.host).at(0));
    }
    Load load{all};
    EXPECT_EQ(checksums(load.host), alone);
}

INSTANTIATE_TEST_SUITE_P(, Equalities, testing::ValuesIn(names()), [](const auto& parameter) {
    std::string name = parameter.param;
    std::ranges::replace_if(
        name, [](char character) { return std::isalnum(character) == 0; }, '_');
    return name;
});

} // namespace test
