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
    std::size_t valueCount = 0;
    std::string bytes; // of the storage, little-endian
    std::uint32_t crc32 = 0;
};

/// A section, or the one node list of a zone without sections, as the host must hold it.
struct ExpectedSection {
    Shape shape = Shape::None;
    int gridOrder = 1;
    std::size_t nodesPerElement = 0;
    std::size_t elementCount = 0;
    std::vector<std::int64_t> nodes;
    std::uint32_t crc32 = 0; // of the node numbers as 32-bit little-endian integers
};

struct ExpectedZone {
    int zoneType = 0;
    std::size_t nodeCount = 0;
    std::size_t elementCount = 0; // of an ordered zone: its points
    std::vector<ExpectedVariable> variables;
    std::vector<ExpectedSection> sections; // none for an ordered zone

    /// Throws std::out_of_range when the zone has no such variable.
    const ExpectedVariable& variable(const std::string& name) const;
};

/// What the host must show of a zone with these pieces. Cells beside vertices must be of order 1.
ExpectedZone expectedZone(const std::vector<MeshPiece>& pieces, FileVersion version = {});

/// As zlib computes it.
std::uint32_t crc32Of(const std::string& bytes);

} // namespace test
