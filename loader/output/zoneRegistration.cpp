#include "loader/output/zoneRegistration.h"

#include "loader/output/LoadedFiles.h"
#include "loader/output/messages.h"
#include "loader/output/nodeMapLoader.h"
#include "loader/output/valueLoader.h"

#include "loader/mesh/sections.h"

#include "loader/sdk/ArgList.h"
#include "loader/sdk/exceptions.h"
#include "loader/sdk/loaderUtilities.h"

#include <algorithm>
#include <span>

namespace veltra::vtkfile {

namespace {

/// Per variable of the dataset, what `entry` says of those that the piece supplies and `absent` for the others.
template <class Entry>
auto perVariable(const Piece& piece, const VariableMap& variables, Entry entry, decltype(entry(DataArray())) absent) {
    std::vector<decltype(absent)> entries(static_cast<std::size_t>(KroUtilDataSetGetNumVars()), absent);
    for (const VariableComponent& variable : variableComponents(piece))
        entries.at(static_cast<std::size_t>(variableNumber(variables, variable.key) - 1)) = entry(*variable.array);
    return entries;
}

/// For every variable of the host's dataset, how the host is to store it in a zone that begins with this piece;
/// FieldDataType_None for those that the zone does not supply.
std::vector<FieldDataType_e> getFieldDataTypes(const Piece& piece, const VariableMap& variables) {
    return perVariable(
        piece, variables, [](const DataArray& array) { return storageType(array.type); }, FieldDataType_None);
}

/// The same for where the values live; those that the zone does not supply stay cell-centred.
std::vector<ValueLocation_e> getValueLocations(const Piece& piece, const VariableMap& variables) {
    return perVariable(
        piece, variables, [](const DataArray& array) { return array.valueLocation; }, ValueLocation_CellCentered);
}

std::string zoneName(const Zone& zone) {
    if (!zone.name.empty())
        return zone.name;
    if (zone.pieces.size() == 1 && !zone.pieces.front().name.empty())
        return zone.pieces.front().name;
    const std::string stem = zone.file->stem().string();
    return stem.empty() ? zone.file->filename().string() : stem; // of a file called ".vtu"
}

bool hasValuesAtCells(const Zone& zone, std::uint64_t cells) {
    const std::vector<DataArray>& variables = zone.pieces.front().variables;
    return cells > 0 && std::any_of(variables.begin(), variables.end(), [](const DataArray& array) {
               return array.valueLocation == ValueLocation_CellCentered && array.numberOfComponents > 0;
           });
}

template <class Item, class Projection>
bool appendSections(toolbox::ArgList& arguments, const char* name, const std::vector<Section>& sections,
                    Projection projection) {
    std::vector<Item> items;
    for (const Section& section : sections)
        items.push_back(static_cast<Item>(section.*projection));
    return arguments.appendArray(name, std::span<const Item>(items));
}

template <class Enumeration>
bool appendCodes(toolbox::ArgList& arguments, const char* name, const std::vector<Enumeration>& codes) {
    const std::vector<std::int32_t> items(codes.begin(), codes.end());
    return arguments.appendArray(name, std::span<const std::int32_t>(items));
}

/// Registers one zone after the other and knows what they share.
class ZoneRegistrar {
public:
    ZoneRegistrar(const std::vector<Zone>& zones, const ZoneRegistration& registration)
        : registration_(registration), auxiliaryData_(auxiliaryData(zones)) {}

    bool add(const Zone& zone, std::size_t zoneIndex) const {
        const std::uint64_t nodes = nodeCount(zone);
        const std::uint64_t cells = cellCount(zone);
        if (isEmpty(zone))
            return true;
        if (nodes == 0)
            throw IOException(cellsWithoutPoints(zoneName(zone)));
        const FilePtr file = openFile(zone.pieces.front().points);
        checkPoints(file, zone);
        const std::vector<Section> sections = groupSections(file, zone);
        if (zoneType(sections) == ZoneType_Ordered && hasValuesAtCells(zone, cells) && cells != nodes)
            throw IOException(valuesOfOtherVertices(zoneName(zone), cells, nodes));
        if (!addToDataSet(zone, sections, nodes, cells))
            return false;
        const std::int32_t zoneNumber = KroUtilDataSetGetNumZones();
        auxiliaryData_.assign(zoneIndex, zoneNumber);
        return registerValues(zone, zoneNumber) &&
               (zoneType(sections) == ZoneType_Ordered ||
                registerNodeMapLoader(registration_.loaderName, zoneNumber, zone, sections));
    }

private:
    static std::vector<std::vector<NameValuePair>> auxiliaryData(const std::vector<Zone>& zones) {
        std::vector<std::vector<NameValuePair>> pairsByZone;
        for (const Zone& zone : zones)
            pairsByZone.push_back(zone.auxiliaryData);
        return pairsByZone;
    }

