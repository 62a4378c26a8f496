#include "interface/kro.h"

#include "krohost/host/api/callGuard.h"
#include "krohost/host/model/zoneArguments.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>

#include <limits>
#include <utility>

using namespace krohost;

namespace {

/// The index of a variable; throws CallFailure for an unknown number.
std::size_t requireVariable(const Dataset& dataset, std::int32_t variable) {
    if (variable < 1 || static_cast<std::size_t>(variable) > dataset.variables.size())
        throw CallFailure(fmt::format("there is no variable {}", variable));
    return static_cast<std::size_t>(variable) - 1;
}

ValueLocation_e firstLocation(const Dataset& dataset, std::int32_t variable) {
    for (const Zone& zone : dataset.zones)
        if (const ZoneVariable* supplied = zone.suppliedVariable(variable))
            return supplied->location;
    return ValueLocation_None;
}

template <class Callbacks>
void requireCallbacks(const Callbacks& callbacks) {
    if (!callbacks.load || !callbacks.unload || !callbacks.cleanup)
        throw ContractViolation("a callback is null");
}

std::unique_ptr<KroFieldData> makeFieldData(HostState& host, Target target, KroFieldData::Callbacks callbacks,
                                            void* clientData) {
    const Zone& zone = host.requireZone(target.zone);
    requireCallbacks(callbacks);
    const ZoneVariable* variable = zone.suppliedVariable(target.variable);
    if (!variable)
        throw ContractViolation(fmt::format("zone {} does not supply variable {}", target.zone, target.variable));
    if (!zone.isVariableCreationDeferred)
        throw ContractViolation(fmt::format("zone {} does not defer its variables", target.zone));
    return std::make_unique<KroFieldData>(target, variable->type, zone.valueCount(variable->location), callbacks,
                                          clientData);
}

int nodeBitCount(const HostState& host, const Zone& zone) {
    if (host.options.nodeBitCount != 0)
        return host.options.nodeBitCount;
    return zone.nodeCount - 1 <= std::numeric_limits<std::int32_t>::max() ? 32 : 64;
}

std::unique_ptr<KroNodeMap> makeNodeMap(HostState& host, Target target, KroNodeMap::Callbacks callbacks,
                                        void* clientData) {
    const Zone& zone = host.requireZone(target.zone);
    requireCallbacks(callbacks);
    if (zone.type == ZoneType_Ordered)
        throw ContractViolation(fmt::format("zone {} is ordered and has no node map", target.zone));
    if (!zone.isNodeMapCreationDeferred)
        throw ContractViolation(fmt::format("zone {} does not defer its node map", target.zone));
    std::vector<std::int64_t> counts;
    for (const Section& section : zone.sections)
        counts.push_back(nodeNumberCount(section.elementCount, section.nodesPerElement()));
    return std::make_unique<KroNodeMap>(target, nodeBitCount(host, zone), std::move(counts), callbacks, clientData);
}

} // namespace

KroBool KroUtilDataSetCreateX(const KroArgList* arguments) {
    return guarded<entryIndex("KroUtilDataSetCreateX")>(
        KroBool{0}, [&] { return describe(arguments); },
        [&](HostState& host) {
            ArgumentReader reader{arguments};
            Dataset dataset;
            dataset.loaderName = reader.string("LoaderName");
            dataset.title = reader.string("DataSetTitle");
            reader.finish();
            if (!host.findLoader(dataset.loaderName))
                throw ContractViolation(fmt::format("there is no loader {}", quoted(dataset.loaderName)));
            if (!host.brackets.isLoadingData())
                throw ContractViolation("no data load is open");
            host.dropDataset();
            host.dataset = std::move(dataset);
            host.firstZoneOfLoad = 0;
            return KroBool{1};
        });
}

std::int32_t KroUtilDataSetGetNumVars() {
    return guarded<entryIndex("KroUtilDataSetGetNumVars")>(std::int32_t{0}, noArguments, [](HostState& host) {
        return host.dataset ? static_cast<std::int32_t>(host.dataset->variables.size()) : 0;
    });
}

