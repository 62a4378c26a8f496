#pragma once

#include "loader/sdk/InputStreamInterface.h"

#include <vector>

namespace veltra::dataio {

/// The bytes of a shared vector. The vector's owner may fill and resize it while nothing of it has been read.
class ByteInputStream final : public InputStreamInterface {
public:
    using Bytes = std::vector<std::uint8_t>;

    explicit ByteInputStream(std::shared_ptr<Bytes> bytes) : bytes_(std::move(bytes)) {}

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::span<const std::uint8_t> peek() override {
        return remaining() == 0 ? std::span<const std::uint8_t>() : std::span(*bytes_).subspan(position_);
    }
    std::int64_t available() override { return static_cast<std::int64_t>(remaining()); }
    std::uint64_t position() override { return position_; }
    void close() override { bytes_.reset(); }

    void reset() { position_ = 0; }
    const std::shared_ptr<Bytes>& bytes() const { return bytes_; }

private:
    std::size_t remaining() const { return bytes_ && position_ < bytes_->size() ? bytes_->size() - position_ : 0; }

    std::shared_ptr<Bytes> bytes_;
    std::size_t position_ = 0;
};

} // namespace veltra::dataio
