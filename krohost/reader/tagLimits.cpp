#include "krohost/reader/tagLimits.h"

#include <fmt/format.h>

#include <algorithm>

namespace krohost::reader {

std::optional<std::pair<const char*, std::string>> tagFault(std::string_view tag, std::size_t byteCount) {
    if (byteCount > tagByteLimit)
        return std::pair{"tag-too-long", fmt::format("a tag is longer than {} bytes", tagByteLimit)};
    for (const char character : {'>', '=', '&'})
        if (std::count(tag.begin(), tag.end(), character) > innerCharacterLimit + (character == '>' ? 1 : 0))
            return std::pair{"tag-characters",
                             fmt::format("a tag holds more than {} \"{}\" characters", innerCharacterLimit, character)};
    return std::nullopt;
}

} // namespace krohost::reader
