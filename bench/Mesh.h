#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace bench {

/// An array with its values as they are in memory.
struct Array {
    std::string name;
    const char* type; ///< as the file format calls it
    std::size_t elementByteCount;
    std::size_t componentCount;
    std::vector<char> bytes;
};

template <class T>
Array makeArray(std::string name, const char* type, const std::vector<T>& values, std::size_t componentCount = 1) {
    Array array{std::move(name), type, sizeof(T), componentCount, std::vector<char>(values.size() * sizeof(T))};
    std::memcpy(array.bytes.data(), values.data(), array.bytes.size());
    return array;
}

/// One piece of a mesh.
struct Mesh {
    std::size_t pointCount = 0;
    std::size_t cellCount = 0;
    std::vector<Array> pointData, cellData;
    Array points;
    std::vector<Array> cells;
};

/// A box in a lattice of unit cells: where it begins and how many cells it has along each axis.
struct Box {
    std::array<std::size_t, 3> begin{0, 0, 0};
    std::array<std::size_t, 3> size;
};

/// Every lattice cell as a hexahedron; with two nodal scalars, a nodal vector and a cell-centred scalar, all smooth.
Mesh hexahedra(const Box& box);

/// Rows of lattice cells cut in turn into hexahedra, wedges, pyramids and tetrahedra, with the same arrays. A lattice
/// cell gives three cells on average.
Mesh mixedCells(const Box& box);

/// Hexahedra with `arrayCount` nodal scalars instead of the other nodal data.
Mesh manyArrays(const Box& box, std::size_t arrayCount);

} // namespace bench
