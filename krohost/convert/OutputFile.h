#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace krohost::convert {

/// A new file that is written from its beginning to its end, with places that are filled in later. Everything throws
/// FileError when the file cannot be written.
class OutputFile {
public:
    explicit OutputFile(const std::filesystem::path& path);

    void write(std::span<const std::byte> bytes);
    void write(std::string_view text) { write(std::as_bytes(std::span{text})); }
    std::uint64_t position() const { return position_; }
    /// Overwrites bytes that were written before.
    void patch(std::uint64_t position, std::span<const std::byte> bytes);
    void patch(std::uint64_t position, std::string_view text) { patch(position, std::as_bytes(std::span{text})); }

    /// The last call; a full disk may show only now.
    void close();

private:
    void put(std::span<const std::byte> bytes);
    [[noreturn]] static void fail();

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::uint64_t position_ = 0;
};

} // namespace krohost::convert
