#include "krohost/host/model/Dataset.h"

#include "krohost/host/line/Journal.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>

namespace krohost {

std::int64_t Section::nodesPerElement() const {
    const std::int64_t perEdge = gridOrder + 1;
    const std::int64_t perTriangle = perEdge * (perEdge + 1) / 2;
    switch (shape) {
    case CellShape_Line:
        return perEdge;
    case CellShape_Triangle:
        return perTriangle;
    case CellShape_Quadrilateral:
        return perEdge * perEdge;
    case CellShape_Tetrahedron:
        return perTriangle * (perEdge + 2) / 3;
    case CellShape_Hexahedron:
        return perEdge * perEdge * perEdge;
    case CellShape_Pyramid:
        return perEdge * (perEdge + 1) * (2 * perEdge + 1) / 6;
    case CellShape_Prism:
        return perEdge * perTriangle;
    case CellShape_None:
        break;
    }
    return 1;
}

const ZoneVariable* Zone::suppliedVariable(std::int32_t variable) const {
    if (variable < 1 || static_cast<std::size_t>(variable) > variables.size())
        return nullptr;
    const ZoneVariable& found = variables[static_cast<std::size_t>(variable) - 1];
    return found.type == FieldDataType_None ? nullptr : &found;
}

std::vector<Target> Dataset::targets() const {
    std::vector<Target> result;
    for (const Zone& zone : zones) {
        if (zone.nodeMap)
            result.push_back(zone.nodeMap->target());
        for (const ZoneVariable& variable : zone.variables)
            if (variable.data)
                result.push_back(variable.data->target());
    }
    return result;
}

Deferred* Dataset::find(Target target) const {
    if (target.zone < 1 || static_cast<std::size_t>(target.zone) > zones.size())
        return nullptr;
    const Zone& zone = zones[static_cast<std::size_t>(target.zone) - 1];
    if (target.variable == 0)
        return zone.nodeMap.get();
    const ZoneVariable* variable = zone.suppliedVariable(target.variable);
    return variable ? variable->data.get() : nullptr;
}

std::string Dataset::name(Target target) const {
    const std::string& zoneName = zones.at(static_cast<std::size_t>(target.zone) - 1).name;
    const std::string zone = fmt::format("zone {} {}", target.zone, quoted(zoneName));
    if (target.variable == 0)
        return "the node map of " + zone;
    const std::string& variableName = variables.at(static_cast<std::size_t>(target.variable) - 1);
    return fmt::format("variable {} {} of {}", target.variable, quoted(variableName), zone);
}

CellShape_e shapeOf(ZoneType_e type) {
    switch (type) {
    case ZoneType_Triangle:
        return CellShape_Triangle;
    case ZoneType_Quadrilateral:
        return CellShape_Quadrilateral;
    case ZoneType_Tetrahedron:
        return CellShape_Tetrahedron;
    case ZoneType_Brick:
        return CellShape_Hexahedron;
    case ZoneType_LineSegment:
        return CellShape_Line;
    case ZoneType_Ordered:
    case ZoneType_Mixed:
        break;
    }
    return CellShape_None;
}

const char* inWords(ZoneType_e type) {
    switch (type) {
    case ZoneType_Ordered:
        return "ordered";
    case ZoneType_Triangle:
        return "triangles";
    case ZoneType_Quadrilateral:
        return "quadrilaterals";
    case ZoneType_Tetrahedron:
        return "tetrahedra";
    case ZoneType_Brick:
        return "bricks";
    case ZoneType_LineSegment:
        return "line segments";
    case ZoneType_Mixed:
        break;
    }
    return "mixed";
}

const char* inWords(CellShape_e shape) {
    switch (shape) {
    case CellShape_Line:
        return "line";
    case CellShape_Triangle:
        return "triangle";
    case CellShape_Quadrilateral:
        return "quadrilateral";
    case CellShape_Tetrahedron:
        return "tetrahedron";
    case CellShape_Hexahedron:
        return "hexahedron";
    case CellShape_Pyramid:
        return "pyramid";
    case CellShape_Prism:
        return "prism";
    case CellShape_None:
        break;
    }
    return "point";
}

const char* inWords(FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Float:
        return "float32";
    case FieldDataType_Double:
        return "float64";
    case FieldDataType_Int32:
        return "int32";
    case FieldDataType_Int16:
        return "int16";
    case FieldDataType_Byte:
        return "byte";
    case FieldDataType_None:
        break;
    }
    return "none";
}

const char* inWords(ValueLocation_e location) {
    switch (location) {
    case ValueLocation_CellCentered:
        return "cell";
    case ValueLocation_Nodal:
        return "nodal";
    case ValueLocation_None:
        break;
    }
    return "none";
}

} // namespace krohost
