// Text of numbers, of the type that the first byte tells, against splitting it character by character and the C
// library's conversions.

#include "fuzz/fuzz.h"

#include "loader/streams/AsciiTokenizer.h"
#include "loader/streams/elementTypes.h"

#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/exceptions.h"

#include <strings.h>

#include <cctype>
#include <cerrno>
#include <cmath>
#include <limits>

namespace {

using namespace veltra::vtkfile;

enum class Reading { number, outOfRange, noNumber };

/// The token that begins the text, taken from it.
std::string takeToken(std::string_view& text) {
    constexpr std::string_view blanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    std::string token;
    while (!text.empty() && blanks.find(text[0]) == blanks.npos) {
        if (text[0] == '-' && !token.empty() && token.back() >= '0' && token.back() <= '9')
            break;
        token += text[0];
        text.remove_prefix(1);
    }
    return token;
}

/// Takes the digits that begin the text; how many there were.
std::size_t takeDigits(std::string_view& text) {
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count;
}

bool takeOneOf(std::string_view& text, std::string_view characters) {
    const bool takes = !text.empty() && characters.find(text[0]) != characters.npos;
    text.remove_prefix(takes ? 1 : 0);
    return takes;
}

bool isSameWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() && strncasecmp(text.data(), word.data(), word.size()) == 0;
}

bool isReal(std::string_view token) {
    takeOneOf(token, "+-");
    if (isSameWord(token.substr(0, token.find('(')), "nan")) {
        const std::string_view rest = token.substr(3);
        const auto isWordly = [](char character) { return std::isalnum(character) || character == '_'; };
        return rest.empty() || (rest.size() > 1 && rest.back() == ')' &&
                                std::ranges::all_of(rest.substr(1, rest.size() - 2), isWordly));
    }
    if (isSameWord(token, "inf") || isSameWord(token, "infinity"))
        return true;
    std::size_t digitCount = takeDigits(token);
    digitCount += takeOneOf(token, ".") ? takeDigits(token) : 0;
    if (digitCount == 0)
        return false;
    if (!takeOneOf(token, "eE"))
        return token.empty();
    takeOneOf(token, "+-");
    return takeDigits(token) > 0 && token.empty();
}

template <class T>
Reading readSlowly(const std::string& token, T& value) {
    if constexpr (std::is_floating_point_v<T>) {
        if (!isReal(token))
            return Reading::noNumber;
        if constexpr (std::is_same_v<T, float>)
            value = std::strtof(token.c_str(), nullptr);
        else
            value = std::strtod(token.c_str(), nullptr);
        const bool isNamed = token.find_first_of("nN") != token.npos;
        return std::isinf(value) && !isNamed ? Reading::outOfRange : Reading::number;
    } else {
        const std::size_t first = token.starts_with('-') || token.starts_with('+') ? 1 : 0;
        if (first == token.size() || token.find_first_not_of("0123456789", first) != token.npos)
            return Reading::noNumber;
        // Digits beyond 20 after zeros are too many for any type.
        const std::size_t digits = std::min(token.find_first_not_of('0', first), token.size());
        const std::string magnitudeText = token.substr(digits);
        errno = 0;
        const std::uint64_t magnitude = std::strtoull(("0" + magnitudeText).c_str(), nullptr, 10);
        __extension__ using Wide = __int128;
        const Wide wide = token[0] == '-' ? -static_cast<Wide>(magnitude) : static_cast<Wide>(magnitude);
        using Limits = std::numeric_limits<T>;
        if (errno == ERANGE || wide < Limits::lowest() || wide > static_cast<Wide>(Limits::max()))
            return Reading::outOfRange;
        value = static_cast<T>(wide);
        return Reading::number;
    }
}

/// Same bits, or both not a number.
template <class T>
bool isSame(T left, T right) {
    return left != left ? right != right : std::memcmp(&left, &right, sizeof left) == 0;
}

template <class T>
std::string readAll(std::string_view text) {
    using veltra::dataio::ByteInputStream;
    ByteInputStream stream(std::make_shared<ByteInputStream::Bytes>(text.begin(), text.end()));
    AsciiTokenizer tokenizer(stream);
    std::string outcome = "numbers";
    for (;;) {
        const std::string token = takeToken(text);
        fuzz::require(tokenizer.atEnd() == token.empty(), "the text ends where no token is left");
        if (token.empty())
            return outcome;
        T expected{};
        const Reading reading = readSlowly(token, expected);
        try {
            const T value = tokenizer.next<T>();
            fuzz::require(reading == Reading::number && isSame(value, expected), "a number is read as it is");
        } catch (const veltra::bad_numeric_cast&) {
            fuzz::require(reading == Reading::outOfRange, "what fits is no number out of range");
            outcome = "out of range";
        } catch (const veltra::bad_lexical_cast&) {
            fuzz::require(reading == Reading::noNumber, "a number is taken for one");
            outcome = "not a number";
        }
    }
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    const auto type = static_cast<DataArrayType>(input.byte() % dataArrayTypeCount);
    return visitElementType(type, [&]<class T>(std::type_identity<T>) { return readAll<T>(asText(input.rest())); });
}
