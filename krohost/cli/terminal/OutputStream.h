#pragma once

#include "krohost/convert/Outputs.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

namespace krohost::cli {

/// Standard output or a file, written in pieces. A new file gets its name when it is finished; what goes to a FIFO, a
/// device or an open descriptor goes there as it comes. What cannot be written throws Failure.
class OutputStream {
public:
    /// Standard output for an empty path.
    OutputStream(const std::string& path, const convert::Permission& permission);
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
    /// Writes bytes after the text so far, without copying them.
    void write(std::span<const std::byte> bytes);
    /// Writes what is left; without this a file is not there. Nothing may follow.
    void finish();

private:
    std::FILE* open(const std::string& path, const convert::Permission& permission);
    void writeBuffer();
    [[noreturn]] void fail() const;

    std::string name_;
    std::optional<convert::Outputs> outputs_; // of a new file
    std::FILE* file_;
    fmt::memory_buffer buffer_;
};

} // namespace krohost::cli
