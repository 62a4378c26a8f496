#pragma once

#include "loader/sdk/InputStreamInterface.h"

#include <limits>

namespace veltra::dataio {

/// How much of a file to fetch at a time.
inline constexpr std::int64_t fileBlockByteCount = 0x80000;

/// The bytes of the stream below, fetched in blocks, of which the first is small: much of what is read this way is. A
/// request of a block or of 32 KiB goes straight to the stream below.
class BufferedInputStream final : public InputStreamInterface {
public:
    /// No more than `expectedByteCount` is fetched in blocks of that size; what is read beyond comes in small ones.
    BufferedInputStream(InputStreamPtr inner, std::int64_t bufferByteCount,
                        std::uint64_t expectedByteCount = std::numeric_limits<std::uint64_t>::max());

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::int64_t available() override;
    std::uint64_t position() override { return inner_->position() - start_ - buffered(); }
    void close() override;
    /// At least one byte unless the stream is at its end.
    std::span<const std::uint8_t> peek() override;

private:
    std::size_t buffered() const { return end_ - begin_; }
    void fill();

    InputStreamPtr inner_;
    std::uint64_t start_; // where the stream below stood
    std::uint64_t expectedByteCount_;
    std::size_t blockByteCount_; // no more than there was to read at first
    std::size_t capacity_ = 0;   // of buffer_, which is left uninitialised
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t begin_ = 0; // the unread part of buffer_
    std::size_t end_ = 0;
};

} // namespace veltra::dataio
