#pragma once

#include "krohost/convert/Grid.h"
#include "krohost/convert/cellOrder.h"
#include "krohost/host/runtime/Host.h"

#include <cstdint>
#include <string>
#include <vector>

namespace krohost::convert {

/// The variables of a zone that stand for one array: one scalar, or X, Y and Z of a vector in this order.
struct ArrayVariables {
    std::string name;
    std::vector<std::int32_t> numbers;
};

/// The zone's variables at a location other than its coordinates, those of a vector ("v_X", "v_Y", "v_Z" of one type
/// next to each other) together. Variables without data are left out.
std::vector<ArrayVariables> arrayVariables(const Dataset& dataset, const Zone& zone, ValueLocation_e location);

/// The nodal variables "X", "Y" and "Z" of the zone as far as it has them; 0 for one that it lacks. Throws WriteError
/// when there is none.
std::vector<std::int32_t> coordinateVariables(const Dataset& dataset, const Zone& zone);

/// The zone as a grid with these field data, whose arrays are loaded when they are produced, one at a time. Coordinates
/// that the zone lacks are 0. Producing throws WriteError when an array cannot be loaded or a cell has a node that no
/// point has, and Interrupted. The host and the order must outlive the grid.
Grid zoneGrid(Host& host, const Zone& zone, const CellOrder& order, std::vector<Array> fieldData);

} // namespace krohost::convert
