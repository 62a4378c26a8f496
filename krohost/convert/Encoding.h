#pragma once

#include <cstddef>
#include <cstdint>

namespace krohost::convert {

enum class Format : std::uint8_t { ascii, base64, raw, appendedBase64 };

/// How a VTK XML file holds the values of arrays. The default is the fastest to load of the small ones.
struct Encoding {
    Format format = Format::raw;
    bool isCompressed = true; ///< with zlib; text never is
    bool isBigEndian = false;
    std::size_t headerWordByteCount = 8; ///< or 4

    bool isAppended() const { return format == Format::raw || format == Format::appendedBase64; }
    bool hasZlib() const { return isCompressed && format != Format::ascii; }
};

} // namespace krohost::convert
