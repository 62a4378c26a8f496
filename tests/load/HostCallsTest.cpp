#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include "krohost/entries.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>

namespace test {

namespace {

using krohost::Host;

const krohost::HostOptions journaled{.journal = krohost::JournalDetail::calls};

/// Vertices, a time and two pieces: a load of it makes every call that a load of one file can make.
Files everyCall() {
    const MeshPiece piece = mixed().withCellData(variedValues("c", ElementType::Int16, 4));
    return {{"mesh.vtu", vtu().timeValue(2.5).piece(piece).piece(piece).base64().compressed(50).text()}};
}

bool demandsSucceed(Load& load) {
    const auto results = load.host.demandAll();
    return std::ranges::all_of(results, &krohost::DemandResult::isLoaded);
}

std::int64_t lineCount(const Load& load, const std::string& line) {
    return std::ranges::count(load.host.journal().lines(), line);
}

} // namespace

TEST(HostCalls, OfAWholeLoadAreThese) {
    Load load{vtu().timeValue(0.5).piece(singleCell(5)), journaled};
    std::string lines;
    for (std::string line : load.host.journal().lines()) {
        if (const std::size_t place = line.find(load.path()); place != line.npos)
            line.replace(place, load.path().size(), "mesh.vtu");
        if (!line.starts_with("KroUtilProgressUpdate") && !line.starts_with("KroUtilProgressText"))
            lines += "\n" + line;
    }
    EXPECT_EQ(lines, R"(
-> InitKroAddOn113()
KroUtilLockOn()
KroUtilAddOnRegister(110, "VTU/VTM/TRIX Data Loader", "1.0.0", "Veltra") = add-on 1
KroUtilImportAddLoaderX("LoaderName"="VTK Data Loader", "FileNameExtensions"="*.pvtu *.vtm *.vtu", "LoaderCallbackVersion"=2, "LoaderCallback"=function, "LoaderSelectedCallback"=function, "ClientData"=pointer, "AllowMultiFileSelection"=1, "LoaderAdvancedOptions"=0) = 1
KroUtilImportAddLoaderX("LoaderName"="TRIX Loader", "FileNameExtensions"="*.trix", "LoaderCallbackVersion"=2, "LoaderCallback"=function, "LoaderSelectedCallback"=function, "ClientData"=pointer, "AllowMultiFileSelection"=1, "LoaderAdvancedOptions"=0) = 1
KroUtilStateChangeAddCallbackX("CallbackFunction"=function, "StateChangeMode"=2, "StateChangeCallbackAPI"=1) = 1
KroUtilLockOff()
<- InitKroAddOn113
-> LoaderSelectedCallback(["mesh.vtu"])
KroUtilLockStart(add-on 1)
KroUtilDataLoadStart()
KroUtilProgressStart("Working...")
KroUtilDataSetCreateX("LoaderName"="VTK Data Loader", "DataSetTitle"="VTK Data") = 1
KroUtilDataSetAddVar("X") = 1
KroUtilDataSetAddVar("Y") = 2
KroUtilDataSetAddVar("Z") = 3
KroUtilDataSetAddVar("u") = 4
KroUtilDataSetGetNumVars() = 4
KroUtilDataSetGetNumVars() = 4
KroUtilDataSetAddZoneX("Name"="mesh", "ZoneType"=1, "DeferVarCreation"=1, "DeferNodeMapCreation"=1, "StrandID"=-1, "SolutionTime"=0.5, "IMax"=3, "JMax"=1, "VarDataType"=[1, 1, 1, 2], "ValueLocation"=[1, 1, 1, 1]) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilZoneSetAuxData(1, "TimeValue", "0.5") = 1
KroUtilDataValueCustomLOD(1, 1) = 1
KroUtilDataValueCustomLOD(1, 2) = 1
KroUtilDataValueCustomLOD(1, 3) = 1
KroUtilDataValueCustomLOD(1, 4) = 1
KroUtilDataNodeCustomLOD(1) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilImportSetLoaderInstr("VTK Data Loader", ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "mesh.vtu"]) = 1
KroUtilProgressFinish()
KroUtilDataLoadFinishX("ResetStyle"=0, "ShowInitialPlot"=1, "PromptForOptions"=0) = 1
KroUtilLockFinish(add-on 1)
<- LoaderSelectedCallback = 1)");
}

TEST(HostCalls, ReadNoValuesBeforeTheHostAsks) {
    const std::string garbage(400, '*');
    Load load{vtu()
                  .piece(hexahedronBox(2))
                  .inlineText("Points", garbage)
                  .inlineText("pressure", garbage)
                  .inlineText("cellNumber", garbage)
                  .inlineText("connectivity", garbage)};
    EXPECT_TRUE(load.loaded());
    EXPECT_EQ(load.dialog(), "");
    for (const krohost::DemandResult& result : load.host.demandAll())
        EXPECT_FALSE(result.isLoaded);
    EXPECT_EQ(load.host.dialogs().size(), 6);
}

