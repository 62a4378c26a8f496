#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace veltra::vtkfile {

/// Version of the file format.
struct FileVersion {
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    std::uint16_t patch = 0;

    auto operator<=>(const FileVersion&) const = default;
};

/// How binary data are compressed.
enum class Compressor : std::uint8_t {
    None,
    ZLib ///< in blocks, after a table of their sizes
};

/// What the VTKFile element says of the whole file.
struct FileHeader {
    std::string title;
    std::string type; ///< the kind of dataset
    FileVersion version;
    bool bigEndian = false;
    Compressor compressor = Compressor::None;
    std::uint8_t headerSize = 4; ///< bytes of a header word of binary data, 4 or 8
    bool isParallel = false;     ///< a collection of pieces in other files
    bool isMultiBlock = false;   ///< a collection of data sets in other files
};

} // namespace veltra::vtkfile
