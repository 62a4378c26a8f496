#include "krohost/host/line/contract.h"
#include "krohost/host/model/timesFromFileNames.h"
#include "tests/krohost/Box.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

using Violations = std::vector<std::string>;

KroBool registerP(std::int32_t zone, void* clientData = nullptr) {
    const KroDataValueLoad load = [](KroFieldData*) { return KroBool{1}; };
    return KroUtilDataValueCustomLOD(
        zone, 1, load, load, [](KroFieldData*) {}, clientData);
}

/// Writes after the last value, or before the first.
template <bool behind>
KroBool writeP(KroFieldData* p) {
    static_cast<float*>(KroUtilDataValueGetRawPtrByRef(p))[behind ? KroUtilDataValueGetCount(p) : -1] = 1;
    return 1;
}

KroBool writePastSection2(KroNodeMap* map) {
    KroUtilDataNodeSectionGetRawPtrByRef(map, 2)[KroUtilDataNodeSectionGetCount(map, 2)] = 1;
    return 1;
}

void keepList() {
    static const KroStringList* const kept = KroUtilStringListAlloc(); // stays reachable
    EXPECT_NE(kept, nullptr);
}

void createWithoutLoad() {
    KroUtilLockOn();
    call(KroUtilDataSetCreateX, {{"LoaderName", "Box"}, {"DataSetTitle", ""}});
    KroUtilLockOff();
}

const KroArgList* freedList() {
    KroArgList* list = KroUtilArgListAlloc();
    const KroArgList* const copy = list;
    KroUtilArgListDealloc(&list);
    return copy;
}

/// Does something with a list of its own.
template <class Misdeed>
void withList(const Misdeed& misdeed) {
    KroArgList* list = KroUtilArgListAlloc();
    KroUtilArgListAppendInt(list, "a", 1);
    misdeed(list);
    KroUtilArgListDealloc(&list);
}

/// Whether the section is refused, in either width.
bool hasNoSection(KroNodeMap* map, std::int32_t section) {
    return !KroUtilDataNodeSectionGetRawPtrByRef(map, section) &&
           !KroUtilDataNodeSectionGetRawPtrByRef64(map, section) && KroUtilDataNodeSectionGetCount(map, section) == 0;
}

/// Loads, demands and shuts down after `misdeed(box)`, which is to be reported once.
template <class Misdeed>
void expectViolation(const std::string& violation, const Misdeed& misdeed) {
    Box box;
    misdeed(box);
    box.load();
    box.host.demandAll();
    box.host.shutDown();
    EXPECT_EQ(box.host.violations(), Violations{violation});
}

} // namespace

TEST(Contract, ZonesAreCheckedWhenTheyAreAdded) {
    constexpr std::int64_t most = INT64_MAX;
    const std::vector<std::tuple<const char*, Value, const char*>> rows{
        {"Colour", 1, R"(there is no argument "Colour" here)"},
        {"IMax", 0, R"(the argument "IMax" is 0, not from 1 to 9223372036854775807)"},
        {"IMax", 9.0, R"(the argument "IMax" must be an integer)"},
        {"ZoneType", 7, R"(the argument "ZoneType" has 7, not one of 0, 1, 2, 3, 4, 5, 8)"},
        {"NumElemsPerSection", Counts{1, 3}, R"(the sections have 4 elements together, but "JMax" is 3)"},
        {"NumElemsPerSection", Counts{most, most},
         R"(the argument "NumElemsPerSection" holds a negative or too large number)"},
        {"NumElemsPerSection", Codes{1, 2}, R"(the argument "NumElemsPerSection" must be an array of 64-bit integers)"},
        {"CellShapePerSection", Codes{4}, R"(the argument "CellShapePerSection" has 1 items, not 2)"},
        {"ValueLocation", Codes{255, 1}, "variable 1 has a type but no value location"}};
    for (const auto& [name, value, reason] : rows)
        expectViolation(std::string{"KroUtilDataSetAddZoneX: "} + reason,
                        [name = name, value = value](Box& box) { box.zone[name] = value; });
    expectViolation("KroUtilDataValueCustomLOD: zone 1 does not supply variable 1", [](Box& box) {
        box.zone["VarDataType"] = Codes{0, 2};
    });
    expectViolation("KroUtilDataNodeCustomLOD: zone 1 does not defer its node map",
                    [](Box& box) { box.zone["DeferNodeMapCreation"] = 0; });
}

