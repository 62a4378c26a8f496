#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace veltra::dataio {

/// How far a piece of base64 text was decoded.
struct Base64Result {
    std::size_t charactersConsumed; ///< whole groups, with the blanks before and between them
    std::size_t bytesProduced;
    /// Where decoding stopped: the text's size when no whole group was left, else the index of the character that
    /// cannot be there, else charactersConsumed, before the group that had no room.
    std::size_t stopIndex;
};

/// Decodes whole groups of four characters (standard alphabet) until `text` holds no further whole group, the next
/// group's bytes have no room in `dst`, or a character is there that base64 text cannot have at that place; it and
/// the group it is in are not consumed. Blanks and line breaks may be anywhere. Padding ends a group and the
/// text goes on after it, since writers may encode an array's header and its data one after the other. Bytes of `dst`
/// after those produced may be overwritten. [any thread]
Base64Result decodeBase64(std::span<const std::uint8_t> text, std::span<std::uint8_t> dst);

/// A blank or line break, which base64 text may have anywhere.
bool isBase64Blank(std::uint8_t character);

} // namespace veltra::dataio
