#pragma once

#include "host/InputStreamInterface.h"
#include "host/lexical_cast.h"

#include <charconv>
#include <cstddef>
#include <memory>
#include <string_view>
#include <system_error>

namespace veltra::vtkfile {

/// Takes numbers from the text of a stream, one token after the other.
///
/// White space separates tokens, and so does a minus sign behind a digit, which begins the next one: "7-8" is 7 and -8,
/// "1.5e-3" is one number. A token longer than the buffer is not a number. The stream is read ahead.
class AsciiTokenizer {
public:
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

    /// Whether nothing but white space is left.
    bool atEnd() {
        skipWhitespace();
        return begin_ == end_;
    }

private:
    static bool isWhitespace(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }
    static bool isDigit(char character) { return character >= '0' && character <= '9'; }

    /// Whether a token ends before `character`, which does not stand first in it.
    static bool isSeparator(const char* character) {
        return isWhitespace(*character) || (*character == '-' && isDigit(character[-1]));
    }

    void skipWhitespace() {
        do {
            while (begin_ != end_ && isWhitespace(*begin_))
                ++begin_;
        } while (begin_ == end_ && fill());
    }

    bool fill();
    std::string_view takeToken();

    dataio::InputStreamInterface& stream_;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    const char* begin_ = nullptr; // the text not yet taken
    const char* end_ = nullptr;
};

} // namespace veltra::vtkfile
