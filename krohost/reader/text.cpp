#include "krohost/reader/text.h"

#include "krohost/text/printable.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include <locale.h>

namespace krohost::reader {

namespace {

bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// No number is longer; a word that is ends the array.
constexpr std::size_t wordLimit = 65535;

/// Whether a number beyond the range of double is too small, which makes it zero, and not too large.
bool isTooSmall(const std::string& word) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    return std::abs(strtod_l(word.c_str(), nullptr, classic)) < 1;
}

/// Puts the number that a word stands for at `value`; false when it is no such number. "+5" is one, and so is "-0",
/// also where numbers are unsigned.
template <class Number>
bool convert(const std::string& word, std::byte* value) {
    const bool hasPlus = word.size() > 1 && word[0] == '+' && word[1] != '-';
    const bool isMinusZero =
        std::is_unsigned_v<Number> && word.size() > 1 && word[0] == '-' && word.find_first_not_of('0', 1) == word.npos;
    const char* end = word.data() + word.size();
    Number number{};
    const auto result = std::from_chars(word.data() + (hasPlus || isMinusZero ? 1 : 0), end, number);
    bool isNumber = result.ptr == end && result.ec == std::errc{};
    if (std::is_floating_point_v<Number> && result.ptr == end && result.ec == std::errc::result_out_of_range) {
        isNumber = isTooSmall(word);
        number = static_cast<Number>(word.front() == '-' ? -0.0 : 0.0);
    }
    std::memcpy(value, &number, sizeof number);
    return isNumber;
}

using Convert = bool (*)(const std::string&, std::byte*);

/// In the order of ElementType.
constexpr std::array<Convert, 10> conversions{convert<std::int8_t>,   convert<std::uint8_t>,  convert<std::int16_t>,
                                              convert<std::uint16_t>, convert<std::int32_t>,  convert<std::uint32_t>,
                                              convert<std::int64_t>,  convert<std::uint64_t>, convert<float>,
                                              convert<double>};

} // namespace

TextReader::TextReader(FileSource& source, ElementType type) : source_{source}, type_{type} {}

std::optional<char> TextReader::peek() {
    if (next_ == end_) {
        next_ = 0;
        end_ = source_.read(block_);
        if (end_ == 0)
            return std::nullopt;
    }
    return static_cast<char>(block_[next_]);
}

bool TextReader::takeWord() {
    word_.clear();
    for (std::optional<char> character = peek(); character && isBlank(*character); character = peek())
        ++next_;
    for (std::optional<char> character = peek(); character && !isBlank(*character); character = peek()) {
        const bool beginsNext = *character == '-' && !word_.empty() && isDigit(word_.back());
        if (beginsNext || word_.size() > wordLimit)
            break;
        word_ += *character;
        ++next_;
    }
    return !word_.empty();
}

std::size_t TextReader::read(std::span<std::byte> bytes) {
    const std::size_t valueByteCount = byteCount(type_);
    std::size_t count = 0;
    while (!fault_ && count + valueByteCount <= bytes.size() && takeWord()) {
        const bool isNumber =
            word_.size() <= wordLimit && conversions[static_cast<std::size_t>(type_)](word_, bytes.data() + count);
        if (isNumber)
            count += valueByteCount;
        else
            fault_ = Fault{.kind = FaultKind::foreignText,
                           .byte = source_.position() - (end_ - next_) - word_.size(),
                           .text = std::string(beginning(word_, 40))};
    }
    return count;
}

} // namespace krohost::reader
