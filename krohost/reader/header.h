/// The header words of an array, and the way to its bytes.
#pragma once

#include "krohost/reader/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace krohost::reader {

/// Why an array cannot even be looked for in its file.
std::optional<Fault> placeFault(const Document& document, const Array& array);

/// The bytes of a binary array that has a place, header words first.
std::unique_ptr<ByteSource> openSource(const Document& document, const Array& array, const Poll& poll);

/// Reads the header of a binary array from its source, which is then at the data.
ArrayHeader readHeader(const Document& document, ByteSource& source);

/// Takes header words from a source, to which it refers.
class WordReader {
public:
    WordReader(const Document& document, ByteSource& source)
        : source_{source}, wordByteCount_{document.headerWordByteCount}, isBigEndian_{document.isBigEndian} {}

    std::uint64_t next();

    /// Hands `use` as many words as there are of `wordCount`.
    template <class Use>
    void forEach(std::uint64_t wordCount, const Use& use) {
        for (; wordCount > 0 && !fault_; --wordCount) {
            if (next_ == end_)
                fill(wordCount);
            if (!fault_)
                use(takeReady());
        }
    }

    /// The first word that is not there.
    const std::optional<Fault>& fault() const { return fault_; }

private:
    void fill(std::uint64_t wordCount);
    std::uint64_t takeReady();

    ByteSource& source_;
    std::size_t wordByteCount_;
    bool isBigEndian_;
    std::array<std::byte, 4096> bytes_; // of words, read ahead
    std::size_t next_ = 0, end_ = 0;
    std::optional<Fault> fault_;
};

} // namespace krohost::reader
