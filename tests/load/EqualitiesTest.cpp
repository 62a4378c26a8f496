// The same file, read in every way there is: what the host holds does not depend on room, on threads or on what was
// interrupted before, and a collection gives what its members give alone.

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

Files samples(const std::vector<std::string>& names) {
    Files files;
    for (const std::string& name : names)
        files.emplace_back(name, readFile(std::filesystem::path(SAMPLES) / name));
    return files;
}

/// Two collections with their members behind them, and each sample.
std::vector<Files> cases() {
    std::vector<Files> cases{samples({"wing.vtu", "cells-3d.vtu", "points.vtu"}),
                             samples({"wing.vtu", "wing-and-tail.vtu"})};
    cases[0].emplace(cases[0].begin(), "case.vtm",
                     R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><DataSet file="wing.vtu"/>
                        <DataSet file="cells-3d.vtu"/><DataSet file="points.vtu"/></vtkMultiBlockDataSet></VTKFile>)");
    cases[1].emplace(cases[1].begin(), "case.pvtu",
                     R"(<VTKFile type="PUnstructuredGrid"><PUnstructuredGrid><Piece Source="wing.vtu"/>
                        <Piece Source="wing-and-tail.vtu"/></PUnstructuredGrid></VTKFile>)");
    for (const auto& entry : std::filesystem::directory_iterator(SAMPLES))
        if (entry.path().extension() == ".vtu")
            cases.push_back(samples({entry.path().filename()}));
    return cases;
}

} // namespace

TEST(Equalities, OfLoadsWithLittleMemoryInManyThreadsAndAfterInterrupts) {
    for (const Files& files : cases()) {
        SCOPED_TRACE(files.front().first);
        std::vector<Checksums> plain;
        std::uint64_t byteBudget = 0;
        {
            Load load{files};
            plain = checksums(load.host);
            byteBudget = largestByteCount(load.host.dataset());
            for (const std::int64_t poll : {1, 2}) {
                load.host.injection().interruptAtPoll(poll);
                EXPECT_FALSE(load.host.demandAll().back().isLoaded);
                load.host.clearInterrupt();
                EXPECT_EQ(checksums(load.host), plain);
            }
        }
        Load load{files, {.memoryByteBudget = byteBudget}};
        for (const unsigned threadCount : {1u, 8u})
            EXPECT_EQ(checksums(load.host, threadCount), plain);
    }
}

TEST(Equalities, OfCollectionsAndTheirMembers) {
    for (const Files& files : cases()) {
        std::vector<Checksums> alone;
        for (std::size_t index = files.size() == 1 ? 0 : 1; index < files.size(); ++index) {
            Load load{files[index].second};
            alone.push_back(checksums(load.host).at(0));
        }
        Load load{files};
        EXPECT_EQ(checksums(load.host), alone);
    }
}

} // namespace test
