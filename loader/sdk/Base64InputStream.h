#pragma once

#include "loader/sdk/InputStreamInterface.h"

#include <array>
#include <span>

namespace veltra::dataio {

/// The bytes that the base64 text of the stream below encodes, across padded groups, line breaks and blanks. The text
/// ends at a `<` or with the stream below. Any other foreign character, or an end in the middle of a group, throws
/// IOException when the bytes before it have been read and more are asked for.
///
/// available() is exact at the end (0) and otherwise the most that the rest of the stream below can yield.
class Base64InputStream final : public InputStreamInterface {
public:
    explicit Base64InputStream(InputStreamPtr inner) : inner_(std::move(inner)) {}

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    std::int64_t available() override;
    std::uint64_t position() override { return position_; }
    void close() override;

private:
    std::size_t deliver(std::span<std::uint8_t> dst);
    std::size_t decode(std::span<std::uint8_t> dst);
    bool lookAhead();
    bool fetchText();
    bool isAtTextEnd();
    [[noreturn]] void throwWhyItStops();

    std::span<const std::uint8_t> text() const { return {text_.get() + textBegin_, textEnd_ - textBegin_}; }

    InputStreamPtr inner_;
    std::unique_ptr<std::uint8_t[]> text_; // a block of text; the part not yet decoded is textBegin_ to textEnd_
    std::size_t textCapacity_ = 0;
    std::size_t textBegin_ = 0;
    std::size_t textEnd_ = 0;
    std::array<std::uint8_t, 3> ahead_{}; // bytes decoded before they were asked for
    std::size_t aheadBegin_ = 0;
    std::size_t aheadEnd_ = 0;
    std::uint64_t position_ = 0;
};

} // namespace veltra::dataio
