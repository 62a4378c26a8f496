#include "loader/sdk/ByteInputStream.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

#include <algorithm>

namespace veltra::dataio {

void ByteInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    if (const std::size_t count = std::min(byteCount, remaining()); count > 0)
        std::copy_n(bytes_->data() + position_, count, dst);
    skip(byteCount);
}

void ByteInputStream::skip(std::size_t byteCount) {
    const std::size_t count = std::min(byteCount, remaining());
    position_ += count;
    if (count < byteCount)
        throw IOException(unexpectedEndOfData);
}

} // namespace veltra::dataio