TEST(HostCalls, MayEachBeRefused) {
    std::map<std::string_view, std::int64_t> counts;
    {
        Load load{everyCall()};
        ASSERT_TRUE(demandsSucceed(load)) << load.dialog();
        for (const krohost::Entry& entry : krohost::entries)
            if (entry.refusal != krohost::Refusal::impossible)
                counts[entry.name] = load.host.callCount(entry.name);
    }
    for (const auto& [name, count] : counts)
        for (std::int64_t call = 1; call <= count; ++call) {
            SCOPED_TRACE(std::string(name) + " refused at call " + std::to_string(call));
            Load load{everyCall(), {}, [&](Host& host) { host.refuse(name, call); }};
            EXPECT_FALSE(load.loaded() && demandsSucceed(load) && name.starts_with("KroUtilData"));
            EXPECT_LE(load.host.dialogs().size(), 1) << load.dialog();
            const std::size_t dialogsBefore = load.host.dialogs().size();
            EXPECT_TRUE(load.loadAgain() && demandsSucceed(load)) << load.dialog();
            EXPECT_EQ(load.host.dialogs().size(), dialogsBefore);
        }
}

TEST(HostCalls, ThatAreRefusedFailTheLoadWithTheseDialogs) {
    const std::string refused = ": the host was told to refuse this call";
    const std::vector<std::tuple<const char*, int, std::string>> rows{
        {"KroUtilImportAddLoaderX", 1, "VTK Data Loader: Failed to register the loader"},
        {"KroUtilImportAddLoaderX", 2, "TRIX Loader: Failed to register the loader"},
        {"KroUtilDataSetCreateX", 1, "KroUtilDataSetCreateX" + refused},
        {"KroUtilDataSetAddVar", 4, "KroUtilDataSetAddVar" + refused},
        {"KroUtilDataSetAddZoneX", 1, "VTK Data Loader: None of the VTK files provided any data"},
        {"KroUtilArgListAppendArray", 1, "VTK Data Loader: None of the VTK files provided any data"},
        {"KroUtilDataValueCustomLOD", 2, ""},
        {"KroUtilDataNodeCustomLOD", 1, ""},
        {"KroUtilImportSetLoaderInstr", 1, ""},
        {"KroUtilDataLoadFinishX", 1, ""}};
    for (const auto& [name, call, dialog] : rows) {
        SCOPED_TRACE(name);
        Load load{everyCall(), journaled, [name = name, call = call](Host& host) { host.refuse(name, call); }};
        EXPECT_EQ(load.dialog(), dialog);
        EXPECT_EQ(load.loaded(), std::string_view(name) == "KroUtilImportAddLoaderX");
    }
    for (const auto& [name, variable] :
         {std::pair{"KroUtilDataValueGetRawPtrByRef", 1}, std::pair{"KroUtilDataNodeSectionGetRawPtrByRef", 0}}) {
        Load load{everyCall(), {}, [name = name](Host& host) { host.refuse(name); }};
        EXPECT_FALSE(load.host.load({1, variable}));
        EXPECT_EQ(load.dialog(), "VTK Data Loader: Insufficient memory resources available to read data from the input "
                                 "stream.\nReason: std::bad_alloc");
    }
}

TEST(Interrupt, EndsALoadAnywhereWithoutADialog) {
    const auto interruptedAt = [](std::int64_t place, void (Host::*arm)(std::int64_t)) {
        Load load{everyCall(), journaled, [&](Host& host) { (host.*arm)(place); }};
        const bool interrupted = Host::isInterrupted();
        EXPECT_EQ(load.loaded(), !interrupted) << place;
        EXPECT_EQ(load.dialog(), "");
        load.host.clearInterrupt();
        EXPECT_TRUE(load.loadAgain()) << load.dialog();
        return interrupted;
    };
    for (const auto arm : {&Host::interruptAtPoll, &Host::interruptAtProgressUpdate}) {
        std::int64_t place = 1;
        while (place < 1000 && interruptedAt(place, arm))
            ++place;
        EXPECT_GT(place, 3);
        EXPECT_LT(place, 1000);
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

TEST(Shutdown, DestroysTheLoadersOnceHoweverOftenItIsAnnounced) {
    Load load{vtu().piece(hexahedron()), journaled};
    load.host.loadAddOn(ADD_ON); // registers the state-change callback again
    load.host.shutDown();
    EXPECT_EQ(lineCount(load, "<- StateChangeCallback"), 2);
    EXPECT_EQ(lineCount(load, "<- DataValueCleanup"), 3);
    EXPECT_EQ(lineCount(load, "<- DataNodeCleanup"), 1);
}

} // namespace test
