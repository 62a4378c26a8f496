#include "krohost/contract.h"
#include "krohost/ArgumentList.h"
#include "krohost/Host.h"
#include "krohost/timesFromFileNames.h"
#include "tests/krohost/Loaded.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using krohost::Host;

namespace {

std::string messageOfLoading(const std::filesystem::path& addOn) {
    try {
        Host{}.loadAddOn(addOn);
    } catch (const krohost::AddOnError& error) {
        return error.what();
    }
    return "loaded";
}

struct Misdeed {
    const char* scenario;
    const char* violation;
};

void PrintTo(const Misdeed& misdeed, std::ostream* stream) {
    *stream << misdeed.scenario;
}

class Misdeeds : public testing::TestWithParam<Misdeed> {};

} // namespace

TEST_P(Misdeeds, AreViolations) {
    Loaded load{GetParam().scenario};
    load.host.demandAll();
    load.host.shutDown();
    const auto& violations = load.host.violations();
    ASSERT_EQ(violations.size(), 1) << testing::PrintToString(violations);
    EXPECT_EQ(violations.front(), GetParam().violation);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, Misdeeds,
    testing::Values(
        Misdeed{"unknown argument", "KroUtilDataSetAddZoneX: there is no argument \"Colour\" here"},
        Misdeed{"argument twice", "KroUtilArgListAppendInt: the argument \"IMax\" stands twice"},
        Misdeed{"no nodes", "KroUtilDataSetAddZoneX: the argument \"IMax\" is 0, not from 1 to 9223372036854775807"},
        Misdeed{"unknown zone type",
                "KroUtilDataSetAddZoneX: the argument \"ZoneType\" has 7, not one of 0, 1, 2, 3, 4, 5, 8"},
        Misdeed{"wrong total", "KroUtilDataSetAddZoneX: the sections have 4 elements together, but \"JMax\" is 3"},
        Misdeed{"wrapping total",
                "KroUtilDataSetAddZoneX: the argument \"NumElemsPerSection\" holds a negative or too large number"},
        Misdeed{
            "unknown shape",
            "KroUtilDataSetAddZoneX: the argument \"CellShapePerSection\" has 9, not one of 0, 1, 2, 3, 4, 5, 6, 255"},
        Misdeed{"short shapes", "KroUtilDataSetAddZoneX: the argument \"CellShapePerSection\" has 1 items, not 2"},
        Misdeed{"order 5", "KroUtilDataSetAddZoneX: the argument \"GridOrderPerSection\" has 5, not one of 1, 2, 3, 4"},
        Misdeed{"short types", "KroUtilDataSetAddZoneX: the argument \"VarDataType\" has 1 items, not 2"},
        Misdeed{"unknown type",
                "KroUtilDataSetAddZoneX: the argument \"VarDataType\" has 6, not one of 0, 1, 2, 3, 4, 5"},
        Misdeed{"unknown location",
                "KroUtilDataSetAddZoneX: the argument \"ValueLocation\" has 2, not one of 0, 1, 255"},
        Misdeed{"not deferred", "KroUtilDataNodeCustomLOD: zone 1 does not defer its node map"},
        Misdeed{"unsupplied variable", "KroUtilDataValueCustomLOD: zone 1 does not supply variable 1"},
        Misdeed{"stays unlocked", "KroUtilDataSetGetNumZones: called while the host is not locked"},
        Misdeed{"stays locked", "LoaderSelectedCallback returned with the host locked"},
        Misdeed{"skips data load", "KroUtilDataSetCreateX: no data load is open"},
        Misdeed{"unlocks twice", "KroUtilLockFinish: the host is not locked"},
        Misdeed{"locks twice", "KroUtilLockStart: the host is locked already"},
        Misdeed{"unlocks for nobody", "KroUtilLockFinish: the add-on is not registered"},
        Misdeed{"starts data load twice", "KroUtilDataLoadStart: a data load is open already"},
        Misdeed{"leaves progress open", "LoaderSelectedCallback returned with a progress display open"},
        Misdeed{"updates no progress", "KroUtilProgressUpdate: no progress display is open"},
        Misdeed{"calls on another thread", "KroUtilDataSetGetNumZones: called on a thread that is not the main thread"},
        Misdeed{"calls outside callback", "KroUtilDataValueGetCount: called outside a load-on-demand callback"},
        Misdeed{"registers twice",
                "KroUtilDataValueCustomLOD: callbacks for zone 1, variable 1 are registered already"},
        Misdeed{"shares a record", "KroUtilDataValueCustomLOD: the client record belongs to other callbacks already"},
        Misdeed{"registers for zone 9", "KroUtilDataValueCustomLOD: there is no zone 9"},
        Misdeed{"keeps a list", "1 string or argument lists were not freed"},
        Misdeed{"appends null", "KroUtilDataSetAddVar: the name is null"},
        Misdeed{"writes past", "DataValueLoad wrote past the end of the storage of zone 1, variable 2"},
        Misdeed{"writes past section", "DataNodeLoad wrote past the end of the storage of zone 1, section 2"},
        Misdeed{"throws", "an exception left DataValueLoad: fell over"},
        Misdeed{"returns 2", "DataValueLoad returned 2, not 0 or 1"},
        Misdeed{"locks", "KroUtilLockOn: called inside a load-on-demand callback"},
        Misdeed{"uses another's handle", "KroUtilDataValueGetCount: the handle is not the one of this callback"},
        Misdeed{"asks on another thread", "KroUtilDataValueGetCount: called outside a load-on-demand callback"},
        Misdeed{"reads raw in unload", "KroUtilDataValueGetRawPtrByRef: called outside the load"}));

