#pragma once

#include <string>
#include <string_view>

namespace krohost {

/// The text with its capital letters of ASCII as small ones, whatever the locale. [any thread]
std::string lowerCase(std::string text);

/// Whether the words are the same but for the case of ASCII letters. [any thread]
bool equalsIgnoringCase(std::string_view left, std::string_view right);

} // namespace krohost
