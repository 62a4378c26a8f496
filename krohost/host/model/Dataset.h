/// What an add-on has put into the host: plain records, filled through the C interface.
#pragma once

#include "interface/kro.h"
#include "krohost/host/model/Deferred.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace krohost {

/// Cells of one shape and grid order.
struct Section {
    CellShape_e shape;
    std::int32_t gridOrder; // 1 to 4
    std::int64_t elementCount;

    std::int64_t nodesPerElement() const;
};

/// How one zone holds one of the dataset's variables. `data` is empty when no callbacks are registered.
struct ZoneVariable {
    FieldDataType_e type = FieldDataType_None;
    ValueLocation_e location = ValueLocation_None;
    std::unique_ptr<KroFieldData> data;
};

struct Zone {
    std::int32_t number = 0; // from 1
    std::string name;
    ZoneType_e type = ZoneType_Ordered;
    std::int64_t nodeCount = 0;
    std::int64_t elementCount = 0;           // of an ordered zone: its points
    std::int32_t strand = -1;                // as the loader gave it; -1: left to the host
    std::optional<std::int64_t> strandGroup; // the strand that the host found for a zone left to it
    double solutionTime = 0;
    bool isVariableCreationDeferred = false;
    bool isNodeMapCreationDeferred = false;
    std::vector<Section> sections; // none in an ordered zone, one in zones of one shape
    std::map<std::string, std::string> auxiliaryData;
    std::vector<ZoneVariable> variables; // may be shorter than the dataset's list: later variables are not supplied
    std::unique_ptr<KroNodeMap> nodeMap;

    /// The variable with this number (from 1), or null when the zone does not supply it.
    const ZoneVariable* suppliedVariable(std::int32_t variable) const;
    /// Values of a variable at this location.
    std::int64_t valueCount(ValueLocation_e location) const {
        return location == ValueLocation_Nodal ? nodeCount : elementCount;
    }
};

/// How to load the dataset again.
struct Instructions {
    std::string loaderName;
    std::vector<std::string> strings;
};

struct Dataset {
    std::string loaderName;
    std::string title;
    std::vector<std::string> variables; // names; variable 1 comes first
    std::vector<Zone> zones;            // zone 1 comes first
    std::optional<Instructions> instructions;

    /// Everything with registered callbacks: zone by zone the node map, then the variables.
    std::vector<Target> targets() const;
    /// Null when nothing is registered there.
    Deferred* find(Target target) const;
    /// `variable 2 "Y" of zone 1 "wing"` or `the node map of zone 1 "wing"`, for a target that exists.
    std::string name(Target target) const;
};

/// The shape of the cells of a zone type other than ordered and mixed.
CellShape_e shapeOf(ZoneType_e type);

/// The types and codes in words: "mixed", "hexahedron", "float32", "nodal".
const char* inWords(ZoneType_e type);
const char* inWords(CellShape_e shape);
const char* inWords(FieldDataType_e type);
const char* inWords(ValueLocation_e location);

} // namespace krohost
