/// What the format's other readers take at most; a file beyond this is no work of a writer of such files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace krohost::reader {

constexpr std::size_t tagByteLimit = 65536, depthLimit = 1000;
constexpr std::ptrdiff_t innerCharacterLimit = 1000; ///< beside the tag's own ">"

/// Why a tag is too long or too costly, as a code and a sentence; nothing when it is not. `tag` may be empty where its
/// bytes are not at hand. [any thread]
std::optional<std::pair<const char*, std::string>> tagFault(std::string_view tag, std::size_t byteCount);

} // namespace krohost::reader