TEST(Contract, ArgumentsAreOfTheirKind) {
    const KroArgList list{0, {{"count", std::int64_t{1}}, {"codes", krohost::IntegerArray{KroArrayItem_Int32, {1}}}}};
    krohost::ArgumentReader arguments{&list};
    EXPECT_EQ(arguments.integer("count"), 1);
    EXPECT_THROW(arguments.finish(), krohost::ContractViolation) << "codes were not taken";
    EXPECT_THROW(arguments.number("count"), krohost::ContractViolation);
    EXPECT_THROW(arguments.array("codes", KroArrayItem_Int64, 1), krohost::ContractViolation);
    EXPECT_THROW(arguments.flag("missing"), krohost::ContractViolation);
}

TEST(Contract, AnExceptionOutOfALoadLeavesTheHostUsable) {
    Loaded load{"throws in load"};
    EXPECT_FALSE(load.isLoaded);
    EXPECT_EQ(load.host.violations(),
              (std::vector<std::string>{"an exception left LoaderSelectedCallback: fell over",
                                        "LoaderSelectedCallback returned with a data load open",
                                        "LoaderSelectedCallback returned with the host locked"}));
    EXPECT_TRUE(load.host.loadFiles({"box"}));
}

TEST(Contract, EveryClientRecordIsCleanedUpWhenItsDatasetGoes) {
    Loaded load{"box", {.journal = krohost::JournalDetail::calls}};
    EXPECT_TRUE(load.host.load({1, 1}));
    load.host.clearJournalLines();
    EXPECT_TRUE(load.host.loadFiles({"box"}));
    const auto& lines = load.host.journal().lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "<- DataNodeCleanup"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "<- DataValueCleanup"), 2);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "<- DataValueUnload = 1"), 1);
    load.host.shutDown();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "<- DataValueCleanup"), 4);
    EXPECT_EQ(load.host.violations(), std::vector<std::string>{});
}

TEST(Contract, ARefusedCallFailsAndLeavesNothingBehind) {
    for (const char* function : {"KroUtilDataSetCreateX", "KroUtilDataSetAddVar", "KroUtilDataSetAddZoneX",
                                 "KroUtilDataValueCustomLOD", "KroUtilDataNodeCustomLOD", "KroUtilDataLoadFinishX"}) {
        Host host;
        host.loadAddOn(FAKE_ADD_ON);
        host.refuse(function);
        EXPECT_FALSE(host.loadFiles({"box"})) << function;
        EXPECT_TRUE(host.loadFiles({"box"})) << function << " is refused once";
        host.shutDown();
        EXPECT_EQ(host.violations(), std::vector<std::string>{}) << function;
    }
    EXPECT_THROW(Host{}.refuse("KroUtilLockOn"), std::invalid_argument);
    EXPECT_THROW(Host{}.refuse("KroUtilNothing"), std::out_of_range);
}

TEST(Contract, ARefusalCountsCallsFromNowAndIsTheLastError) {
    Host host;
    host.loadAddOn(FAKE_ADD_ON);
    EXPECT_TRUE(host.loadFiles({"box"}));
    host.refuse("KroUtilDataSetAddZoneX", 3);
    EXPECT_FALSE(host.loadFiles({"many"}));
    EXPECT_EQ(host.dataset().zones.size(), 2);
    ASSERT_EQ(host.dialogs().size(), 1);
    EXPECT_EQ(host.dialogs()[0].text, "KroUtilDataSetAddZoneX: the host was told to refuse this call");
}

