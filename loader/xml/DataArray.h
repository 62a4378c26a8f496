#pragma once

#include "interface/kro.h"
#include "loader/xml/FileHeader.h"

#include <boost/filesystem/path.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace veltra::vtkfile {

/// How an array's values are stored in the file.
enum class DataArrayFormat : std::uint8_t {
    Ascii = 0,    ///< numbers as text between the tags
    Appended = 1, ///< in the file's AppendedData block
    Binary = 2    ///< base64 text between the tags
};

/// The element type of an array.
enum class DataArrayType : std::uint8_t { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

struct ElementType {
    DataArrayType type;
    std::string_view name;  ///< in the file
    std::uint8_t byteCount; ///< of one value
};
inline constexpr auto elementTypes = std::to_array<ElementType>({
    {DataArrayType::Int8, "Int8", 1},
    {DataArrayType::UInt8, "UInt8", 1},
    {DataArrayType::Int16, "Int16", 2},
    {DataArrayType::UInt16, "UInt16", 2},
    {DataArrayType::Int32, "Int32", 4},
    {DataArrayType::UInt32, "UInt32", 4},
    {DataArrayType::Int64, "Int64", 8},
    {DataArrayType::UInt64, "UInt64", 8},
    {DataArrayType::Float32, "Float32", 4},
    {DataArrayType::Float64, "Float64", 8},
});
inline constexpr std::size_t dataArrayTypeCount = elementTypes.size();

static_assert(
    [] {
        for (std::size_t index = 0; index < elementTypes.size(); ++index)
            if (elementTypes[index].type != static_cast<DataArrayType>(index))
                return false;
        return elementTypes.back().type == DataArrayType::Float64;
    }(),
    "each type has its row, in the order of the enumerators");

constexpr std::uint8_t elementByteCount(DataArrayType type) {
    return elementTypes[static_cast<std::size_t>(type)].byteCount;
}

/// One DataArray element: what its values are, and where and how they are stored in the file. Holds no values.
struct DataArray {
    std::shared_ptr<const boost::filesystem::path> file; ///< the file that holds the values
    std::shared_ptr<const std::string> name;             ///< empty when the file gives none
    std::uint64_t numberOfTuples = 0; ///< points of the piece, cells of the piece, or 1 for field data
    std::uint64_t offset = 0;         ///< position in the file where the array's text or bytes begin
    std::uint64_t length = 0;         ///< bytes of the text between the tags of an ascii array, else 0
    ValueLocation_e valueLocation = ValueLocation_None;
    std::uint16_t numberOfComponents = 0;
    DataArrayType type{};
    DataArrayFormat format{};
    Compressor compressor{};     ///< of binary data
    bool appendedRaw = false;    ///< the AppendedData block holds plain bytes, not base64 text
    bool bigEndian = false;      ///< byte order of binary data
    std::uint8_t headerSize = 0; ///< bytes of each header word of binary data, 4 or 8
};

} // namespace veltra::vtkfile
