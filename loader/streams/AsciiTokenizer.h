#pragma once

#include "loader/sdk/InputStreamInterface.h"
#include "loader/sdk/lexical_cast.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <memory>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace veltra::vtkfile {

/// Takes numbers from the text of a stream, one token after the other.
///
/// White space separates tokens, and so does a minus sign after a digit, which begins the next one: "7-8" is 7 and -8,
/// "1.5e-3" is one number. The stream is read ahead.
class AsciiTokenizer {
public:
    /// A token of so many characters, and any longer one, is not a number, whatever they are.
    static constexpr std::size_t tokenLimit = 0x10000;

    explicit AsciiTokenizer(dataio::InputStreamInterface& stream) : stream_(stream) {}

    /// The next number. Throws bad_lexical_cast for a token that is none, which the end of the text is as well, and
    /// bad_numeric_cast for one that does not fit.
    template <class T>
    T next() {
        skipWhitespace();
        // A number that ends within the buffer needs no second look at its characters.
        T value;
        const auto [end, error] = std::from_chars(begin_, end_, value);
        if (error == std::errc() && end != end_ && isSeparator(end)) {
            begin_ = end;
            return value;
        }
        return lexical_cast<T>(takeToken());
    }

    /// Passes over the next number. Throws as next() does.
    template <class T>
    void skip() {
        skipWhitespace();
        if (const char* end = endOfPlainNumber<T>())
            begin_ = end;
        else
            next<T>();
    }

    /// Whether nothing but white space is left.
    bool atEnd() {
        skipWhitespace();
        return begin_ == end_;
    }

private:
    static bool isWhitespace(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }
    static bool isDigit(char character) { return character >= '0' && character <= '9'; }

    /// Whether a token ends before `character`, which is not its first.
    static bool isSeparator(const char* character) {
        return isWhitespace(*character) || (*character == '-' && isDigit(character[-1]));
    }

    void skipWhitespace() {
        do {
            while (isWhitespace(*begin_))
                ++begin_;
        } while (begin_ == end_ && fill());
    }

    /// The end of a number that has a simple form and few enough digits to fit T whatever they are; null where that
    /// takes a closer look.
    template <class T>
    const char* endOfPlainNumber() const {
        const char* at = begin_ + (*begin_ == '-' && std::is_signed_v<T> ? 1 : 0);
        const char* firstDigit = at;
        while (isDigit(*at))
            ++at;
        if (at == firstDigit || at - firstDigit > std::numeric_limits<T>::digits10)
            return nullptr;
        if (std::is_floating_point_v<T> && *at == '.')
            do
                ++at;
            while (isDigit(*at));
        if (std::is_floating_point_v<T> && *at == 'e') {
            ++at;
            at += *at == '-' || *at == '+' ? 1 : 0;
            if (*at < '0' || *at > '2' || !isDigit(at[1])) // two digits, below 30
                return nullptr;
            at += 2;
        }
        return isSeparator(at) ? at : nullptr;
    }

    bool fill();
    std::string_view takeToken();

    dataio::InputStreamInterface& stream_;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    const char* begin_ = "";   // the text not yet taken
    const char* end_ = begin_; // a zero is there, which is neither white space nor of a number
};

} // namespace veltra::vtkfile
