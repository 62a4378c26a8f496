#include "loader/sdk/utf8.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace veltra {

namespace {

bool isContinuation(char character) {
    return (static_cast<std::uint8_t>(character) & 0xC0) == 0x80;
}

/// How many bytes the first character of the text has; 0 when the text does not begin with one.
std::size_t characterByteCount(std::string_view text) {
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    const std::uint8_t lead = byteAt(0);
    if (lead < 0x80)
        return 1;
    const std::size_t count = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < count ||
        !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(count), isContinuation))
        return 0;
    const std::uint8_t second = byteAt(1);
    const bool isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool isSurrogate = lead == 0xED && second >= 0xA0;
    const bool isTooLarge = lead == 0xF4 && second >= 0x90;
    return isOverlong || isSurrogate || isTooLarge ? 0 : count;
}

} // namespace

std::string validUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const std::size_t count = characterByteCount(text);
        valid += count > 0 ? text.substr(0, count) : "\uFFFD";
        text.remove_prefix(std::max<std::size_t>(count, 1));
    }
    return valid;
}

std::string_view utf8Beginning(std::string_view text, std::size_t byteLimit) {
    if (text.size() <= byteLimit)
        return text;
    std::size_t end = byteLimit;
    while (end > 0 && byteLimit - end < 3 && isContinuation(text[end]))
        --end;
    return text.substr(0, end);
}

} // namespace veltra
