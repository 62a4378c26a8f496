#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace test {

/// A zlib stream of the bytes, by one of zlib's levels and strategies.
std::vector<std::uint8_t> deflated(std::span<const std::uint8_t> bytes, int level, int strategy = Z_DEFAULT_STRATEGY);

/// What zlib leaves behind of a stream, damaged or not, which is `room` bytes at most.
std::vector<std::uint8_t> inflatedByZlib(std::span<const std::uint8_t> stream, std::size_t room);

} // namespace test
