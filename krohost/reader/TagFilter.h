#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace krohost::reader {

/// Blanks what is between the tags of a document, which a loader passes over whatever it is, so that an XML library
/// sees nothing there that it would refuse. Every byte keeps its place, and so do ends of lines and `_`; columns count
/// bytes there. A comment, an instruction or a CDATA section becomes an instruction of five bytes and blanks. Text
/// before the root element and all from a document type on stay as they are.
class TagFilter {
public:
    /// Takes the next bytes of the document, and gives how many of these are settled; the others, nine at most, are to
    /// come again with what follows them.
    std::size_t filter(std::span<char> bytes, bool isLast);

    /// Whether the next bytes are nothing but text within the root element, so that these need not be taken.
    bool isText(std::string_view bytes) const {
        return hasRoot_ && state_ == State::text && bytes.find('<') == bytes.npos;
    }

private:
    enum class State { text, tag, passage, through };

    /// Each takes bytes from `next` on and gives where the next ones begin.
    std::size_t passOverText(std::span<char> bytes, std::size_t next) const;
    std::size_t passTag(std::span<char> bytes, std::size_t next);
    std::size_t passOverPassage(std::span<char> bytes, std::size_t next);
    std::size_t open(std::span<char> bytes, std::size_t next);
    std::size_t openPassage(std::span<char> bytes, std::size_t next, std::size_t openingLength);
    bool endsPassage(char byte);

    State state_ = State::text;
    bool isAtStart_ = true;
    bool hasRoot_ = false;
    char quote_ = 0; // within which a tag is
    char mark_ = 0;  // of which some are before the `>` that ends a passage
    std::size_t neededMarkCount_ = 0, markCount_ = 0;
};

} // namespace krohost::reader
