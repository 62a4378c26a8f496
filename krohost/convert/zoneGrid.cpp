#include "krohost/convert/zoneGrid.h"

#include "krohost/convert/Loaded.h"
#include "krohost/convert/Loss.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/vtkCells.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <numeric>
#include <set>
#include <string_view>
#include <utility>

namespace krohost::convert {

namespace {

constexpr std::array<const char*, 3> axes{"X", "Y", "Z"};
constexpr std::size_t blockByteCount = 1 << 16;

const std::string& variableName(const Dataset& dataset, std::int32_t number) {
    return dataset.variables[static_cast<std::size_t>(number) - 1];
}

/// Hands values to a sink in blocks.
template <class Value>
class Block {
public:
    explicit Block(const Sink& sink) : sink_{sink} { values_.reserve(capacity); }
    void push(Value value) {
        values_.push_back(value);
        if (values_.size() == capacity)
            flush();
    }
    void flush() {
        sink_(std::as_bytes(std::span{values_}));
        values_.clear();
    }

private:
    static constexpr std::size_t capacity = blockByteCount / sizeof(Value);
    const Sink& sink_;
    std::vector<Value> values_;
};

/// Components one after the other in each tuple; one that is empty gives zeros.
void interleave(const std::vector<std::span<const std::byte>>& components, std::size_t itemByteCount,
                std::size_t tupleCount, const Sink& sink) {
    const std::size_t tupleByteCount = components.size() * itemByteCount;
    const std::size_t blockTupleCount = blockByteCount / tupleByteCount;
    std::vector<std::byte> block(blockTupleCount * tupleByteCount);
    for (std::size_t begin = 0; begin < tupleCount; begin += blockTupleCount) {
        const std::size_t count = std::min(blockTupleCount, tupleCount - begin);
        for (std::size_t component = 0; component < components.size(); ++component)
            for (std::size_t tuple = 0; !components[component].empty() && tuple < count; ++tuple)
                std::memcpy(&block[tuple * tupleByteCount + component * itemByteCount],
                            &components[component][(begin + tuple) * itemByteCount], itemByteCount);
        sink({block.data(), count * tupleByteCount});
    }
}

void produceVariables(Host& host, std::int32_t zone, const std::vector<std::int32_t>& variables, const Sink& sink) {
    std::vector<std::unique_ptr<const Loaded>> loaded;
    std::vector<std::span<const std::byte>> components;
    std::size_t itemByteCount = 1;
    std::size_t byteCount = 0;
    for (const std::int32_t variable : variables) {
        components.emplace_back();
        if (variable == 0)
            continue;
        loaded.push_back(std::make_unique<const Loaded>(host, Target{zone, variable}));
        components.back() = loaded.back()->bytes();
        itemByteCount = loaded.back()->itemByteCount();
        byteCount = components.back().size();
    }
    if (components.size() == 1)
        sink(components.front());
    else
        interleave(components, itemByteCount, byteCount / itemByteCount, sink);
}

/// How the file format calls the type of a variable.
ElementType elementType(FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Float:
        return ElementType::Float32;
    case FieldDataType_Int32:
        return ElementType::Int32;
    case FieldDataType_Int16:
        return ElementType::Int16;
    case FieldDataType_Byte:
        return ElementType::UInt8;
    case FieldDataType_Double:
    case FieldDataType_None:
        break;
    }
    return ElementType::Float64;
}

/// Throws WriteError when the variables differ in their type.
Array variableArray(Host& host, const Zone& zone, const ArrayVariables& array) {
    const ZoneVariable* first = nullptr;
    for (const std::int32_t number : array.numbers) {
        const ZoneVariable* variable = zone.suppliedVariable(number);
        if (!first)
            first = variable;
        if (variable && variable->type != first->type)
            throw WriteError(fmt::format("The components of \"{}\" in zone {} \"{}\" differ in their type.", array.name,
                                         zone.number, zone.name));
    }
    return {array.name, elementType(first->type), array.numbers.size(),
            static_cast<std::uint64_t>(zone.valueCount(first->location)),
            [&host, zone = zone.number, variables = array.numbers](const Sink& sink) {
                produceVariables(host, zone, variables, sink);
            }};
}

/// The cells of a zone in the order of the file that is written.
struct ZoneCells {
    std::vector<SectionCells> sections;
    std::vector<SectionRun> runs;

