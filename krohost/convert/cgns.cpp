#include "krohost/convert/cgns.h"

#include "krohost/convert/Loaded.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/names.h"
#include "krohost/convert/vtkCells.h"
#include "krohost/host/model/itemType.h"
#include "loader/cells/cellTypes.h"

#include <cgnslib.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <utility>

namespace krohost::convert {

namespace {

constexpr std::size_t nameLength = 32;

void require(int status) {
    if (status != CG_OK)
        throw FileError(cg_get_error());
}

cgsize_t size(std::int64_t count, const Zone& zone) {
    if (count >= std::numeric_limits<cgsize_t>::max()) // node numbers are still to be raised by one
        throw WriteError(fmt::format("Zone {} \"{}\" is too large for this CGNS library.", zone.number, zone.name));
    return static_cast<cgsize_t>(count);
}

struct ElementTypes {
    CellShape_e shape;
    std::array<ElementType_t, 4> ofOrders; ///< 1 to 4
};

/// The orders of nodes are those of the host.
constexpr std::array<ElementTypes, 7> elementTypes{{
    {CellShape_Line, {BAR_2, BAR_3, BAR_4, BAR_5}},
    {CellShape_Triangle, {TRI_3, TRI_6, TRI_10, TRI_15}},
    {CellShape_Quadrilateral, {QUAD_4, QUAD_9, QUAD_16, QUAD_25}},
    {CellShape_Tetrahedron, {TETRA_4, TETRA_10, TETRA_20, TETRA_35}},
    {CellShape_Hexahedron, {HEXA_8, HEXA_27, HEXA_64, HEXA_125}},
    {CellShape_Pyramid, {PYRA_5, ElementTypeNull, ElementTypeNull, ElementTypeNull}},
    {CellShape_Prism, {PENTA_6, PENTA_18, PENTA_40, PENTA_75}},
}};

ElementType_t elementType(const Section& section) {
    const auto found = std::find_if(elementTypes.begin(), elementTypes.end(),
                                    [&](const ElementTypes& row) { return row.shape == section.shape; });
    const auto order = static_cast<std::size_t>(section.gridOrder);
    const bool exists = found != elementTypes.end() && order >= 1 && order <= found->ofOrders.size();
    return exists ? found->ofOrders[order - 1] : ElementTypeNull;
}

template <class To>
std::vector<To> converted(FieldDataType_e type, const Loaded& loaded) {
    return withItemType(type, [&]<class From>(ItemTag<From>) {
        const auto items = loaded.items<From>();
        return std::vector<To>(items.begin(), items.end());
    });
}

/// Values in the order of the elements, which the file has section by section.
template <class Value>
void sortBySection(std::vector<Value>& values, const Zone& zone, const std::vector<SectionRun>& runs) {
    if (runs.size() < 2)
        return;
    std::vector<std::size_t> next(1);
    for (const Section& section : zone.sections)
        next.push_back(next.back() + static_cast<std::size_t>(section.elementCount));
    const std::vector<Value> inFileOrder = values;
    auto value = inFileOrder.begin();
    for (const SectionRun& run : runs)
        for (std::uint64_t cell = 0; cell < run.cellCount; ++cell)
            values[next[run.sectionIndex]++] = *value++;
}

class CgnsWriter {
public:
    CgnsWriter(Host& host, const std::filesystem::path& path, Losses& losses)
        : host_{host}, dataset_{host.dataset()}, losses_{losses},
          zoneNames_{nameLength, "CGNS", losses, false, {"SimulationType", "TimeIterValues"}} {
        require(cg_set_file_type(CG_FILE_HDF5));
        require(cg_open(path.c_str(), CG_MODE_WRITE, &file_));
    }
    ~CgnsWriter() {
        if (file_ != 0)
            cg_close(file_);
    }
    CgnsWriter(const CgnsWriter&) = delete;
    CgnsWriter& operator=(const CgnsWriter&) = delete;

    void write(const CellOrders& orders) {
        int cellDimension = 1;
        for (const Zone& zone : dataset_.zones)
            for (const Section& section : zone.sections)
                cellDimension = std::max(cellDimension, veltra::vtkcells::dimension(section.shape));
        require(cg_base_write(file_, "Base", cellDimension, 3, &base_));
        require(cg_simulation_type_write(file_, base_, TimeAccurate));
        writeTime();
        for (std::size_t index = 0; index < dataset_.zones.size(); ++index)
            writeZone(dataset_.zones[index], orders[index]);
        require(cg_close(std::exchange(file_, 0)));
    }

private:
    void writeTime() const {
        const double time = dataset_.zones.front().solutionTime;
        const cgsize_t count = 1;
        require(cg_biter_write(file_, base_, "TimeIterValues", 1));
        require(cg_goto(file_, base_, "BaseIterativeData_t", 1, "end"));
        require(cg_array_write("TimeValues", RealDouble, 1, &count, &time));
    }

    void writeZone(const Zone& zone, const CellOrder& order) {
        const std::vector<SectionCells> sections = sectionCells(host_, zone, order);
        const std::uint64_t cellCount =
            std::accumulate(sections.begin(), sections.end(), std::uint64_t{0},
                            [](std::uint64_t sum, const SectionCells& cells) { return sum + cells.cellCount; });
        const std::array<cgsize_t, 3> sizes{size(zone.nodeCount, zone),
                                            size(static_cast<std::int64_t>(cellCount), zone), 0};
        require(cg_zone_write(file_, base_, zoneNames_.claim(zone.name).c_str(), sizes.data(), Unstructured, &zone_));
        writeCoordinates(zone);
        if (zone.nodeMap)
            writeElements(zone, sections);
        else
            writeVertices(zone, order);
        writeSolution(zone, ValueLocation_Nodal, "FlowSolution", Vertex, {});
        writeSolution(zone, ValueLocation_CellCentered, "CellSolution", CellCenter, order.runs);
    }

