#include "loader/sdk/lexical_cast.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>

#include <locale.h>

namespace veltra {

namespace {

/// Passes over a plus, which the standard conversion does not know; a second sign after it is left to be refused.
const char* withoutPlus(const char* begin, const char* end) {
    const bool hasPlus = end - begin > 1 && begin[0] == '+' && begin[1] != '-';
    return hasPlus ? begin + 1 : begin;
}

template <class T>
std::string shortestText(T value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

template <class T>
[[noreturn, gnu::cold]] void throwOutOfRange(std::string_view text) {
    using Limits = std::numeric_limits<T>;
    throw bad_numeric_cast(numberOutOfRange(text, shortestText(Limits::lowest()), shortestText(Limits::max())));
}

/// Whether a number beyond the range of double is too large instead of too small, whatever the process's locale.
bool isTooLarge(std::string_view text) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    return std::abs(strtod_l(std::string(text).c_str(), nullptr, classic)) > 1;
}

/// The rest of the conversion, for a number that is outside the range of T, and for text that is none.
template <class T>
[[gnu::cold]] T castUnusual(std::string_view text, std::from_chars_result result) {
    const bool isNumber = result.ptr == text.data() + text.size();
    if constexpr (std::is_floating_point_v<T>) {
        if (isNumber && result.ec == std::errc::result_out_of_range) {
            if (isTooLarge(text))
                throwOutOfRange<T>(text);
            return text.front() == '-' ? T{-0.0F} : T{0};
        }
        throw bad_lexical_cast(notANumber(text, "a number"));
    } else {
        if (isNumber && result.ec == std::errc::result_out_of_range)
            throwOutOfRange<T>(text);
        if (std::is_unsigned_v<T> && text.starts_with('-')) {
            T magnitude = 1;
            const char* end = text.data() + text.size();
            const auto [ptr, error] = std::from_chars(text.data() + 1, end, magnitude);
            if (ptr == end && error != std::errc::invalid_argument) {
                if (magnitude != 0)
                    throwOutOfRange<T>(text);
                return 0;
            }
        }
        throw bad_lexical_cast(notANumber(text, "a whole number"));
    }
}

} // namespace

template <class T>
T lexical_cast(std::string_view text) {
    const char* end = text.data() + text.size();
    T value{};
    const std::from_chars_result result = std::from_chars(withoutPlus(text.data(), end), end, value);
    if (result.ec == std::errc() && result.ptr == end) [[likely]]
        return value;
    return castUnusual<T>(text, result);
}

template std::int8_t lexical_cast<std::int8_t>(std::string_view);
template std::uint8_t lexical_cast<std::uint8_t>(std::string_view);
template std::int16_t lexical_cast<std::int16_t>(std::string_view);
template std::uint16_t lexical_cast<std::uint16_t>(std::string_view);
template std::int32_t lexical_cast<std::int32_t>(std::string_view);
template std::uint32_t lexical_cast<std::uint32_t>(std::string_view);
template std::int64_t lexical_cast<std::int64_t>(std::string_view);
template std::uint64_t lexical_cast<std::uint64_t>(std::string_view);
template float lexical_cast<float>(std::string_view);
template double lexical_cast<double>(std::string_view);

} // namespace veltra
