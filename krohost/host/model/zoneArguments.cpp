#include "krohost/host/model/zoneArguments.h"

#include "krohost/host/line/contract.h"

#include <fmt/format.h>

#include <limits>

namespace krohost {

namespace {

std::vector<Section> readSections(ArgumentReader& arguments) {
    const auto sectionCount = static_cast<std::size_t>(arguments.integer("NumSections", 1, Kro_MaxSectionsPerZone));
    const auto elementCounts = arguments.array("NumElemsPerSection", KroArrayItem_Int64, sectionCount);
    const auto shapes = arguments.codes("CellShapePerSection", sectionCount, {0, 1, 2, 3, 4, 5, 6, 255});
    const auto gridOrders = arguments.codes("GridOrderPerSection", sectionCount, {1, 2, 3, 4});
    std::vector<Section> sections;
    for (std::size_t index = 0; index < sectionCount; ++index)
        sections.push_back({static_cast<CellShape_e>(shapes[index]), static_cast<std::int32_t>(gridOrders[index]),
                            elementCounts[index]});
    return sections;
}

void requireElementTotal(const std::vector<Section>& sections, std::int64_t elementCount) {
    std::int64_t sum = 0;
    for (const Section& section : sections)
        if (section.elementCount < 0 || __builtin_add_overflow(sum, section.elementCount, &sum))
            throw ContractViolation("the argument \"NumElemsPerSection\" holds a negative or too large number");
    if (sum != elementCount)
        throw ContractViolation(
            fmt::format("the sections have {} elements together, but \"JMax\" is {}", sum, elementCount));
}

void readSize(ArgumentReader& arguments, Zone& zone) {
    constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
    zone.nodeCount = arguments.integer("IMax", 1, greatest);
    if (zone.type == ZoneType_Ordered) {
        zone.elementCount = zone.nodeCount * arguments.integer("JMax", 1, 1) * arguments.integer("KMax", 1, 1);
        return;
    }
    zone.elementCount = arguments.integer("JMax", 1, greatest);
    if (zone.type == ZoneType_Mixed) {
        zone.sections = readSections(arguments);
        requireElementTotal(zone.sections, zone.elementCount);
    } else {
        zone.sections = {{shapeOf(zone.type), 1, zone.elementCount}};
    }
}

void readVariables(ArgumentReader& arguments, Zone& zone, std::size_t variableCount) {
    const auto types = arguments.codes("VarDataType", variableCount, {0, 1, 2, 3, 4, 5});
    const auto locations = arguments.codes("ValueLocation", variableCount,
                                           {ValueLocation_CellCentered, ValueLocation_Nodal, ValueLocation_None});
    for (std::size_t index = 0; index < variableCount; ++index) {
        if (types[index] != FieldDataType_None && locations[index] == ValueLocation_None)
            throw ContractViolation(fmt::format("variable {} has a type but no value location", index + 1));
        zone.variables.push_back(
            {static_cast<FieldDataType_e>(types[index]), static_cast<ValueLocation_e>(locations[index]), nullptr});
    }
}

} // namespace

Zone readZone(const KroArgList* list, std::size_t variableCount) {
    ArgumentReader arguments{list};
    Zone zone;
    zone.name = arguments.string("Name");
    const std::int64_t type = arguments.integer("ZoneType");
    requireCode("ZoneType", type, {0, 1, 2, 3, 4, 5, 8});
    zone.type = static_cast<ZoneType_e>(type);
    zone.isVariableCreationDeferred = arguments.flag("DeferVarCreation");
    zone.isNodeMapCreationDeferred = arguments.flag("DeferNodeMapCreation");
    zone.strand = static_cast<std::int32_t>(arguments.integer("StrandID", std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
    zone.solutionTime = arguments.number("SolutionTime");
    readSize(arguments, zone);
    readVariables(arguments, zone, variableCount);
    arguments.finish();
    return zone;
}

} // namespace krohost