    std::uint64_t cellCount() const {
        return std::accumulate(runs.begin(), runs.end(), std::uint64_t{0},
                               [](std::uint64_t sum, const SectionRun& run) { return sum + run.cellCount; });
    }
    std::uint64_t nodeCount() const {
        return std::accumulate(
            sections.begin(), sections.end(), std::uint64_t{0},
            [](std::uint64_t sum, const SectionCells& cells) { return sum + cells.cellCount * cells.nodes.size(); });
    }
    /// Calls `use` with the section of every cell and the cell's number in it.
    template <class Use>
    void forEach(const Use& use) const {
        std::vector<std::size_t> next(sections.size());
        for (const SectionRun& run : runs)
            for (std::uint64_t cell = 0; cell < run.cellCount; ++cell)
                use(run.sectionIndex, next[run.sectionIndex]++);
    }
};

void produceConnectivity(Host& host, const Zone& zone, const ZoneCells& cells, const CellOrder& order,
                         const Sink& sink) {
    Block<std::int64_t> block{sink};
    if (!zone.nodeMap) {
        forEachVertex(zone, order, [&](std::int64_t node) { block.push(node); });
        return block.flush();
    }
    const Loaded nodeMap{host, {zone.number}};
    std::vector<SectionNodes> nodes;
    for (std::size_t index = 0; index < cells.sections.size(); ++index)
        nodes.emplace_back(nodeMap, index);
    cells.forEach([&](std::size_t sectionIndex, std::size_t cell) {
        const SectionCells& section = cells.sections[sectionIndex];
        for (const std::uint8_t place : section.nodes) {
            const std::int64_t node = nodes[sectionIndex][cell * section.hostNodeCount + place];
            requirePoint(zone, node, zone.nodeCount);
            block.push(node);
        }
    });
    block.flush();
}

void produceOffsets(const ZoneCells& cells, const Sink& sink) {
    Block<std::int64_t> block{sink};
    std::int64_t end = 0;
    cells.forEach([&](std::size_t sectionIndex, std::size_t) {
        block.push(end += static_cast<std::int64_t>(cells.sections[sectionIndex].nodes.size()));
    });
    block.flush();
}

void produceTypes(const ZoneCells& cells, const Sink& sink) {
    Block<std::uint8_t> block{sink};
    cells.forEach([&](std::size_t sectionIndex, std::size_t) { block.push(cells.sections[sectionIndex].type); });
    block.flush();
}

bool hasCellDataFirst(const std::vector<ArrayVariables>& nodal, const std::vector<ArrayVariables>& cell) {
    return !nodal.empty() && !cell.empty() && cell.front().numbers.front() < nodal.front().numbers.front();
}

/// The names of all that a zone has at a location.
std::set<std::string_view> namesAt(const Dataset& dataset, const Zone& zone, ValueLocation_e location) {
    std::set<std::string_view> names;
    for (std::int32_t number = 1; static_cast<std::size_t>(number) <= zone.variables.size(); ++number)
        if (const ZoneVariable* variable = zone.suppliedVariable(number); variable && variable->location == location)
            names.insert(variableName(dataset, number));
    return names;
}

/// Whether the three variables from `number` on are the components of one vector, whose own name is not among those
/// taken.
bool isVector(const Dataset& dataset, const Zone& zone, std::int32_t number, const std::set<std::string_view>& taken) {
    const std::string& first = variableName(dataset, number);
    if (!first.ends_with("_X"))
        return false;
    const ZoneVariable& x = *zone.suppliedVariable(number);
    for (std::int32_t axis = 1; axis < 3; ++axis) {
        const ZoneVariable* component = zone.suppliedVariable(number + axis);
        if (!component || !component->data || component->type != x.type || component->location != x.location ||
            variableName(dataset, number + axis) !=
                first.substr(0, first.size() - 1) + axes[static_cast<std::size_t>(axis)])
            return false;
    }
    return !taken.contains(std::string_view{first}.substr(0, first.size() - 2));
}

} // namespace

