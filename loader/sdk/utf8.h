#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace veltra {

/// The text with U+FFFD in place of every byte that is of no UTF-8 character. Names of files may hold such bytes, and
/// so may damaged files; the host takes UTF-8 only. [any thread]
std::string validUtf8(std::string_view text);

/// As much of the beginning as fits into `byteLimit` bytes without cutting a character in two. [any thread]
std::string_view utf8Beginning(std::string_view text, std::size_t byteLimit);

} // namespace veltra
