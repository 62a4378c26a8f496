#pragma once

#include "krohost/reader/decode.h"
#include "krohost/reader/values.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace krohost::reader {

/// The values of an array of whole numbers, one after the other, as 64 bits, where the largest unsigned ones become
/// negative. Of an array that is none there are no values. Refers to what it is given. [any thread]
class IntegerReader {
public:
    IntegerReader(const Document& document, const Array& array, const Poll& poll)
        : reader_{document, array, poll}, type_{array.type.value_or(ElementType::Float64)} {}

    std::optional<std::int64_t> next() {
        if (next_ == end_)
            fill();
        return next_ == end_ ? std::nullopt : std::optional{values_[next_++]};
    }

    std::size_t valueByteCount() const { return byteCount(type_); }
    const Decoded& decoded() const { return reader_.decoded(); }

private:
    void fill() {
        std::array<std::byte, 8192> bytes;
        const std::size_t count = reader_.read(std::span{bytes}.first(1024 * byteCount(type_)));
        next_ = end_ = 0;
        forEachInteger(type_, std::span{bytes}.first(count), [this](std::int64_t value) { values_[end_++] = value; });
    }

    ArrayReader reader_;
    ElementType type_;
    std::array<std::int64_t, 1024> values_;
    std::size_t next_ = 0, end_ = 0;
};

} // namespace krohost::reader
