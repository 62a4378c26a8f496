#pragma once

#include "loader/sdk/InputStreamInterface.h"

namespace veltra::dataio {

/// The next `length` bytes of the stream below, counted from where that is now. A read past the section's end
/// throws IOException and delivers what the section still holds.
class RestrictedSectionInputStream : public InputStreamInterface {
public:
    RestrictedSectionInputStream(InputStreamPtr inner, std::uint64_t length);

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::span<const std::uint8_t> peek() override;
    std::int64_t available() override;
    std::uint64_t position() override { return inner_->position() - start_; }
    void close() override { inner_->close(); }

private:
    InputStreamPtr inner_;
    std::uint64_t start_; // where the stream below stood
    std::uint64_t length_;
};

} // namespace veltra::dataio
