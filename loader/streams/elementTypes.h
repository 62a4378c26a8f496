#pragma once

#include "loader/xml/DataArray.h"

#include <cstdint>
#include <type_traits>
#include <utility>

namespace veltra::vtkfile {

/// Calls `visitor` with a value-initialised std::type_identity of the C++ type that an array's elements have.
template <class Visitor>
decltype(auto) visitElementType(DataArrayType type, Visitor&& visitor) {
    switch (type) {
    case DataArrayType::Int8:
        return visitor(std::type_identity<std::int8_t>());
    case DataArrayType::UInt8:
        return visitor(std::type_identity<std::uint8_t>());
    case DataArrayType::Int16:
        return visitor(std::type_identity<std::int16_t>());
    case DataArrayType::UInt16:
        return visitor(std::type_identity<std::uint16_t>());
    case DataArrayType::Int32:
        return visitor(std::type_identity<std::int32_t>());
    case DataArrayType::UInt32:
        return visitor(std::type_identity<std::uint32_t>());
    case DataArrayType::Int64:
        return visitor(std::type_identity<std::int64_t>());
    case DataArrayType::UInt64:
        return visitor(std::type_identity<std::uint64_t>());
    case DataArrayType::Float32:
        return visitor(std::type_identity<float>());
    case DataArrayType::Float64:
        break;
    }
    return visitor(std::type_identity<double>());
}

} // namespace veltra::vtkfile
