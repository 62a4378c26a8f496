#include "loader/sdk/File.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

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

/// What keeps an open file from being read; empty when nothing does.
std::string whyUnreadable(int descriptor, struct stat& status) {
    if (descriptor == -1 || ::fstat(descriptor, &status) == -1)
        return systemReason(errno);
    if (S_ISDIR(status.st_mode))
        return systemReason(EISDIR);
    return S_ISREG(status.st_mode) ? "" : notARegularFile;
}

} // namespace

File::File(boost::filesystem::path path) : path_(std::move(path)) {
    // A named pipe must be refused below, not waited for.
    descriptor_ = retried([&] { return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
    struct stat status {};
    if (const std::string reason = whyUnreadable(descriptor_, status); !reason.empty()) {
        if (descriptor_ != -1)
            ::close(descriptor_);
        throw FileAccessException(unableToOpen(path_.string(), reason));
    }
    byteCount_ = static_cast<std::uint64_t>(status.st_size);
}

File::~File() {
    ::close(descriptor_);
}

std::size_t File::readAt(std::uint64_t position, std::uint8_t* dst, std::size_t byteCount) const {
    constexpr std::size_t pieceByteCount = std::size_t{1} << 30; // within what every system reads in one call
    const ssize_t count = retried(
        [&] { return ::pread(descriptor_, dst, std::min(byteCount, pieceByteCount), static_cast<off_t>(position)); });
    if (count == -1)
        throw FileAccessException(unableToRead(path_.string(), systemReason(errno)));
    // A file that is cut meanwhile may give zeros in place of what is gone; its size tells by then.
    struct stat status {};
    if (::fstat(descriptor_, &status) == -1)
        throw FileAccessException(unableToRead(path_.string(), systemReason(errno)));
    const auto rest = std::max<std::int64_t>(status.st_size - static_cast<std::int64_t>(position), 0);
    return static_cast<std::size_t>(std::min<std::int64_t>(count, rest));
}

} // namespace veltra::dataio
