#pragma once

#include "loader/xml/DataArray.h"

#include <cstdint>
#include <string>
#include <vector>

namespace veltra::vtkfile {

/// One Piece element: a part of a mesh with its own numbering of points.
struct Piece {
    std::string name; ///< the file name's stem when the element has none
    std::uint64_t numberOfPoints = 0;
    std::uint64_t numberOfCells = 0;
    DataArray points;                 ///< the coordinates
    std::vector<DataArray> cells;     ///< in file order, told apart by their names
    std::vector<DataArray> variables; ///< of PointData and CellData, in file order
};

} // namespace veltra::vtkfile
