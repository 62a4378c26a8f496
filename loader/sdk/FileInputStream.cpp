#include "loader/sdk/FileInputStream.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

namespace veltra::dataio {

void FileInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    while (byteCount > 0) {
        if (remaining() == 0)
            throwEnd();
        const std::size_t count = file_->readAt(position_, dst, std::min(byteCount, remaining()));
        if (count == 0)
            throw FileAccessException(unexpectedEndOfFile(file_->path().string()));
        position_ += count;
        dst += count;
        byteCount -= count;
    }
}

void FileInputStream::skip(std::size_t byteCount) {
    const std::uint64_t count = std::min<std::uint64_t>(byteCount, remaining());
    position_ += count;
    if (count < byteCount)
        throwEnd();
}

void FileInputStream::throwEnd() const {
    throw IOException(file_ ? unexpectedEndOfFile(file_->path().string()) : unexpectedEndOfData);
}

} // namespace veltra::dataio
