#pragma once

#include "tests/support/CellKind.h"
#include "tests/support/Mesh.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace test {

/// A variable as the host must hold it.
struct ExpectedVariable {
    std::string name;
    bool nodal = true;
    int storageType = 0; // 1 float, 2 double, 3 int32, 4 int16, 5 byte
    std::string bytes;   // of the storage, little-endian
};

/// A section, or the one node list of a zone without sections, as the host must hold it.
struct ExpectedSection {
    Shape shape = Shape::None;
    int gridOrder = 1;
    std::int64_t elementCount = 0;
    std::vector<std::int64_t> nodes;
};

struct ExpectedZone {
    int zoneType = 0;
    std::size_t nodeCount = 0;
    std::size_t elementCount = 0; // of an ordered zone: its points
    std::vector<ExpectedVariable> variables;
    std::vector<ExpectedSection> sections; // none for an ordered zone
};

/// What the host must show of a zone with these pieces, which list the same arrays in the same order. Cells beside
/// vertices must be of order 1.
ExpectedZone expectedZone(const std::vector<MeshPiece>& pieces, FileVersion version);

} // namespace test
