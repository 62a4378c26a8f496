#include "krohost/vtu/text.h"

#include "krohost/text/printable.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

namespace krohost::vtu {

namespace {

using Bytes = std::function<void(std::span<const std::byte>)>;

bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

using Value = std::array<std::byte, 8>;

/// Puts the number that a word stands for into `value`; gives its bytes, or 0 when it is no such number.
template <class Number>
std::size_t convert(const std::string& word, Value& value) {
    const char* end = word.data() + word.size();
    std::conditional_t<std::is_floating_point_v<Number>, double, Number> parsed{};
    const auto result = std::from_chars(word.data() + (word.starts_with('+') ? 1 : 0), end, parsed);
    bool isNumber = result.ptr == end && result.ec == std::errc{};
    if constexpr (std::is_floating_point_v<Number>) {
        if (result.ptr == end && result.ec == std::errc::result_out_of_range) {
            parsed = std::strtod(word.c_str(), nullptr); // what is too small is as good as 0
            isNumber = std::abs(parsed) < 1;
        }
        isNumber = isNumber && !(std::isfinite(parsed) && std::abs(parsed) > std::numeric_limits<Number>::max());
    }
    const auto number = static_cast<Number>(parsed);
    std::memcpy(value.data(), &number, sizeof number);
    return isNumber ? sizeof number : 0;
}

using Convert = std::size_t (*)(const std::string&, Value&);

/// In the order of ElementType.
constexpr std::array<Convert, 10> conversions{convert<std::int8_t>,   convert<std::uint8_t>,  convert<std::int16_t>,
                                              convert<std::uint16_t>, convert<std::int32_t>,  convert<std::uint32_t>,
                                              convert<std::int64_t>,  convert<std::uint64_t>, convert<float>,
                                              convert<double>};

} // namespace

std::optional<Fault> decodeText(FileSource& source, ElementType type, const Bytes& sink) {
    constexpr std::size_t wordLimit = 400; // the digits of the largest double
    const Convert toValue = conversions[static_cast<std::size_t>(type)];
    Value value{};
    std::array<std::byte, 65536> block;
    std::string word;
    const auto finishWord = [&](std::uint64_t end) -> std::optional<Fault> {
        if (word.empty())
            return std::nullopt;
        const std::size_t byteCount = toValue(word, value);
        if (byteCount == 0)
            return Fault{
                .kind = FaultKind::foreignText, .byte = end - word.size(), .text = std::string(beginning(word, 40))};
        sink(std::span{value}.first(byteCount));
        word.clear();
        return std::nullopt;
    };
    while (const std::size_t count = source.read(block)) {
        for (std::size_t index = 0; index < count; ++index) {
            const char character = static_cast<char>(block[index]);
            const bool isWhole = isBlank(character) || word.size() >= wordLimit;
            if (isWhole)
                if (auto fault = finishWord(source.position() - count + index))
                    return fault;
            if (!isBlank(character))
                word += character;
        }
    }
    return finishWord(source.position());
}

} // namespace krohost::vtu