TEST(Contract, CallsOutOfPlaceAreViolations) {
    const std::vector<std::pair<const char*, void (*)()>> rowsInLoad{
        {"KroUtilDataSetAddZoneX: the argument list is null", [] { KroUtilDataSetAddZoneX(nullptr); }},
        {"KroUtilDataSetAddVar: the name is null", [] { KroUtilDataSetAddVar(nullptr); }},
        {"KroUtilDataValueCustomLOD: callbacks for zone 1, variable 1 are registered already", [] { registerP(1); }},
        {"KroUtilDataValueCustomLOD: there is no zone 9", [] { registerP(9); }},
        {"KroUtilDataValueCustomLOD: there is no zone 0", [] { registerP(0); }},
        {"KroUtilDataValueCustomLOD: a callback is null",
         [] { KroUtilDataValueCustomLOD(1, 1, nullptr, nullptr, nullptr, nullptr); }},
        {"KroUtilZoneSetAuxData: there is no zone -1", [] { KroUtilZoneSetAuxData(-1, "a", "b"); }},
        {"KroUtilZoneSetAuxData: the value is null", [] { KroUtilZoneSetAuxData(1, "a", nullptr); }},
        {"KroUtilDialogErrMsg: the message is null", [] { KroUtilDialogErrMsg(nullptr); }},
        {"KroUtilAddOnRegister: the API level is 1, not 110", [] { KroUtilAddOnRegister(1, "", "", ""); }},
        {"KroUtilImportSetLoaderInstr: there is no loader \"Cone\"",
         [] { KroUtilImportSetLoaderInstr("Cone", nullptr); }},
        {"KroUtilStringListDealloc: the place of the list is null", [] { KroUtilStringListDealloc(nullptr); }},
        {"KroUtilStringListAppendString: the list is null", [] { KroUtilStringListAppendString(nullptr, "a"); }},
        {"KroUtilArgListDealloc: the list is freed",
         [] { withList([](auto* list) { KroUtilArgListDealloc(&list); }); }},
        {"KroUtilImportAddLoaderX: the argument list is freed", [] { KroUtilImportAddLoaderX(freedList()); }},
        {"KroUtilArgListAppendInt: the name is null",
         [] { withList([](auto* list) { KroUtilArgListAppendInt(list, nullptr, 1); }); }},
        {"KroUtilArgListAppendInt: the argument \"a\" stands twice",
         [] { withList([](auto* list) { KroUtilArgListAppendInt(list, "a", 1); }); }},
        {"KroUtilArgListAppendArray: the array has no items or a negative number of them",
         [] { withList([](auto* list) { KroUtilArgListAppendArray(list, "b", KroArrayItem_Int32, -1, list); }); }},
        {"KroUtilLockOn: the host is locked already", KroUtilLockOn},
        {"KroUtilLockOff: the host's lock was taken by another call", KroUtilLockOff},
        {"KroUtilLockFinish: the add-on is not registered", [] { KroUtilLockFinish(nullptr); }},
        {"KroUtilDataLoadStart: a data load is open already", KroUtilDataLoadStart},
        {"LoaderSelectedCallback returned with a progress display open", [] { KroUtilProgressStart("half"); }},
        {"KroUtilProgressUpdate: no progress display is open", [] { KroUtilProgressUpdate(0.5); }},
        {"KroUtilLockOff: called on a thread that is not the main thread", [] { std::thread{KroUtilLockOff}.join(); }},
        {"KroUtilDataValueGetCount: called outside a load-on-demand callback",
         [] { KroUtilDataValueGetCount(nullptr); }}};
    for (const auto& [violation, misdeed] : rowsInLoad)
        expectViolation(violation, [deed = misdeed](Box& box) { box.doInLoad = deed; });
    const std::vector<std::pair<const char*, void (*)()>> rowsAfterLoad{
        {"LoaderSelectedCallback returned with the host locked", KroUtilLockOn},
        {"KroUtilLockOff: the host is not locked", KroUtilLockOff},
        {"KroUtilDataLoadStart: called while the host is not locked", KroUtilDataLoadStart},
        {"KroUtilDataSetCreateX: no data load is open", createWithoutLoad},
        {"1 string or argument lists were not freed", keepList}};
    for (const auto& [violation, misdeed] : rowsAfterLoad)
        expectViolation(violation, [deed = misdeed](Box& box) { box.doAfterLoad = deed; });
    expectViolation("KroUtilStringListDealloc: the list is the host's own", [](Box& box) {
        box.doInLoad = [&] {
            auto* list = const_cast<KroStringList*>(box.fileNames);
            KroUtilStringListDealloc(&list);
        };
    });
    expectViolation("KroUtilDataValueCustomLOD: the client record belongs to other callbacks already", [](Box& box) {
        box.doInLoad = [&] {
            for (const std::int32_t number : {2, 3})
                call(KroUtilDataSetAddZoneX, box.zone), registerP(number, &box);
        };
    });
}

