#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace krohost {

/// The text in double quotes with backslash escapes, on one line and safe to be shown; `null` for a null pointer.
std::string quoted(std::string_view text);
std::string quoted(const char* text);
/// `["a", "b"]`
std::string quoted(const std::vector<std::string>& texts);
/// `[1, 2, 3]`; of more than 16 numbers the first 8 and how many there are.
std::string abbreviated(const std::vector<std::int64_t>& numbers);

} // namespace krohost
