// An add-on for tests of the host. It registers one loader; the stem of the first file name it gets says what to do.
// The plain "box" is one mixed zone of a hexahedron and two tetrahedra with a nodal and a cell-centred variable.
#include "host/kro.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Arguments {
    KroArgList* list = KroUtilArgListAlloc();
    ~Arguments() { KroUtilArgListDealloc(&list); }
    Arguments() = default;
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    void integer(const char* name, std::int64_t value) { KroUtilArgListAppendInt(list, name, value); }
    void string(const char* name, const std::string& value) { KroUtilArgListAppendString(list, name, value.c_str()); }
    void array(const char* name, const std::vector<std::int32_t>& items) {
        KroUtilArgListAppendArray(list, name, KroArrayItem_Int32, static_cast<std::int64_t>(items.size()),
                                  items.data());
    }
    void array(const char* name, const std::vector<std::int64_t>& items) {
        KroUtilArgListAppendArray(list, name, KroArrayItem_Int64, static_cast<std::int64_t>(items.size()),
                                  items.data());
    }
};

struct ZoneRecord {
    std::int64_t type = ZoneType_Mixed, nodeCount = 10, elementCount = 3, deferred = 1;
    std::vector<std::int64_t> elements{1, 2};
    std::vector<std::int32_t> shapes{CellShape_Hexahedron, CellShape_Tetrahedron}, gridOrders{1, 1};
    std::vector<std::int32_t> types{FieldDataType_Double, FieldDataType_Float};
    std::vector<std::int32_t> locations{ValueLocation_Nodal, ValueLocation_CellCentered};
    std::function<void(Arguments&)> addMore = [](Arguments&) {};
};

struct Client {
    std::string scenario;
    int variable;
};

KroAddOn* addOn = nullptr;
std::atomic<KroFieldData*> otherHandle{nullptr};
KroStringList* volatile keptList = nullptr; // volatile, so that the list stays reachable
int loaderIdentity = 0;

KroBool addZone(const ZoneRecord& zone) {
    Arguments arguments;
    arguments.string("Name", "wing");
    arguments.integer("ZoneType", zone.type);
    arguments.integer("DeferVarCreation", zone.deferred);
    arguments.integer("DeferNodeMapCreation", zone.deferred);
    arguments.integer("StrandID", -1);
    KroUtilArgListAppendDouble(arguments.list, "SolutionTime", 0.1);
    arguments.integer("IMax", zone.nodeCount);
    arguments.integer("JMax", zone.type == ZoneType_Ordered ? 1 : zone.elementCount);
    if (zone.type == ZoneType_Ordered)
        arguments.integer("KMax", 1);
    if (zone.type == ZoneType_Mixed) {
        arguments.integer("NumSections", static_cast<std::int64_t>(zone.elements.size()));
        arguments.array("NumElemsPerSection", zone.elements);
        arguments.array("CellShapePerSection", zone.shapes);
        arguments.array("GridOrderPerSection", zone.gridOrders);
    }
    arguments.array("VarDataType", zone.types);
    arguments.array("ValueLocation", zone.locations);
    zone.addMore(arguments);
    return KroUtilDataSetAddZoneX(arguments.list);
}

// What the load of the second variable does instead, by scenario.
const std::map<std::string, std::function<KroBool(KroFieldData*)>> valueLoads{
    {"fails",
     [](KroFieldData*) {
         KroUtilDialogErrMsg("Fake Loader: no values");
         return KroBool{0};
     }},
    {"polls",
     [](KroFieldData*) {
         for (int count = 0; count < 1000; ++count)
             if (KroUtilInterruptIsSet())
                 return KroBool{0};
         return KroBool{1};
     }},
    {"interrupts",
     [](KroFieldData*) {
         raise(SIGINT);
         return KroUtilInterruptIsSet() ? KroBool{0} : KroBool{1};
     }},
    {"writes past",
     [](KroFieldData* data) {
         static_cast<float*>(KroUtilDataValueGetRawPtrByRef(data))[KroUtilDataValueGetCount(data)] = 1;
         return KroBool{1};
     }},
    {"throws", [](KroFieldData*) -> KroBool { throw std::runtime_error("fell over"); }},
    {"returns 2", [](KroFieldData*) { return KroBool{2}; }},
    {"locks", [](KroFieldData*) { return KroUtilLockOn(), KroBool{1}; }},
    {"uses another's handle",
     [](KroFieldData*) { return KroUtilDataValueGetCount(otherHandle) ? KroBool{1} : KroBool{0}; }},
    {"asks on another thread",
     [](KroFieldData* data) {
         std::thread{[&] { KroUtilDataValueGetCount(data); }}.join();
         return KroBool{1};
     }},
};

