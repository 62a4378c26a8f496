#include "krohost/reader/decode.h"

#include <fmt/format.h>

#include <array>

namespace krohost::reader {

namespace {

struct Row {
    FaultKind kind;
    std::string_view code;
    std::string_view text; ///< of fmt; 0: byte, 1: expected, 2: found, 3: foreign text
};

constexpr std::array<Row, 14> rows{{
    {FaultKind::undecodable, "undecodable", "cannot be decoded"},
    {FaultKind::unreadable, "unreadable", "cannot be read at byte {0}"},
    {FaultKind::outsideFile, "outside-file", "begins at byte {1}, but the file has {2} bytes"},
    {FaultKind::cutHeader, "cut-header", "has header words of {1} bytes at byte {0}, where the file holds {2}"},
    {FaultKind::tableBeyondFile, "table-beyond-file",
     "claims {1} compressed blocks at byte {0}, but the file holds no more than {2} bytes for it"},
    {FaultKind::dataBeyondFile, "data-beyond-file",
     "claims {1} bytes of data at byte {0}, but the file holds no more than {2} for it"},
    {FaultKind::sizeOverflow, "size-overflow",
     "claims {1} blocks of {2} bytes at byte {0}, more than any memory holds"},
    {FaultKind::implausibleSize, "implausible-size",
     "claims that {2} compressed bytes at byte {0} inflate to {1}, more than they can"},
    {FaultKind::blockTooLarge, "block-too-large",
     "of {2} bytes at byte {0}, {1} when inflated, is larger than the blocks that are read"},
    {FaultKind::damagedBlock, "damaged-block",
     "at byte {0} is damaged: {2} of {1} bytes inflate before the damage shows"},
    {FaultKind::wrongBlockSize, "wrong-block-size", "at byte {0} inflates to {2} bytes, where {1} are announced"},
    {FaultKind::foreignText, "foreign-text", "holds \"{3}\" at byte {0}"},
    {FaultKind::cutData, "cut-data", "ends at byte {0} with {2} of {1} bytes"},
    {FaultKind::partialValue, "partial-value", "ends at byte {0} within a value: {2} of {1} bytes"},
}};

constexpr bool isInOrder() {
    for (std::size_t index = 0; index < rows.size(); ++index)
        if (static_cast<std::size_t>(rows[index].kind) != index)
            return false;
    return true;
}
static_assert(isInOrder());

} // namespace

std::string Fault::message() const {
    const std::string_view sentence = rows[static_cast<std::size_t>(kind)].text;
    return (block ? fmt::format("block {} ", *block) : std::string()) +
           fmt::format(fmt::runtime(sentence), byte, expected, found, text);
}

std::string_view Fault::code() const {
    return rows[static_cast<std::size_t>(kind)].code;
}

} // namespace krohost::reader