std::int32_t KroUtilDataSetGetNumZones() {
    return guarded<entryIndex("KroUtilDataSetGetNumZones")>(std::int32_t{0}, noArguments, [](HostState& host) {
        return host.dataset ? static_cast<std::int32_t>(host.dataset->zones.size()) : 0;
    });
}

std::int32_t KroUtilDataSetAddVar(const char* name) {
    return guarded<entryIndex("KroUtilDataSetAddVar")>(
        std::int32_t{0}, [&] { return quoted(name); },
        [&](HostState& host) {
            auto& variables = host.requireDataset().variables;
            variables.emplace_back(requireNotNull(name, "the name"));
            return static_cast<std::int32_t>(variables.size());
        });
}

const char* KroUtilVarGetName(std::int32_t variable) {
    return guarded<entryIndex("KroUtilVarGetName")>(
        static_cast<const char*>(nullptr), [&] { return std::to_string(variable); },
        [&](HostState& host) {
            const Dataset& dataset = host.requireDataset();
            return dataset.variables[requireVariable(dataset, variable)].c_str();
        });
}

ValueLocation_e KroUtilVarGetValueLocation(std::int32_t variable) {
    return guarded<entryIndex("KroUtilVarGetValueLocation")>(
        ValueLocation_None, [&] { return std::to_string(variable); },
        [&](HostState& host) {
            const Dataset& dataset = host.requireDataset();
            requireVariable(dataset, variable);
            return firstLocation(dataset, variable);
        });
}

KroBool KroUtilDataSetAddZoneX(const KroArgList* arguments) {
    return guarded<entryIndex("KroUtilDataSetAddZoneX")>(
        KroBool{0}, [&] { return describe(arguments); },
        [&](HostState& host) {
            Dataset& dataset = host.requireDataset();
            Zone zone = readZone(arguments, dataset.variables.size());
            zone.number = static_cast<std::int32_t>(dataset.zones.size()) + 1;
            dataset.zones.push_back(std::move(zone));
            return KroBool{1};
        });
}

KroBool KroUtilZoneSetAuxData(std::int32_t zone, const char* name, const char* value) {
    return guarded<entryIndex("KroUtilZoneSetAuxData")>(
        KroBool{0}, [&] { return fmt::format("{}, {}, {}", zone, quoted(name), quoted(value)); },
        [&](HostState& host) {
            auto& auxiliaryData = host.requireZone(zone).auxiliaryData;
            auxiliaryData[requireNotNull(name, "the name")] = requireNotNull(value, "the value");
            return KroBool{1};
        });
}

KroBool KroUtilDataValueCustomLOD(std::int32_t zone, std::int32_t variable, KroDataValueLoad load,
                                  KroDataValueUnload unload, KroDataValueCleanup cleanup, void* clientData) {
    const Target target{zone, variable};
    return guarded<entryIndex("KroUtilDataValueCustomLOD")>(
        KroBool{0}, [&] { return fmt::format("{}, {}", zone, variable); },
        [&](HostState& host) {
            auto fieldData = makeFieldData(host, target, {load, unload, cleanup}, clientData);
            auto& place = host.requireZone(zone).variables[static_cast<std::size_t>(variable) - 1].data;
            host.adopt(place, std::move(fieldData));
            return KroBool{1};
        });
}

KroBool KroUtilDataNodeCustomLOD(std::int32_t zone, KroDataNodeLoad load, KroDataNodeUnload unload,
                                 KroDataNodeCleanup cleanup, void* clientData) {
    return guarded<entryIndex("KroUtilDataNodeCustomLOD")>(
        KroBool{0}, [&] { return std::to_string(zone); },
        [&](HostState& host) {
            auto nodeMap = makeNodeMap(host, {zone, 0}, {load, unload, cleanup}, clientData);
            host.adopt(host.requireZone(zone).nodeMap, std::move(nodeMap));
            return KroBool{1};
        });
}
