#pragma once

#include "tests/support/Mesh.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace test {

enum class Format : std::uint8_t { Ascii, Base64, AppendedRaw, AppendedBase64 };

/// How a file writes its arrays.
struct Encoding {
    Format format = Format::Ascii;
    bool compressed = false;
    bool bigEndian = false;
    bool header64 = false;
    /// Bytes of a full block before compression.
    std::size_t blockByteCount = 32768;
    /// Base64 text: header and data in one run, instead of one after the other, each with its own padding.
    bool inOneRun = false;
    /// Base64 text: characters between line breaks; 0 for none.
    std::size_t lineLength = 0;

    bool appended() const { return format == Format::AppendedRaw || format == Format::AppendedBase64; }
    /// For messages: "appended raw, zlib in blocks of 32768, big-endian, UInt64".
    std::string name() const;
};

/// Every way to write an array: ascii, and each binary form with and without compression, in either byte order, with
/// either header width.
std::vector<Encoding> allEncodings();

/// Header words to write in place of the true ones, by their position in the array's header.
using HeaderWords = std::map<std::size_t, std::uint64_t>;

std::string base64(std::string_view bytes);

/// One value as the bytes of a file.
template <class T>
std::string valueBytes(T value, bool bigEndian) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    if (bigEndian != (std::endian::native == std::endian::big))
        std::ranges::reverse(bytes);
    return bytes;
}

/// The array's values as decimal text that reads back to the same values.
std::string asciiText(const Array& array);

/// The array as it is in a file with a binary encoding: header words, then values or blocks, as text where the
/// encoding is base64.
std::string encodedArray(const Array& array, const Encoding& encoding, const HeaderWords& replacedWords = {});

} // namespace test