std::vector<std::int32_t> coordinateVariables(const Dataset& dataset, const Zone& zone) {
    std::vector<std::int32_t> numbers(axes.size());
    for (std::int32_t number = 1; static_cast<std::size_t>(number) <= zone.variables.size(); ++number) {
        const ZoneVariable* variable = zone.suppliedVariable(number);
        const auto axis = std::find(axes.begin(), axes.end(), variableName(dataset, number));
        if (variable && variable->data && variable->location == ValueLocation_Nodal && axis != axes.end())
            numbers[static_cast<std::size_t>(axis - axes.begin())] = number;
    }
    if (numbers == std::vector<std::int32_t>(axes.size()))
        throw WriteError(fmt::format("Zone {} \"{}\" has no coordinates.", zone.number, zone.name));
    return numbers;
}

std::vector<ArrayVariables> arrayVariables(const Dataset& dataset, const Zone& zone, ValueLocation_e location) {
    const std::vector<std::int32_t> coordinates = coordinateVariables(dataset, zone);
    const std::set<std::string_view> taken = namesAt(dataset, zone, location);
    std::vector<ArrayVariables> arrays;
    for (std::int32_t number = 1; static_cast<std::size_t>(number) <= zone.variables.size(); ++number) {
        pollInterrupt();
        const ZoneVariable* variable = zone.suppliedVariable(number);
        if (!variable || !variable->data || variable->location != location ||
            std::find(coordinates.begin(), coordinates.end(), number) != coordinates.end())
            continue;
        const std::string& name = variableName(dataset, number);
        if (isVector(dataset, zone, number, taken)) {
            arrays.push_back({name.substr(0, name.size() - 2), {number, number + 1, number + 2}});
            number += 2;
        } else {
            arrays.push_back({name, {number}});
        }
    }
    return arrays;
}

Grid zoneGrid(Host& host, const Zone& zone, const CellOrder& order, std::vector<Array> fieldData) {
    const Dataset& dataset = host.dataset();
    auto cells = std::make_shared<ZoneCells>(ZoneCells{sectionCells(host, zone, order), order.runs});
    if (cells->runs.empty())
        for (std::size_t index = 0; index < cells->sections.size(); ++index)
            cells->runs.push_back({index, cells->sections[index].cellCount});
    const auto nodal = arrayVariables(dataset, zone, ValueLocation_Nodal);
    const auto cell = arrayVariables(dataset, zone, ValueLocation_CellCentered);

    Grid grid;
    grid.name = zone.name;
    grid.pointCount = static_cast<std::uint64_t>(zone.nodeCount);
    grid.cellCount = cells->cellCount();
    grid.points = variableArray(host, zone, {"Points", coordinateVariables(dataset, zone)});
    grid.connectivity = {
        "connectivity", ElementType::Int64, 1, cells->nodeCount(),
        [&host, &zone, &order, cells](const Sink& sink) { produceConnectivity(host, zone, *cells, order, sink); }};
    grid.offsets = {"offsets", ElementType::Int64, 1, grid.cellCount,
                    [cells](const Sink& sink) { produceOffsets(*cells, sink); }};
    grid.types = {"types", ElementType::UInt8, 1, grid.cellCount,
                  [cells](const Sink& sink) { produceTypes(*cells, sink); }};
    for (const ArrayVariables& array : nodal)
        grid.pointData.push_back(variableArray(host, zone, array));
    for (const ArrayVariables& array : cell)
        grid.cellData.push_back(variableArray(host, zone, array));
    grid.fieldData = std::move(fieldData);
    grid.areCellDataFirst = hasCellDataFirst(nodal, cell);
    return grid;
}

} // namespace krohost::convert