    double solutionTime(const Zone& zone) const {
        return zone.solutionTime ? *zone.solutionTime : registration_.times.at(zone.fileIndex);
    }

    bool addToDataSet(const Zone& zone, const std::vector<Section>& sections, std::uint64_t nodes,
                      std::uint64_t cells) const {
        toolbox::ArgList arguments;
        const ZoneType_e type = zoneType(sections);
        return arguments.appendString("Name", zoneName(zone)) && arguments.appendInt("ZoneType", type) &&
               arguments.appendInt("DeferVarCreation", 1) && arguments.appendInt("DeferNodeMapCreation", 1) &&
               arguments.appendInt("StrandID", registration_.strand) &&
               arguments.appendDouble("SolutionTime", solutionTime(zone)) &&
               appendSize(arguments, type, nodes, cells) &&
               (type != ZoneType_Mixed || appendAllSections(arguments, sections)) &&
               appendVariables(arguments, zone.pieces.front()) && KroUtilDataSetAddZoneX(arguments.get()) == 1;
    }

    static bool appendSize(toolbox::ArgList& arguments, ZoneType_e type, std::uint64_t nodes, std::uint64_t cells) {
        const bool ordered = type == ZoneType_Ordered;
        return arguments.appendInt("IMax", static_cast<std::int64_t>(nodes)) &&
               arguments.appendInt("JMax", ordered ? 1 : static_cast<std::int64_t>(cells)) &&
               (!ordered || arguments.appendInt("KMax", 1));
    }

    static bool appendAllSections(toolbox::ArgList& arguments, const std::vector<Section>& sections) {
        return arguments.appendInt("NumSections", static_cast<std::int64_t>(sections.size())) &&
               appendSections<std::int64_t>(arguments, "NumElemsPerSection", sections, &Section::cellCount) &&
               appendSections<std::int32_t>(arguments, "CellShapePerSection", sections, &Section::shape) &&
               appendSections<std::int32_t>(arguments, "GridOrderPerSection", sections, &Section::gridOrder);
    }

    /// The first piece stands for all, which have been checked to agree with it.
    bool appendVariables(toolbox::ArgList& arguments, const Piece& piece) const {
        return appendCodes(arguments, "VarDataType", getFieldDataTypes(piece, registration_.variables)) &&
               appendCodes(arguments, "ValueLocation", getValueLocations(piece, registration_.variables));
    }

    bool registerValues(const Zone& zone, std::int32_t zoneNumber) const {
        const std::vector<SharedArrays> arrays = arraysOfPieces(zone);
        const std::vector<VariableComponent> components = variableComponents(zone.pieces.front());
        return std::all_of(components.begin(), components.end(), [&](const VariableComponent& variable) {
            const SharedArrays& ofPieces = arrays[variable.arrayIndex];
            const bool hasValues = std::any_of(ofPieces->begin(), ofPieces->end(),
                                               [](const DataArray& array) { return array.numberOfTuples > 0; });
            return !hasValues || registerValueLoader(registration_.loaderName, zoneNumber,
                                                     variableNumber(registration_.variables, variable.key),
                                                     variable.component, ofPieces);
        });
    }

    using SharedArrays = std::shared_ptr<std::vector<DataArray>>;

    /// The records of the points and of each variable array, in every piece of the zone.
    static std::vector<SharedArrays> arraysOfPieces(const Zone& zone) {
        const Piece& first = zone.pieces.front();
        std::vector<SharedArrays> arrays;
        for (std::size_t index = 0; index <= first.variables.size(); ++index)
            arrays.push_back(std::make_shared<std::vector<DataArray>>());
        for (const Piece& piece : zone.pieces) {
            arrays.front()->push_back(piece.points);
            const std::vector<const DataArray*> matches = matchVariables(first, piece);
            for (std::size_t index = 0; index < matches.size(); ++index)
                arrays[index + 1]->push_back(*matches[index]);
        }
        return arrays;
    }

    const ZoneRegistration& registration_;
    kroutildataio_utils::AuxDataAssigner auxiliaryData_;
};

} // namespace

bool registerZones(const std::vector<Zone>& zones, const ZoneRegistration& registration, ui::TaskProgress& progress) {
    constexpr const char* text = "Registering zones...";
    progress.setText(text);
    progress.setStepCount(zones.size());
    const ZoneRegistrar registrar(zones, registration);
    for (std::size_t index = 0; index < zones.size(); ++index) {
        const auto zoneProgress = progress.openSubTask(zones[index].file->string());
        zoneProgress->setText(text);
        if (!registrar.add(zones[index], index))
            return false;
    }
    return true;
}

} // namespace veltra::vtkfile
