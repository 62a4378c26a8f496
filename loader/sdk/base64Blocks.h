#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace veltra::dataio {

/// Decodes base64 text 32 characters at a time, where the processor can, as long as they are all of the alphabet and
/// `dst` has room for 32 bytes. Returns the characters decoded, four for three bytes; 0 on other processors.
std::size_t decodeBase64Blocks(std::span<const std::uint8_t> text, std::span<std::uint8_t> dst) noexcept;

} // namespace veltra::dataio
