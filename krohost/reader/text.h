#pragma once

#include "krohost/reader/ByteSource.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace krohost::reader {

/// The numbers of an ascii array, until the end or a word that is no number of the type. White space separates words,
/// and a minus after a digit begins the next one.
class TextReader {
public:
    /// Refers to the source as long as it is used.
    TextReader(FileSource& source, ElementType type);

    /// Fills `bytes` with whole numbers; gives how many bytes these are, fewer than there is room for only at the end.
    std::size_t read(std::span<std::byte> bytes);

    /// The word that is no number, once it was come upon.
    const std::optional<Fault>& fault() const { return fault_; }

private:
    /// A byte of the text, nothing at its end. It is not taken.
    std::optional<char> peek();
    /// Puts the next word into `word_`; false when there is none.
    bool takeWord();

    FileSource& source_;
    ElementType type_;
    std::array<std::byte, 65536> block_;
    std::size_t next_ = 0, end_ = 0; // in the block
    std::string word_;
    std::optional<Fault> fault_;
};

} // namespace krohost::reader
