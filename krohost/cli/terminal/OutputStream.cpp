#include "krohost/cli/terminal/OutputStream.h"

#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/Loss.h"
#include "krohost/convert/WriteError.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace krohost::cli {

namespace {

/// Has the failure of what is done with new files as one of the run.
template <class Use>
auto asFailure(const Use& use) {
    try {
        return use();
    } catch (const convert::NotReplaceable& error) {
        throw Failure(error.what(), Exit_Usage);
    } catch (const convert::WriteError& error) {
        throw Failure(error.what(), Exit_Failed);
    }
}

/// A FIFO opens when somebody reads it; until then the user may want to stop.
std::FILE* openStream(const std::string& path) {
    constexpr int milliseconds = 100; // between two tries
    int descriptor = -1;
    while ((descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0 && errno == ENXIO) {
        convert::pollInterrupt();
        poll(nullptr, 0, milliseconds);
    }
    if (descriptor < 0)
        return nullptr;
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return fdopen(descriptor, "wb");
}

} // namespace

OutputStream::OutputStream(const std::string& path, const convert::Permission& permission)
    : name_{path.empty() ? "Standard output" : fmt::format("The file \"{}\"", path)}, file_{open(path, permission)} {
    if (!file_)
        fail();
}

std::FILE* OutputStream::open(const std::string& path, const convert::Permission& permission) {
    if (path.empty())
        return stdout;
    if (const auto descriptor = convert::namedDescriptor(path)) {
        const int own = fcntl(*descriptor, F_DUPFD_CLOEXEC, 0);
        return own < 0 ? nullptr : fdopen(own, "wb");
    }
    if (convert::isStream(path))
        return openStream(path);
    outputs_.emplace(permission);
    return std::fopen(asFailure([&] { return outputs_->begin(path); }).c_str(), "wbxe");
}

OutputStream::~OutputStream() {
    if (file_ && file_ != stdout)
        std::fclose(file_);
}

void OutputStream::write(std::span<const std::byte> bytes) {
    writeBuffer();
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
        fail();
}

void OutputStream::finish() {
    writeBuffer();
    std::FILE* file = std::exchange(file_, nullptr);
    if ((file == stdout ? std::fflush(file) : std::fclose(file)) != 0)
        fail();
    if (outputs_)
        asFailure([&] { outputs_->publish(); });
}

void OutputStream::writeBuffer() {
    if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size())
        fail();
    buffer_.clear();
}

void OutputStream::fail() const {
    throw Failure(fmt::format("{} cannot be written: {}", name_, std::strerror(errno)),
                  errno == EPIPE ? Exit_PipeClosed : Exit_Failed);
}

} // namespace krohost::cli