KroBool loadValues(KroFieldData* data) {
    const auto* client = static_cast<const Client*>(KroUtilDataValueGetClientData(data));
    const auto special = valueLoads.find(client->scenario);
    if (client->variable == 2 && special != valueLoads.end())
        return special->second(data);
    otherHandle = data;
    void* raw = KroUtilDataValueGetRawPtrByRef(data);
    if (!raw)
        return 0;
    for (std::int64_t index = 0; index < KroUtilDataValueGetCount(data); ++index)
        if (KroUtilDataValueGetType(data) == FieldDataType_Double)
            static_cast<double*>(raw)[index] = 0.5 * static_cast<double>(index);
        else
            static_cast<float*>(raw)[index] = index == 0 ? __builtin_nanf("") : static_cast<float>(index);
    return 1;
}

KroBool unloadValues(KroFieldData* data) {
    const auto* client = static_cast<const Client*>(KroUtilDataValueGetClientData(data));
    if (client->variable == 2 && client->scenario == "reads raw in unload")
        KroUtilDataValueGetRawPtrByRef(data);
    return 1;
}

void cleanupValues(KroFieldData* data) {
    delete static_cast<Client*>(KroUtilDataValueGetClientData(data));
}

KroBool loadNodes(KroNodeMap* map) {
    const auto* client = static_cast<const Client*>(KroUtilDataNodeGetClientData(map));
    for (std::int32_t section = 1; KroUtilDataNodeSectionGetCount(map, section) != 0; ++section) {
        const std::int64_t excess = section == 2 && client->scenario == "writes past section" ? 1 : 0;
        auto* narrow = KroUtilDataNodeSectionGetRawPtrByRef(map, section);
        auto* wide = KroUtilDataNodeSectionGetRawPtrByRef64(map, section);
        for (std::int64_t index = 0; index < KroUtilDataNodeSectionGetCount(map, section) + excess; ++index)
            if (KroUtilDataNodeGetRawItemType(map) == 0)
                narrow[index] = static_cast<std::int32_t>(index);
            else
                wide[index] = index;
    }
    return 1;
}

KroBool registerVariable(std::int32_t zone, std::int32_t variable, Client* client) {
    return KroUtilDataValueCustomLOD(zone, variable, loadValues, unloadValues, cleanupValues, client);
}

KroBool registerNodeMap(std::int32_t zone, Client* client) {
    return KroUtilDataNodeCustomLOD(
        zone, loadNodes, [](KroNodeMap*) { return KroBool{1}; },
        [](KroNodeMap* map) { delete static_cast<Client*>(KroUtilDataNodeGetClientData(map)); }, client);
}

bool registerOrDelete(std::int32_t zone, std::int32_t variable, const std::string& scenario) {
    auto* client = new Client{scenario, variable};
    const KroBool result = variable == 0 ? registerNodeMap(zone, client) : registerVariable(zone, variable, client);
    if (!result)
        delete client;
    return result == 1;
}

bool addWholeZone(const ZoneRecord& record, const std::string& scenario) {
    if (!addZone(record))
        return false;
    const std::int32_t zone = KroUtilDataSetGetNumZones();
    return (record.type == ZoneType_Ordered || registerOrDelete(zone, 0, scenario)) &&
           registerOrDelete(zone, 1, scenario) && registerOrDelete(zone, 2, scenario);
}

const std::map<std::string, std::function<void(ZoneRecord&)>> zoneChanges{
    {"unknown argument", [](auto& zone) { zone.addMore = [](Arguments& more) { more.integer("Colour", 1); }; }},
    {"argument twice", [](auto& zone) { zone.addMore = [](Arguments& more) { more.integer("IMax", 1); }; }},
    {"no nodes", [](auto& zone) { zone.nodeCount = 0; }},
    {"unknown zone type", [](auto& zone) { zone.type = 7; }},
    {"wrong total",
     [](auto& zone) {
         zone.elements = {1, 3};
     }},
    {"wrapping total",
     [](auto& zone) {
         zone.elements = {INT64_MAX, INT64_MAX};
     }},
    {"unknown shape", [](auto& zone) { zone.shapes[1] = 9; }},
    {"short shapes", [](auto& zone) { zone.shapes.pop_back(); }},
    {"order 5", [](auto& zone) { zone.gridOrders[0] = 5; }},
    {"short types", [](auto& zone) { zone.types.pop_back(); }},
    {"unknown type", [](auto& zone) { zone.types[0] = 6; }},
    {"unknown location", [](auto& zone) { zone.locations[0] = 2; }},
    {"not deferred", [](auto& zone) { zone.deferred = 0; }},
    {"unsupplied variable", [](auto& zone) { zone.types[0] = 0; }},
    {"points", [](auto& zone) { zone.type = ZoneType_Ordered; }},
    {"huge", [](auto& zone) { zone.nodeCount = 1'000'000'000'000; }},
    {"beyond 64 bits",
     [](auto& zone) {
         zone.elementCount = INT64_MAX, zone.elements = {INT64_MAX - 1, 1};
     }},
};

