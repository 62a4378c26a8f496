#include "loader/sdk/RestrictedSectionInputStream.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

#include <algorithm>

namespace veltra::dataio {

RestrictedSectionInputStream::RestrictedSectionInputStream(InputStreamPtr inner, std::uint64_t length)
    : inner_(std::move(inner)), start_(inner_->position()), length_(length) {}

void RestrictedSectionInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    const std::uint64_t count = std::min<std::uint64_t>(byteCount, length_ - position());
    inner_->read(dst, count);
    if (count < byteCount)
        throw IOException(unexpectedEndOfData);
}

void RestrictedSectionInputStream::skip(std::size_t byteCount) {
    const std::uint64_t count = std::min<std::uint64_t>(byteCount, length_ - position());
    inner_->skip(count);
    if (count < byteCount)
        throw IOException(unexpectedEndOfData);
}

// At the section's end the stream below is left alone: looking ahead there may fail on what is not ours.
std::span<const std::uint8_t> RestrictedSectionInputStream::peek() {
    const std::uint64_t rest = length_ - position();
    if (rest == 0)
        return {};
    const std::span<const std::uint8_t> bytes = inner_->peek();
    return bytes.first(std::min<std::uint64_t>(bytes.size(), rest));
}

std::int64_t RestrictedSectionInputStream::available() {
    const std::uint64_t rest = length_ - position();
    if (rest == 0)
        return 0;
    return static_cast<std::int64_t>(std::min(rest, static_cast<std::uint64_t>(inner_->available())));
}

} // namespace veltra::dataio
