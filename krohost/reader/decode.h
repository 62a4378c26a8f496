/// The values of an array, decoded in small steps that are easy to follow: a second opinion on what a fast reader
/// reads.
#pragma once

#include "krohost/reader/Document.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace krohost::reader {

/// What can be wrong with an array's data; see Fault for what `expected` and `found` are.
enum class FaultKind : std::uint8_t {
    undecodable,     ///< an array of unknown type, format or compressor, or appended data that are not there
    unreadable,      ///< the file cannot be read
    outsideFile,     ///< begins at byte `expected` of a file of `found` bytes
    cutHeader,       ///< of `expected` bytes of header words the file holds `found`
    tableBeyondFile, ///< a table of `expected` blocks, where the file holds `found` bytes
    dataBeyondFile,  ///< header words claim `expected` bytes, the file holds `found`
    sizeOverflow,    ///< `expected` blocks of `found` bytes are more than any memory holds
    implausibleSize, ///< `found` compressed bytes cannot inflate to `expected`
    blockTooLarge,   ///< a block of `found` bytes that inflates to `expected`, which is more than is read at once
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
    std::string text = {};       ///< foreign text, shortened
    std::uint64_t valueByte = 0; ///< so many bytes of values come before what it concerns

    /// A sentence without its array: "block 3 at byte 912 inflates to 512 bytes where its table says 4096".
    std::string message() const;
    /// A word for programs: "damaged-block".
    std::string_view code() const;
};

/// The header words of a binary array, not those of an ascii one, which has none.
struct ArrayHeader {
    std::uint64_t byteCount = 0;  ///< of the values, as claimed
    std::uint64_t blockCount = 0; ///< 0 without a compressor
    std::uint64_t blockByteCount = 0;
    std::uint64_t lastBlockByteCount = 0; ///< never 0 where there are blocks
    std::optional<Fault> fault;           ///< the other members are not to be used then
};
ArrayHeader readHeader(const Document& document, const Array& array, const Poll& poll = {});

/// How many bytes of values came, and what was wrong with them, of which the first thousand things are listed.
struct Decoded {
    std::uint64_t byteCount = 0;
    std::vector<Fault> faults;
};

class ValueSource;

/// The values of an array, from its beginning to its end or to the first fault that leaves no way on. A damaged block
/// gives what could be inflated, then zeros. Memory is some 200 KiB whatever the file says; for LZMA 80 MiB and for LZ4
/// 128 MiB more at most, and never more than 256 times the file. One thread per reader. [any thread]
class ArrayReader {
public:
    /// Refers to the document and the array as long as it is used.
    ArrayReader(const Document& document, const Array& array, const Poll& poll);
    ~ArrayReader();
    ArrayReader(const ArrayReader&) = delete;
    ArrayReader& operator=(const ArrayReader&) = delete;

    /// Fills `bytes` with the whole values that come next, in this machine's byte order, and gives how many bytes these
    /// are: fewer than there is room for only at the end.
    std::size_t read(std::span<std::byte> bytes);

    /// What came so far. What is wrong with the last block is known when no more values come.
    const Decoded& decoded() const;

private:
    Poll poll_;
    std::unique_ptr<ValueSource> source_;
};

/// Takes some more of the values, in this machine's byte order; whole values, at most 64 KiB.
using Sink = std::function<void(std::span<const std::byte>)>;

/// Hands on all values of an array. [any thread]
Decoded decode(const Document& document, const Array& array, const Sink& sink, const Poll& poll = {});

} // namespace krohost::reader