TEST(Contract, LoadsKeepToTheirStorageAndHandle) {
    const std::vector<std::pair<const char*, KroDataValueLoad>> rows{
        {"DataValueLoad wrote past the end of the storage of zone 1, variable 1", writeP<true>},
        {"DataValueLoad wrote before the start of the storage of zone 1, variable 1", writeP<false>},
        {"an exception left DataValueLoad: fell over", [](auto*) -> KroBool { throw std::runtime_error("fell over"); }},
        {"an exception of unknown type left DataValueLoad", [](auto*) -> KroBool { throw 1; }},
        {"DataValueLoad returned 2, not 0 or 1", [](auto*) { return KroBool{2}; }},
        {"KroUtilLockOn: called inside a load-on-demand callback", [](auto*) { return KroUtilLockOn(), KroBool{1}; }},
        {"KroUtilDataValueGetCount: the handle is not the one of this callback",
         [](auto*) { return KroUtilDataValueGetCount(nullptr) ? KroBool{0} : KroBool{1}; }},
        {"KroUtilDataValueGetCount: called outside a load-on-demand callback", [](auto* p) {
             return std::thread{KroUtilDataValueGetCount, p}.join(), KroBool{1};
         }}};
    for (const auto& [violation, load] : rows)
        expectViolation(violation, [misdeed = load](Box& box) { box.loadP = misdeed; });
    expectViolation("DataNodeLoad wrote past the end of the storage of zone 1, section 2",
                    [](Box& box) { box.loadNodes = writePastSection2; });
    expectViolation("KroUtilDataValueGetRawPtrByRef: called outside the load", [](Box& box) {
        box.unloadP = [](auto* p) { return KroUtilDataValueGetRawPtrByRef(p) ? KroBool{0} : KroBool{1}; };
    });
}

TEST(Contract, AHandleEndsWithItsDataset) {
    expectViolation("KroUtilDataValueGetCount: the handle is not the one of this callback", [](Box& box) {
        static KroFieldData* kept = nullptr;
        box.loadP = [](auto* p) { return kept = p, KroBool{1}; };
        EXPECT_TRUE(box.load() && box.host.load({1, 1}));
        box.loadP = [](auto*) { return KroUtilDataValueGetCount(kept) ? KroBool{0} : KroBool{1}; };
    });
}

TEST(Contract, NumbersOutOfRangeGiveNothing) {
    Box box;
    box.doInLoad = [] {
        for (const std::int32_t number : {0, -1, 3, INT32_MIN, INT32_MAX}) {
            EXPECT_EQ(KroUtilVarGetName(number), nullptr);
            EXPECT_EQ(KroUtilVarGetValueLocation(number), ValueLocation_None);
            KroStringList* list = KroUtilStringListAlloc();
            EXPECT_EQ(KroUtilStringListGetRawStringPtr(list, number), nullptr);
            KroUtilStringListDealloc(&list);
        }
    };
    box.loadNodes = [](auto* map) {
        return KroBool{hasNoSection(map, 0) && hasNoSection(map, -1) && hasNoSection(map, 3) &&
                       hasNoSection(map, INT32_MAX)};
    };
    EXPECT_TRUE(box.load() && box.host.load({1, 0}));
    registerLoader([](auto*, void*, void*) { return KroBool{0}; }, nullptr); // under a name that is taken
    EXPECT_EQ(box.host.loaders().size(), 1);
    EXPECT_EQ(box.host.violations(), Violations{});
}