// Misdeeds beside a sound zone.
const std::map<std::string, std::function<void()>> deeds{
    {"unlocks twice", [] { KroUtilLockFinish(addOn), KroUtilLockFinish(addOn), KroUtilLockStart(addOn); }},
    {"locks twice", [] { KroUtilLockStart(addOn); }},
    {"unlocks for nobody", [] { KroUtilLockFinish(nullptr); }},
    {"starts data load twice", [] { KroUtilDataLoadStart(); }},
    {"leaves progress open", [] { KroUtilProgressStart("half"); }},
    {"updates no progress", [] { KroUtilProgressUpdate(0.5); }},
    {"calls on another thread", [] { std::thread{[] { KroUtilDataSetGetNumZones(); }}.join(); }},
    {"calls outside callback", [] { KroUtilDataValueGetCount(otherHandle); }},
    {"registers twice", [] { registerOrDelete(1, 1, ""); }},
    {"shares a record",
     [] {
         auto* client = new Client{"", 1};
         addZone({}), registerVariable(2, 1, client), registerVariable(2, 2, client);
     }},
    {"registers for zone 9", [] { registerOrDelete(9, 1, ""); }},
    {"keeps a list", [] { keptList = KroUtilStringListAlloc(); }},
    {"appends null", [] { KroUtilDataSetAddVar(nullptr); }},
    {"throws in load", [] { throw std::runtime_error("fell over"); }},
    {"updates progress",
     [] {
         KroUtilProgressStart("half"), KroUtilProgressUpdate(0.5), KroUtilProgressUpdate(1), KroUtilProgressFinish();
     }},
};

bool createDataset() {
    Arguments arguments;
    arguments.string("LoaderName", "Fake Loader");
    arguments.string("DataSetTitle", "Fake Data");
    return KroUtilDataSetCreateX(arguments.list) == 1 && KroUtilDataSetAddVar("X") == 1 &&
           KroUtilDataSetAddVar("p") == 2;
}

bool buildDataset(const std::string& scenario) {
    ZoneRecord zone;
    if (const auto change = zoneChanges.find(scenario); change != zoneChanges.end())
        change->second(zone);
    bool isBuilt = createDataset();
    for (int count = 0; isBuilt && count < (scenario == "polls" || scenario == "many" ? 50 : 1); ++count)
        isBuilt = addWholeZone(zone, scenario);
    if (!isBuilt)
        KroUtilPostLastErrorMessage();
    if (const auto deed = deeds.find(scenario); deed != deeds.end())
        deed->second();
    return isBuilt;
}

KroBool loadSelected(const KroStringList* fileNames, void*, void*) {
    const auto scenario = std::filesystem::path{KroUtilStringListGetRawStringPtr(fileNames, 1)}.stem().string();
    if (scenario == "stays unlocked")
        return KroUtilDataSetGetNumZones();
    KroUtilLockStart(addOn);
    if (scenario == "skips data load")
        createDataset();
    KroUtilDataLoadStart();
    const bool isBuilt = buildDataset(scenario);
    KroUtilImportSetLoaderInstr("Fake Loader", fileNames);
    const Arguments options;
    const bool isFinished = KroUtilDataLoadFinishX(options.list) == 1;
    if (scenario != "stays locked")
        KroUtilLockFinish(addOn);
    return isBuilt && isFinished && KroUtilInterruptIsSet() == 0 ? 1 : 0;
}

KroBool replay(const KroStringList* instructions, void* clientData) {
    return clientData == &loaderIdentity && KroUtilStringListGetCount(instructions) == 2 ? 1 : 0;
}

} // namespace

extern "C" __attribute__((visibility("default"))) void InitKroAddOn113() {
    KroUtilLockOn();
    addOn = KroUtilAddOnRegister(Kro_AddOnApiLevel, "Fake", "1.0", "Tests");
    Arguments arguments;
    arguments.string("LoaderName", "Fake Loader");
    arguments.string("FileNameExtensions", "*.fake *.sham");
    arguments.integer("LoaderCallbackVersion", Kro_LoaderCallbackVersion);
    KroUtilArgListAppendFunction(arguments.list, "LoaderCallback", reinterpret_cast<KroFunction>(replay));
    KroUtilArgListAppendFunction(arguments.list, "LoaderSelectedCallback", reinterpret_cast<KroFunction>(loadSelected));
    KroUtilArgListAppendArbParam(arguments.list, "ClientData", &loaderIdentity);
    arguments.integer("AllowMultiFileSelection", 0);
    arguments.integer("LoaderAdvancedOptions", 0);
    KroUtilImportAddLoaderX(arguments.list);
    KroUtilLockOff();
}
