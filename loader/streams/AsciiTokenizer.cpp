#include "loader/streams/AsciiTokenizer.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/format.h"
#include "loader/sdk/messages.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace veltra::vtkfile {

namespace {

constexpr std::size_t bufferByteCount = AsciiTokenizer::tokenLimit;

} // namespace

/// Moves the text not yet taken to the front of the buffer and reads on after it. False when the buffer is full or the
/// stream has no more.
bool AsciiTokenizer::fill() {
    const auto available = static_cast<std::uint64_t>(stream_.available());
    if (!buffer_) {
        capacity_ = std::min<std::uint64_t>(bufferByteCount, available);
        buffer_ = std::make_unique_for_overwrite<char[]>(capacity_ + 1);
    }
    const auto kept = static_cast<std::size_t>(end_ - begin_);
    const std::size_t byteCount = std::min<std::uint64_t>(capacity_ - kept, available);
    if (byteCount == 0)
        return false;
    std::memmove(buffer_.get(), begin_, kept);
    begin_ = buffer_.get();
    end_ = begin_ + kept;
    buffer_[kept] = '\0';
    stream_.read(reinterpret_cast<std::uint8_t*>(buffer_.get() + kept), byteCount);
    end_ += byteCount;
    buffer_[kept + byteCount] = '\0';
    return true;
}

/// Takes the token that begins the text, with the stream read as far as it reaches.
std::string_view AsciiTokenizer::takeToken() {
    std::size_t length = 0;
    do {
        while (begin_ + length != end_ && (length == 0 || !isSeparator(begin_ + length)))
            ++length;
    } while (begin_ + length == end_ && fill());
    const std::string_view token(begin_, length);
    if (length == tokenLimit)
        throw bad_lexical_cast(notANumber(token, (format("a number of fewer than %1% characters") % tokenLimit).str()));
    begin_ += length;
    return token;
}

} // namespace veltra::vtkfile