TEST(Contract, ExceptionsStayOnTheirSideAtTheEndToo) {
    expectViolation("an exception left DataValueCleanup: fell over",
                    [](Box& box) { box.cleanupP = [](auto*) { throw std::runtime_error("fell over"); }; });
    expectViolation("an exception left StateChangeCallback: fell over", [](Box& box) {
        const KroStateChangeCallback fall = [](std::int32_t) { throw std::runtime_error("fell over"); };
        box.doInLoad = [fall] {
            call(KroUtilStateChangeAddCallbackX, {{"CallbackFunction", reinterpret_cast<KroFunction>(fall)},
                                                  {"StateChangeMode", Kro_StateChangeModeAllChanges},
                                                  {"StateChangeCallbackAPI", Kro_StateChangeCallbackApi}});
        };
    });
}

TEST(Contract, NothingIsCalledAfterTheEnd) {
    {
        Box box;
        EXPECT_TRUE(box.load());
        box.host.shutDown();
        KroUtilLockOn();
        EXPECT_EQ(KroUtilStringListAlloc(), nullptr);
        EXPECT_EQ(box.host.violations(), (Violations{"KroUtilLockOn: called after the host has ended",
                                                     "KroUtilStringListAlloc: called after the host has ended"}));
    }
    EXPECT_EQ(KroUtilStringListAlloc(), nullptr);
    EXPECT_EQ(KroUtilDataSetAddVar("p"), 0);
}

TEST(Contract, AnExceptionOutOfALoadLeavesTheHostUsable) {
    Box box;
    box.doInLoad = [] { throw std::runtime_error("fell over"); };
    EXPECT_FALSE(box.load());
    EXPECT_EQ(box.host.violations(), (Violations{"an exception left LoaderSelectedCallback: fell over",
                                                 "LoaderSelectedCallback returned with a data load open",
                                                 "LoaderSelectedCallback returned with the host locked"}));
    box.doInLoad = [] {};
    EXPECT_TRUE(box.load());
}

TEST(Contract, EveryClientRecordIsCleanedUpWhenItsDatasetGoes) {
    Box box{{.journal = krohost::JournalDetail::calls}};
    const auto count = [&](const char* line) { return std::ranges::count(box.host.journal().lines(), line); };
    EXPECT_TRUE(box.load() && box.host.load({1, 1}) && box.load());
    EXPECT_EQ(count("<- DataValueUnload = 1"), 1);
    EXPECT_EQ(count("<- DataValueCleanup"), 2);
    EXPECT_EQ(count("<- DataNodeCleanup"), 1);
}

TEST(Loader, IsFoundByExtensionInAnyLetterCase) {
    krohost::Host host;
    host.loadAddOn(ADD_ON);
    EXPECT_EQ(host.loaderForFile("a.b/box.TRIX").name, "TRIX Loader");
    EXPECT_EQ(host.loaderForFile("a.trix/trix").name, "VTK Data Loader");
}

TEST(FileNames, GiveTheLastNumberOfTheStem) {
    EXPECT_EQ(krohost::timesFromFileNames({"run2/flow_0.25.vtu", "flow.0010.vtu", "step-10", "t1e-3.vtu",
                                           "Re1.5e6_t2.vtu", "a1.2.3.vtu", "grid2e.vtu", "t1.5e-3.vtu", "a.0.25.vtu"}),
              (std::vector<double>{0.25, 10, 10, 1e-3, 2, 3, 2, 0.0015, 0.25}));
    for (const char* name : {"x.5", "box.vtu", "7/box.vtu", "t1e999.vtu"})
        EXPECT_EQ(krohost::timesFromFileNames({"a1", name}), std::nullopt) << name;
    EXPECT_EQ(krohost::timesFromFileNames({}), std::nullopt);
}
