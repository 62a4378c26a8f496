#pragma once

#include "interface/kro.h"

#include <boost/filesystem/path.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace veltra::vtkfile {

/// How the values of an array stand in the file.
enum class DataArrayFormat : std::uint8_t {
    Ascii = 0,    ///< numbers as text between the tags
    Appended = 1, ///< in the file's AppendedData block
    Binary = 2    ///< base64 text between the tags
};

/// The element type of an array.
enum class DataArrayType : std::uint8_t { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };

inline constexpr std::size_t dataArrayTypeCount = 10;

/// Bytes of one value, by DataArrayType.
inline constexpr std::array<std::uint8_t, dataArrayTypeCount> elementByteCounts{1, 1, 2, 2, 4, 4, 8, 8, 4, 8};

constexpr std::uint8_t elementByteCount(DataArrayType type) {
    return elementByteCounts[static_cast<std::size_t>(type)];
}

/// One DataArray element: what its values are, and where and how they stand in the file. Holds no values.
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
    bool compressed = false;     ///< binary data are in zlib blocks
    bool appendedRaw = false;    ///< the AppendedData block holds plain bytes, not base64 text
    bool bigEndian = false;      ///< byte order of binary data
    std::uint8_t headerSize = 0; ///< bytes of each header word of binary data, 4 or 8
};

} // namespace veltra::vtkfile
