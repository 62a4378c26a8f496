#pragma once

#include "tests/support/ElementType.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace test {

/// An array as a mesh has it: components of a tuple adjacent. The values are converted to `type` when they are written.
struct Array {
    std::string name;
    ElementType type = ElementType::Float32;
    int componentCount = 1;
    std::variant<std::vector<std::int64_t>, std::vector<double>> values;

    std::size_t valueCount() const {
        return std::visit([](const auto& list) { return list.size(); }, values);
    }
};

Array integers(std::string name, ElementType type, std::vector<std::int64_t> values, int componentCount = 1);
Array reals(std::string name, ElementType type, std::vector<double> values, int componentCount = 1);

/// An array of the type with values that differ from place to place and use the type's whole range: negative ones,
/// fractions, and integers that lose their upper half when they are narrowed.
Array variedValues(std::string name, ElementType type, std::size_t tupleCount, int componentCount = 1);

/// The array's values as the file holds them.
template <class T>
std::vector<T> valuesAs(const Array& array) {
    std::vector<T> converted;
    std::visit(
        [&](const auto& list) {
            for (auto value : list)
                converted.push_back(static_cast<T>(value));
        },
        array.values);
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
    std::vector<Array> pointData;
    std::vector<Array> cellData;
    std::string name;
    ElementType connectivityType = ElementType::Int64;
    ElementType offsetsType = ElementType::Int64;
    ElementType typesType = ElementType::UInt8;

    std::size_t pointCount() const { return points.valueCount() / static_cast<std::size_t>(points.componentCount); }

    /// Copies of the piece with one more array.
    MeshPiece withPointData(Array array) const;
    MeshPiece withCellData(Array array) const;

    Array connectivity() const;
    Array offsets() const;
    Array types() const;
};

} // namespace test