    void writeCoordinates(const Zone& zone) const {
        constexpr std::array names{"CoordinateX", "CoordinateY", "CoordinateZ"};
        const std::vector<std::int32_t> numbers = coordinateVariables(dataset_, zone);
        for (std::size_t axis = 0; axis < names.size(); ++axis) {
            int coordinate = 0;
            const auto writeAs = [&]<class Value>(DataType_t type, const std::vector<Value>& values) {
                require(cg_coord_write(file_, base_, zone_, type, names[axis], values.data(), &coordinate));
            };
            if (numbers[axis] == 0) {
                writeAs(RealSingle, std::vector<float>(static_cast<std::size_t>(zone.nodeCount)));
                continue;
            }
            const Loaded loaded{host_, {zone.number, numbers[axis]}};
            const FieldDataType_e type = zone.suppliedVariable(numbers[axis])->type;
            if (type == FieldDataType_Float)
                writeAs(RealSingle, converted<float>(type, loaded));
            else
                writeAs(RealDouble, converted<double>(type, loaded));
        }
    }

    void writeVertices(const Zone& zone, const CellOrder& order) const {
        std::vector<cgsize_t> nodes;
        forEachVertex(zone, order, [&](std::int64_t node) { nodes.push_back(size(node, zone) + 1); });
        if (!nodes.empty())
            writeSection("Nodes", NODE, 1, static_cast<std::int64_t>(nodes.size()), nodes);
    }

    void writeElements(const Zone& zone, const std::vector<SectionCells>& cells) const {
        const Loaded nodeMap{host_, {zone.number}};
        std::int64_t begin = 1;
        for (std::size_t index = 0; index < zone.sections.size(); ++index) {
            const Section& section = zone.sections[index];
            const SectionNodes numbers{nodeMap, index};
            std::vector<cgsize_t> nodes;
            const bool areVertices = cells[index].type == vertexType; // which the host has as degenerate cells
            for (std::size_t place = 0; place < numbers.size(); place += areVertices ? cells[index].hostNodeCount : 1) {
                requirePoint(zone, numbers[place], zone.nodeCount);
                nodes.push_back(size(numbers[place], zone) + 1);
            }
            const ElementType_t type = areVertices ? NODE : elementType(section);
            if (type == ElementTypeNull)
                throw WriteError(fmt::format("Zone {} \"{}\" has {}s of order {}, which are not written to CGNS files.",
                                             zone.number, zone.name, inWords(section.shape), section.gridOrder));
            const std::int64_t end = begin + section.elementCount - 1;
            writeSection(fmt::format("{}_{}", areVertices ? "vertex" : inWords(section.shape), index + 1), type, begin,
                         end, nodes);
            begin = end + 1;
        }
    }

    void writeSection(const std::string& name, ElementType_t type, std::int64_t begin, std::int64_t end,
                      const std::vector<cgsize_t>& nodes) const {
        int section = 0;
        require(cg_section_write(file_, base_, zone_, name.c_str(), type, static_cast<cgsize_t>(begin),
                                 static_cast<cgsize_t>(end), 0, nodes.data(), &section));
    }

    void writeSolution(const Zone& zone, ValueLocation_e location, const char* name, GridLocation_t gridLocation,
                       const std::vector<SectionRun>& runs) {
        Names names{nameLength, "CGNS", losses_, false, {"GridLocation"}};
        int solution = 0;
        for (const ArrayVariables& array : arrayVariables(dataset_, zone, location))
            for (std::size_t component = 0; component < array.numbers.size(); ++component) {
                if (solution == 0)
                    require(cg_sol_write(file_, base_, zone_, name, gridLocation, &solution));
                // By the format's convention the components of a vector "v" are "vX", "vY" and "vZ".
                const std::string suffix = array.numbers.size() > 1 ? std::string(1, "XYZ"[component]) : "";
                writeField(zone, array.numbers[component], solution, names.claim(array.name + suffix), runs);
            }
    }

    void writeField(const Zone& zone, std::int32_t number, int solution, const std::string& name,
                    const std::vector<SectionRun>& runs) const {
        const Loaded loaded{host_, {zone.number, number}};
        const FieldDataType_e type = zone.suppliedVariable(number)->type;
        const auto writeAs = [&]<class Value>(DataType_t dataType, std::vector<Value> values) {
            int field = 0;
            sortBySection(values, zone, runs);
            require(cg_field_write(file_, base_, zone_, solution, dataType, name.c_str(), values.data(), &field));
        };
        if (type == FieldDataType_Float)
            writeAs(RealSingle, converted<float>(type, loaded));
        else if (type == FieldDataType_Double)
            writeAs(RealDouble, converted<double>(type, loaded));
        else
            writeAs(Integer, converted<std::int32_t>(type, loaded));
    }

    Host& host_;
    const Dataset& dataset_;
    Losses& losses_;
    Names zoneNames_;
    int file_ = 0;
    int base_ = 0;
    int zone_ = 0;
};

} // namespace

void writeCgns(Host& host, const std::filesystem::path& path, const CellOrders& orders, Losses& losses) {
    CgnsWriter{host, path, losses}.write(orders);
}

} // namespace krohost::convert
