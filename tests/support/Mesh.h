#pragma once

#include "tests/support/ElementType.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace test {

/// An array as a mesh has it: components of a tuple adjacent. The values are converted to `type` when they are written.
struct Array {
    std::string name;
    ElementType type = ElementType::Float32;
    int componentCount = 1;
    std::variant<std::vector<std::int64_t>, std::vector<double>> values;
};

inline Array integers(std::string name, ElementType type, std::vector<std::int64_t> values, int componentCount = 1) {
    return {std::move(name), type, componentCount, std::move(values)};
}
inline Array reals(std::string name, ElementType type, std::vector<double> values, int componentCount = 1) {
    return {std::move(name), type, componentCount, std::move(values)};
}

/// An array of the type with values that differ from place to place and use the type's whole range: negative ones,
/// fractions, and integers that lose their upper half when they are narrowed.
Array variedValues(const std::string& name, ElementType type, std::size_t tupleCount, int componentCount = 1);

/// The array's values as the file holds them.
template <class T>
std::vector<T> valuesAs(const Array& array) {
    std::vector<T> converted;
    const auto convert = [&](const auto& list) {
        for (auto value : list)
            converted.push_back(static_cast<T>(value));
    };
    std::visit(convert, array.values);
    return converted;
}

/// A cell: the file format's code for its type and its nodes, counted from 0 within the piece, in the file's order.
struct Cell {
    int type = 0;
    std::vector<std::int64_t> nodes;
};

/// One piece of a mesh. `points` has one to three components.
struct MeshPiece {
    Array points;
    std::vector<Cell> cells;
    std::vector<Array> pointData, cellData;
    std::array<ElementType, 3> cellArrayTypes{ElementType::Int64, ElementType::Int64, ElementType::UInt8};

    std::size_t pointCount() const {
        return valuesAs<double>(points).size() / static_cast<std::size_t>(points.componentCount);
    }

    /// Copies of the piece with one more array.
    MeshPiece withPointData(Array array) const;
    MeshPiece withCellData(Array array) const;

    /// "connectivity", "offsets" and "types".
    std::vector<Array> cellArrays() const;
};

} // namespace test