TEST(AddOn, AFailedLoadNamesThePathAndTheReason) {
    const auto missing = messageOfLoading("/nowhere/add-on.so");
    EXPECT_NE(missing.find("The add-on \"/nowhere/add-on.so\" cannot be loaded"), std::string::npos) << missing;
    EXPECT_NE(missing.find("No such file or directory"), std::string::npos) << missing;
    const auto text = messageOfLoading(__FILE__);
    EXPECT_NE(text.find("invalid ELF header"), std::string::npos) << text;
    const auto other = messageOfLoading(LIBRARY_WITHOUT_ENTRY_POINT);
    EXPECT_NE(other.find("undefined symbol: InitKroAddOn113"), std::string::npos) << other;
}

TEST(AddOn, TheLoaderIsFoundByExtensionInAnyLetterCase) {
    Host host;
    host.loadAddOn(FAKE_ADD_ON);
    const krohost::Loader& loader = host.loaderForFile("box.other");
    EXPECT_EQ(loader.name, "Fake Loader");
    EXPECT_TRUE(loader.matches("a.b/box.SHAM"));
    EXPECT_FALSE(loader.matches("fake"));
    EXPECT_TRUE(host.loadInstructions(loader, {"STANDARDSYNTAX", "1.0"}));
    EXPECT_FALSE(host.loadInstructions(loader, {}));
}

TEST(Journal, HoldsTheWholeLoadAsText) {
    Loaded load{"box", {.journal = krohost::JournalDetail::calls}};
    const std::vector<std::string> expected{
        "-> LoaderSelectedCallback([\"box\"])",
        "KroUtilLockStart(add-on 1)",
        "KroUtilDataLoadStart()",
        "KroUtilDataSetCreateX(\"LoaderName\"=\"Fake Loader\", \"DataSetTitle\"=\"Fake Data\") = 1",
        "KroUtilDataSetAddVar(\"X\") = 1",
        "KroUtilDataSetAddVar(\"p\") = 2",
        "KroUtilDataSetAddZoneX(\"Name\"=\"wing\", \"ZoneType\"=8, \"DeferVarCreation\"=1, \"DeferNodeMapCreation\"=1, "
        "\"StrandID\"=-1, \"SolutionTime\"=0.1, \"IMax\"=10, \"JMax\"=3, \"NumSections\"=2, "
        "\"NumElemsPerSection\"=[1, 2], \"CellShapePerSection\"=[4, 3], \"GridOrderPerSection\"=[1, 1], "
        "\"VarDataType\"=[2, 1], \"ValueLocation\"=[1, 0]) = 1",
        "KroUtilDataSetGetNumZones() = 1",
        "KroUtilDataNodeCustomLOD(1) = 1",
        "KroUtilDataValueCustomLOD(1, 1) = 1",
        "KroUtilDataValueCustomLOD(1, 2) = 1",
        "KroUtilImportSetLoaderInstr(\"Fake Loader\", [\"box\"]) = 1",
        "KroUtilDataLoadFinishX() = 1",
        "KroUtilLockFinish(add-on 1)",
        "<- LoaderSelectedCallback = 1"};
    const auto& lines = load.host.journal().lines();
    const auto begin = std::find(lines.begin(), lines.end(), expected.front());
    EXPECT_EQ(std::vector<std::string>(begin, lines.end()), expected);
    EXPECT_EQ(load.host.pollCount(), 1);
    EXPECT_EQ(load.host.callCount("KroUtilDataValueGetRawPtrByRef"), 0);
}

TEST(FileNames, GiveTheLastNumberOfTheStem) {
    const std::vector<std::pair<const char*, std::optional<double>>> rows{{"run2/flow_0.25.vtu", 0.25},
                                                                          {"flow.0010.vtu", 10},
                                                                          {"step-10", 10},
                                                                          {"t1e-3.vtu", 1e-3},
                                                                          {"Re1.5e6_t2.vtu", 2},
                                                                          {"a1.2.3.vtu", 3},
                                                                          {"grid2e.vtu", 2},
                                                                          {"wing_0010.vtu", 10},
                                                                          {"t1.5e-3.vtu", 0.0015},
                                                                          {"a.0.25.vtu", 0.25},
                                                                          {"run2_step", 2},
                                                                          {"x.5", std::nullopt},
                                                                          {"box.vtu", std::nullopt},
                                                                          {"7/box.vtu", std::nullopt},
                                                                          {"t1e999.vtu", std::nullopt}};
    for (const auto& [name, time] : rows)
        EXPECT_EQ(krohost::timeFromFileName(name), time) << name;
    EXPECT_EQ(krohost::timesFromFileNames({"a1", "b"}), std::nullopt);
    EXPECT_EQ(krohost::timesFromFileNames({}), std::nullopt);
}
