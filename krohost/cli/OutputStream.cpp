#include "krohost/cli/OutputStream.h"

#include "krohost/cli/Failure.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace krohost::cli {

namespace {

std::FILE* open(const std::string& path) {
    return path.empty() ? stdout : std::fopen(path.c_str(), "wb");
}

} // namespace

OutputStream::OutputStream(const std::string& path)
    : name_{path.empty() ? "Standard output" : fmt::format("The file \"{}\"", path)}, file_{open(path)} {
    if (!file_)
        fail();
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
