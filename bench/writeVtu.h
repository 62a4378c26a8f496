#pragma once

#include "bench/Mesh.h"

#include <array>
#include <filesystem>
#include <string>

namespace bench {

enum class Format { ascii, base64, appendedRaw, appendedBase64 };

/// How a file holds its arrays. Compressed data are zlib blocks of 32768 bytes at level 5.
struct Encoding {
    const char* name;
    Format format;
    bool isCompressed = false;
    bool isBigEndian = false;
};

inline constexpr Encoding raw{"raw", Format::appendedRaw};
inline constexpr Encoding rawZlib{"raw-zlib", Format::appendedRaw, true};

inline constexpr std::array encodings{Encoding{"ascii", Format::ascii},
                                      Encoding{"base64", Format::base64},
                                      Encoding{"base64-zlib", Format::base64, true},
                                      raw,
                                      Encoding{"raw-bigendian", Format::appendedRaw, false, true},
                                      rawZlib,
                                      Encoding{"appended-base64", Format::appendedBase64},
                                      Encoding{"appended-base64-zlib", Format::appendedBase64, true}};

/// Writes a file of one piece, laid out as the usual writer of the format does. Header words have 4 bytes unless an
/// array needs 8. Throws std::ios_base::failure.
void writeVtu(const std::filesystem::path& path, const Mesh& mesh, const Encoding& encoding);

/// Writes a file, which gets its name last: a file that exists is complete.
void writeText(const std::filesystem::path& path, const std::string& text);

} // namespace bench
