#pragma once

#include "krohost/reader/Document.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace krohost::reader {

/// Text that the XML library does not get, which it would take most of the time for.
class SkippedText {
public:
    /// Whether text is skipped: not where ends of lines are in it, or before it, that a library counts by what follows
    /// them.
    bool takes(std::string_view text) const { return text.find('\r') == text.npos && !isAfterReturn_; }
    /// Bytes that the library gets.
    void pass(std::string_view bytes) { isAfterReturn_ = bytes.ends_with('\r'); }

    /// `end` is where the library's bytes end.
    void add(std::string_view text, const Position& end) {
        const auto byteCount = static_cast<std::int64_t>(text.size());
        byteCount_ += text.size();
        if (const std::size_t firstEnd = text.find('\n'); firstEnd == text.npos) {
            columnShift_ = (end.line == line_ ? columnShift_ : 0) + byteCount;
        } else {
            lineCount_ += static_cast<std::uint64_t>(
                std::count(text.begin() + static_cast<std::ptrdiff_t>(firstEnd), text.end(), '\n'));
            columnShift_ =
                byteCount - static_cast<std::int64_t>(text.rfind('\n')) - static_cast<std::int64_t>(end.column);
        }
        line_ = end.line;
    }

    /// From a place in the library's bytes to that in the file.
    Position inFile(Position place) const {
        if (place.line == line_)
            place.column = static_cast<std::uint64_t>(static_cast<std::int64_t>(place.column) + columnShift_);
        return {place.byte + byteCount_, place.line + lineCount_, place.column};
    }

private:
    std::uint64_t byteCount_ = 0, lineCount_ = 0;
    std::int64_t columnShift_ = 0;
    bool isAfterReturn_ = false;
    std::uint64_t line_ = 0; // that of the library on which columns are shifted
};

} // namespace krohost::reader
