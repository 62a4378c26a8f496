#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <tuple>

namespace test {

namespace {

using krohost::Host;

const krohost::HostOptions journaled{.journal = krohost::JournalDetail::calls};

/// Vertices, a time and two pieces: a load of it makes every call that a load of one file can make.
VtuBuilder everyCall() {
    const MeshPiece piece = mixed().withCellData(variedValues("c", ElementType::Int16, 4));
    return vtu().timeValue(2.5).piece(piece).piece(piece).base64().compressed(50);
}

bool demandsSucceed(Load& load) {
    return std::ranges::all_of(load.host.demandAll(), &krohost::DemandResult::isLoaded);
}

} // namespace

TEST(HostCalls, ReadNoValuesBeforeTheHostAsks) {
    VtuBuilder file = vtu().piece(mixed());
    for (const char* array : {"Points", "pressure", "velocity", "material", "connectivity"})
        file.inlineText(array, std::string(400, '*'));
    Load load{file};
    EXPECT_TRUE(load.loaded());
    EXPECT_EQ(load.dialog(), "");
    for (const krohost::DemandResult& result : load.host.demandAll())
        EXPECT_FALSE(result.isLoaded);
    EXPECT_EQ(load.host.dialogs().size(), 9);
}

TEST(HostCalls, ThatAreRefusedFailTheLoadWithTheseDialogs) {
    const std::string refused = ": the host was told to refuse this call";
    const std::string noData = "VTK Data Loader: None of the VTK files provided any data";
    const std::vector<std::tuple<std::string_view, int, std::string>> rows{
        {"KroUtilImportAddLoaderX", 1, "VTK Data Loader: Failed to register the loader"},
        {"KroUtilImportAddLoaderX", 2, "TRIX Loader: Failed to register the loader"},
        {"KroUtilDataSetCreateX", 1, "KroUtilDataSetCreateX" + refused},
        {"KroUtilDataSetAddVar", 4, "KroUtilDataSetAddVar" + refused},
        {"KroUtilDataSetAddZoneX", 1, noData},
        {"KroUtilArgListAppendArray", 1, noData},
        {"KroUtilDataValueCustomLOD", 2, ""},
        {"KroUtilDataNodeCustomLOD", 1, ""},
        {"KroUtilImportSetLoaderInstr", 1, ""},
        {"KroUtilDataLoadFinishX", 1, ""}};
    for (const auto& [name, call, dialog] : rows) {
        Load load{everyCall(), {}, [name = name, call = call](Host& host) { host.refuse(name, call); }};
        EXPECT_EQ(load.dialog(), dialog) << name;
        EXPECT_EQ(load.loaded(), name == "KroUtilImportAddLoaderX") << name;
    }
    for (const auto& [name, variable] :
         {std::pair{"KroUtilDataValueGetRawPtrByRef", 1}, std::pair{"KroUtilDataNodeSectionGetRawPtrByRef", 0}}) {
        Load load{everyCall(), {}, [name = name](Host& host) { host.refuse(name); }};
        EXPECT_FALSE(load.host.load({1, variable}));
        EXPECT_EQ(load.dialog(), "VTK Data Loader: Insufficient memory resources available to read data from the input "
                                 "stream.\nReason: std::bad_alloc");
    }
}

TEST(Interrupt, EndsAValueDemandInSilenceAndANodeMapDemandWithADialog) {
    for (const MeshPiece& piece : {mixed(), singleCell(12)}) {
        Load load{vtu().piece(piece).appendedRaw().compressed()};
        load.host.interruptAtPoll(1);
        EXPECT_FALSE(load.values("Y"));
        EXPECT_EQ(load.dialog(), "");
        load.host.clearInterrupt();
        load.host.interruptAtPoll(2);
        EXPECT_FALSE(load.nodeMap());
        EXPECT_EQ(load.dialog(), "VTK Data Loader: An unknown error occurred while reading data from the VTK file");
        load.host.clearInterrupt();
        EXPECT_TRUE(demandsSucceed(load));
    }
}

TEST(ProgressDisplay, GivesEachFileItsShareOfTheFirstHalf) {
    std::vector<double> shown;
    Load load{vtu().piece(mixed()), {.onProgress = [&](double fraction, auto&) { shown.push_back(fraction); }}};
    shown.clear();
    EXPECT_TRUE(load.host.loadFiles({load.path(), load.path(), load.path(), load.path()}));
    EXPECT_TRUE(std::ranges::is_sorted(shown));
    for (const double share : {0.125, 0.25, 0.375, 0.5})
        EXPECT_TRUE(std::ranges::any_of(shown, [&](double fraction) { return std::abs(fraction - share) < 1e-9; }))
            << testing::PrintToString(shown);
}

TEST(Shutdown, DestroysTheLoadersOnceHoweverOftenItIsAnnounced) {
    Load load{vtu().piece(hexahedron()), journaled};
    load.host.loadAddOn(ADD_ON); // registers the state-change callback again
    load.host.shutDown();
    for (const auto& [line, count] :
         {std::pair{"<- StateChangeCallback", 2}, {"<- DataValueCleanup", 3}, {"<- DataNodeCleanup", 1}})
        EXPECT_EQ(std::ranges::count(load.host.journal().lines(), line), count) << line;
}

} // namespace test
