/// The values of an array, decoded in small steps that are easy to follow: a second opinion on what a fast reader
/// reads.
#pragma once

#include "krohost/vtu/Document.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace krohost::vtu {

/// What can be wrong with an array's data; see Fault for what `expected` and `found` are.
enum class FaultKind : std::uint8_t {
    undecodable,     ///< an array of unknown type, format or compressor, or appended data that are not there
    unreadable,      ///< the file cannot be read
    outsideFile,     ///< begins at byte `expected` of a file of `found` bytes
    cutHeader,       ///< of `expected` bytes of header words the file holds `found`
    tableBeyondFile, ///< a table of `expected` blocks, where the file holds `found` bytes
    dataBeyondFile,  ///< header words claim `expected` bytes, the file holds `found`
    sizeOverflow,    ///< `expected` blocks of `found` bytes are more than any memory holds
    implausibleSize, ///< a block of `found` bytes cannot inflate to `expected`
    damagedBlock,    ///< a block of `expected` bytes inflates to `found` and then fails
    wrongBlockSize,  ///< a block of `expected` bytes inflates to `found`, or to more where that is larger
    foreignText,     ///< a character that is not base64, or a word that is no number of the type
    cutData,         ///< of `expected` bytes there are `found`
    partialValue,    ///< the bytes are no whole number of values of `expected` bytes; `found` are left over
};

struct Fault {
    FaultKind kind{};
    std::optional<std::uint64_t> block = {}; ///< from 0
    std::uint64_t byte = 0;                  ///< of the file
    std::uint64_t expected = 0;
    std::uint64_t found = 0;
    std::string text = {}; ///< foreign text, shortened

    /// A sentence without its array: "block 3 at byte 912 inflates to 512 bytes where its table says 4096".
    std::string message() const;
    /// A word for programs: "damaged-block".
    std::string_view code() const;
};

/// The header words of a binary array, not those of an ascii one, which has none.
struct ArrayHeader {
    std::uint64_t byteCount = 0; ///< of the values, as claimed
    std::uint64_t blockByteCount = 0;
    std::uint64_t lastBlockByteCount = 0;                 ///< never 0 where there are blocks
    std::vector<std::uint64_t> blockCompressedByteCounts; ///< empty without a compressor
    std::uint64_t firstBlock = 0;                         ///< where it begins in the file, for raw data
    std::optional<Fault> fault;                           ///< the other members are not to be used then
};
ArrayHeader readHeader(const Document& document, const Array& array);

/// How many bytes of values came, and what was wrong with them, of which the first thousand things are listed.
struct Decoded {
    std::uint64_t byteCount = 0;
    std::vector<Fault> faults;
};

/// Takes some more of the values, in this machine's byte order; whole values, at most 64 KiB.
using Sink = std::function<void(std::span<const std::byte>)>;

/// Decodes an array from its beginning to its end or to the first fault that leaves no way on. A damaged block gives
/// what could be inflated, then zeros. Memory is that of the block table and, for LZ4, of one block. [any thread]
Decoded decode(const Document& document, const Array& array, const Sink& sink);

} // namespace krohost::vtu
