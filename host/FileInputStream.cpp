#include "host/FileInputStream.h"

#include "host/exceptions.h"
#include "host/messages.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltra::dataio {

namespace {

std::string systemReason(int code) {
    return std::generic_category().message(code);
}

/// Repeats a call of the system that a signal cut short.
template <class Call>
auto retried(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace

FileStreamBase::FileStreamBase(const boost::filesystem::path& path) : path_(path) {
    // A named pipe must be refused below, not waited for.
    descriptor_ = retried([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
    struct stat status {};
    if (descriptor_ == -1 || ::fstat(descriptor_, &status) == -1) {
        const int code = errno;
        FileStreamBase::close();
        throw FileAccessException(unableToOpen(path.string(), systemReason(code)));
    }
    if (!S_ISREG(status.st_mode)) {
        FileStreamBase::close();
        throw FileAccessException(
            unableToOpen(path.string(), S_ISDIR(status.st_mode) ? systemReason(EISDIR) : notARegularFile));
    }
    byteCount_ = static_cast<std::uint64_t>(status.st_size);
}

void FileStreamBase::close() {
    if (descriptor_ != -1)
        ::close(descriptor_);
    descriptor_ = -1;
    byteCount_ = 0;
}

std::size_t FileStreamBase::readAt(std::uint64_t position, std::uint8_t* dst, std::size_t byteCount) const {
    constexpr std::size_t pieceByteCount = std::size_t{1} << 30; // within what every system reads in one call
    const ssize_t count = retried(
        [&] { return ::pread(descriptor_, dst, std::min(byteCount, pieceByteCount), static_cast<off_t>(position)); });
    if (count == -1)
        throw FileAccessException(unableToRead(path_.string(), systemReason(errno)));
    return static_cast<std::size_t>(count);
}

void FileInputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    while (byteCount > 0) {
        if (remaining() == 0)
            throw IOException(unexpectedEndOfFile(path_.string()));
        const std::size_t count = readAt(position_, dst, std::min(byteCount, remaining()));
        if (count == 0)
            throw FileAccessException(unexpectedEndOfFile(path_.string()));
        position_ += count;
        dst += count;
        byteCount -= count;
    }
}

void FileInputStream::skip(std::size_t byteCount) {
    const std::uint64_t count = std::min<std::uint64_t>(byteCount, remaining());
    position_ += count;
    if (count < byteCount)
        throw IOException(unexpectedEndOfFile(path_.string()));
}

} // namespace veltra::dataio
