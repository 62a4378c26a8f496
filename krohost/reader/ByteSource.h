#pragma once

#include "krohost/reader/decode.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>

namespace krohost::reader {

/// Bytes one after the other, with their place in the file.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Fills `bytes` from its beginning; gives how many there were, which are fewer only at the end or at a fault.
    virtual std::size_t read(std::span<std::byte> bytes) = 0;
    /// Where in the file the next byte is, or begins.
    virtual std::uint64_t position() const = 0;
    /// No more bytes than these are to come.
    virtual std::uint64_t byteLimit() const = 0;
    /// Why the bytes end early, where it is not the file's end.
    virtual std::optional<Fault> fault() const = 0;
};

/// The bytes of a file from `begin` to `end`. Each read polls, so that work which grows with the file can be ended.
class FileSource final : public ByteSource {
public:
    FileSource(const std::filesystem::path& path, std::uint64_t begin, std::uint64_t end, const Poll& poll);

    std::size_t read(std::span<std::byte> bytes) override;
    std::uint64_t position() const override { return position_; }
    std::uint64_t byteLimit() const override { return end_ - position_; }
    std::optional<Fault> fault() const override;

private:
    std::ifstream stream_;
    std::uint64_t position_;
    std::uint64_t end_;
    Poll poll_;
    bool isUnreadable_ = false;
};

/// The bytes that base64 text from `begin` to `end`, or to a `<`, stands for. Groups may be padded anywhere, since
/// header words and data are encoded apart.
class Base64Source final : public ByteSource {
public:
    Base64Source(const std::filesystem::path& path, std::uint64_t begin, std::uint64_t end, const Poll& poll);

    std::size_t read(std::span<std::byte> bytes) override;
    std::uint64_t position() const override { return text_.position() - (charactersEnd_ - next_); }
    std::uint64_t byteLimit() const override;
    std::optional<Fault> fault() const override;

private:
    std::optional<char> nextCharacter();
    /// Decodes the next four characters; false when there are none or they are foreign.
    bool decodeGroup();

    FileSource text_;
    std::array<std::byte, 65536> characters_;
    std::size_t next_ = 0, charactersEnd_ = 0;
    std::array<std::byte, 3> group_{}; // decoded and not yet read
    std::size_t groupNext_ = 0, groupEnd_ = 0;
    std::optional<Fault> foreign_;
};

} // namespace krohost::reader
