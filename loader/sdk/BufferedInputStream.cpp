#include "loader/sdk/BufferedInputStream.h"

#include "loader/sdk/readSome.h"

#include <algorithm>
#include <cstring>

namespace veltra::dataio {

namespace {

constexpr std::size_t firstBlockByteCount = 0x4000;
constexpr std::size_t directByteCount = 0x8000; // a call of the system costs less than to copy these

} // namespace

BufferedInputStream::BufferedInputStream(InputStreamPtr inner, std::int64_t bufferByteCount,
                                         std::uint64_t expectedByteCount)
    : inner_(std::move(inner)), start_(inner_->position()), expectedByteCount_(expectedByteCount) {
    const auto most = std::min<std::uint64_t>(expectedByteCount, static_cast<std::uint64_t>(inner_->available()));
    blockByteCount_ =
        std::clamp<std::uint64_t>(most, 1, static_cast<std::uint64_t>(std::max<std::int64_t>(bufferByteCount, 1)));
}

void BufferedInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    while (byteCount > 0) {
        std::size_t count = std::min(byteCount, buffered());
        if (count > 0) {
            std::memcpy(dst, buffer_.get() + begin_, count);
            begin_ += count;
        } else if (byteCount >= std::min(blockByteCount_, directByteCount)) {
            count = readSome(*inner_, dst, byteCount);
        } else {
            fill();
        }
        dst += count;
        byteCount -= count;
    }
}

void BufferedInputStream::skip(std::size_t byteCount) {
    const std::size_t count = std::min(byteCount, buffered());
    begin_ += count;
    if (count < byteCount)
        inner_->skip(byteCount - count);
}

std::int64_t BufferedInputStream::available() {
    return static_cast<std::int64_t>(buffered()) + inner_->available();
}

void BufferedInputStream::close() {
    begin_ = end_ = 0;
    buffer_.reset();
    capacity_ = 0;
    inner_->close();
}

std::span<const std::uint8_t> BufferedInputStream::peek() {
    if (buffered() == 0 && inner_->available() > 0)
        fill();
    return {buffer_.get() + begin_, buffered()};
}

/// Puts the next block into the empty buffer: at least one byte, or the stream below says why there is none.
void BufferedInputStream::fill() {
    if (capacity_ < blockByteCount_) {
        capacity_ = buffer_ ? blockByteCount_ : std::min(blockByteCount_, firstBlockByteCount);
        buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(capacity_);
    }
    begin_ = end_ = 0;
    const auto available = static_cast<std::uint64_t>(inner_->available());
    const std::uint64_t fetched = inner_->position() - start_;
    const std::uint64_t expected = fetched < expectedByteCount_ ? expectedByteCount_ - fetched : firstBlockByteCount;
    end_ = readSome(*inner_, buffer_.get(), std::clamp<std::uint64_t>(std::min(available, expected), 1, capacity_));
}

} // namespace veltra::dataio
