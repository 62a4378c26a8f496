#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>

namespace krohost::cli {

/// Standard output or a new file, written in pieces. What cannot be written throws Failure.
class OutputStream {
public:
    /// Standard output for an empty path.
    explicit OutputStream(const std::string& path);
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Where text is appended, before a call of `advance`.
    fmt::memory_buffer& buffer() { return buffer_; }
    /// Writes the text when there is enough of it.
    void advance() {
        if (buffer_.size() >= 65536)
            writeBuffer();
    }
    /// Writes bytes behind the text so far, without copying them.
    void write(std::span<const std::byte> bytes);
    /// Writes what is left. Nothing may follow.
    void finish();

private:
    void writeBuffer();
    [[noreturn]] void fail() const;

    std::string name_;
    std::FILE* file_;
    fmt::memory_buffer buffer_;
};

} // namespace krohost::cli
