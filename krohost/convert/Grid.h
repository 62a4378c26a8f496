/// What is about to be written, as arrays that come in pieces: no writer holds a whole one.
#pragma once

#include "krohost/reader/ElementType.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace krohost::convert {

using reader::ElementType;

/// Takes some more of an array: whole values, in this machine's byte order.
using Sink = std::function<void(std::span<const std::byte>)>;

/// Tuples of values and the way to them. `produce` hands all values to the sink, tuple by tuple, each time it is
/// called.
struct Array {
    std::string name;
    ElementType type{};
    std::uint64_t componentCount = 1;
    std::uint64_t tupleCount = 0;
    std::function<void(const Sink&)> produce;

    std::uint64_t valueCount() const { return componentCount * tupleCount; }
};

/// An unstructured grid as the VTK file formats have it. Points have three components, node numbers and offsets are
/// 64-bit, cell types 8-bit.
struct Grid {
    std::string name;
    std::uint64_t pointCount = 0;
    std::uint64_t cellCount = 0;
    Array points;
    Array connectivity;
    Array offsets; ///< one per cell: where its nodes end
    Array types;
    std::vector<Array> pointData;
    std::vector<Array> cellData;
    std::vector<Array> fieldData;
    bool areCellDataFirst = false; ///< which keeps the order of the variables
};

/// One value, known beforehand.
template <class Value>
Array singleValue(std::string name, ElementType type, Value value) {
    return {std::move(name), type, 1, 1, [value](const Sink& sink) { sink(std::as_bytes(std::span{&value, 1})); }};
}

} // namespace krohost::convert
