#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <tuple>

namespace test {

using krohost::Host;

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

TEST(HostCalls, ThatAreRefusedFailAllButRemarksWithTheseDialogs) {
    const VtuBuilder file = vtu().timeValue(2.5).piece(mixed());
    const std::string refused = ": the host was told to refuse this call";
    const std::string noData = "VTK Data Loader: None of the VTK files provided any data";
    const std::vector<std::tuple<std::string_view, int, std::string>> rows{
        {"KroUtilImportAddLoaderX", 1, "VTK Data Loader: Failed to register the loader"},
        {"KroUtilImportAddLoaderX", 2, "TRIX Loader: Failed to register the loader"},
        {"KroUtilDataSetCreateX", 1, "KroUtilDataSetCreateX" + refused},
        {"KroUtilDataSetAddVar", 4, "KroUtilDataSetAddVar" + refused},
        {"KroUtilDataSetAddZoneX", 1, noData},
        {"KroUtilArgListAppendArray", 1, noData},
        {"KroUtilZoneSetAuxData", 1, ""},
        {"KroUtilDataValueCustomLOD", 2, ""},
        {"KroUtilDataNodeCustomLOD", 1, ""},
        {"KroUtilImportSetLoaderInstr", 1, ""},
        {"KroUtilDataLoadFinishX", 1, ""}};
    for (const auto& [name, call, dialog] : rows) {
        Load load{file, {}, [name = name, call = call](Host& host) { host.injection().refuse(name, call); }};
        EXPECT_EQ(load.dialog(), dialog) << name;
        EXPECT_EQ(load.loaded(), name == "KroUtilImportAddLoaderX" || name == "KroUtilZoneSetAuxData") << name;
    }
}

TEST(Interrupt, EndsAValueDemandInSilenceAndANodeMapDemandWithADialog) {
    for (const MeshPiece& piece : {mixed(), singleCell(12)}) {
        Load load{vtu().piece(piece).appendedRaw().compressed()};
        load.host.injection().interruptAtPoll(1);
        EXPECT_FALSE(load.values("Y"));
        EXPECT_EQ(load.dialog(), "");
        load.host.clearInterrupt();
        load.host.injection().interruptAtPoll(2);
        EXPECT_FALSE(load.nodeMap());
        EXPECT_EQ(load.dialog(), "VTK Data Loader: An unknown error occurred while reading data from the VTK file");
        load.host.clearInterrupt();
        EXPECT_TRUE(std::ranges::all_of(load.host.demandAll(), &krohost::DemandResult::isLoaded));
        load.host.injection().interruptAtPoll(1);
        EXPECT_FALSE(load.loadAgain());
        EXPECT_EQ(load.host.dialogs().size(), 1);
    }
}

TEST(ProgressDisplay, GivesFilesAndThenZonesTheirSharesAndShowsVisibleGrowthOnly) {
    std::string members;
    for (int member = 0; member < 1000; ++member)
        members += "<Piece Source=\"a.vtu\"/>";
    const std::string collection =
        "<VTKFile type=\"PUnstructuredGrid\">" + members + "<FieldData><DataArray/></FieldData>" + members;
    const std::string text = vtu().piece(mixed()).text();
    std::vector<double> shown;
    double readUpTo = 0;
    const auto show = [&](double fraction, const std::string& step) {
        shown.push_back(fraction);
        readUpTo = step.find("Registering") == step.npos ? fraction : readUpTo;
    };
    Load load{Files{{"a.vtu", text}, {"all.pvtu", collection + "</VTKFile>"}}, {.onProgress = show}};
    shown.clear();
    EXPECT_TRUE(load.host.loadFiles({load.path(), load.path(), load.path(), load.path()}));
    EXPECT_TRUE(std::ranges::is_sorted(shown));
    EXPECT_GT(std::ranges::count_if(shown, [](double fraction) { return fraction < 0.124; }), 2) << "within a file";
    for (const double share : {0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 0.875})
        EXPECT_TRUE(std::ranges::any_of(shown, [&](double fraction) { return std::abs(fraction - share) < 1e-9; }))
            << testing::PrintToString(shown);
    shown.clear();
    EXPECT_TRUE(load.host.loadFiles({std::filesystem::path(load.path()).replace_filename("all.pvtu")}));
    EXPECT_NEAR(readUpTo, 0.5, 0.002) << "members are read in the first half";
    EXPECT_LE(shown.size(), 1000);
    EXPECT_GT(shown.back(), 0.99);
}

TEST(Shutdown, DestroysTheLoadersOnceHoweverOftenItIsAnnounced) {
    Load load{vtu().piece(hexahedron()), {.journal = krohost::JournalDetail::calls}};
    load.host.loadAddOn(ADD_ON); // registers the state-change callback again
    load.host.shutDown();
    for (const auto& [line, count] :
         {std::pair{"<- StateChangeCallback", 2}, {"<- DataValueCleanup", 3}, {"<- DataNodeCleanup", 1}})
        EXPECT_EQ(std::ranges::count(load.host.journal().lines(), line), count) << line;
}

} // namespace test
