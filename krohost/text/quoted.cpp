#include "krohost/text/quoted.h"

#include "krohost/text/printable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <span>

namespace krohost {

std::string quoted(std::string_view text) {
    return '"' + printableLine(text, "\"\\") + '"';
}

std::string quoted(const char* text) {
    return text ? quoted(std::string_view{text}) : "null";
}

std::string quoted(const std::vector<std::string>& texts) {
    std::vector<std::string> items;
    for (const std::string& text : texts)
        items.push_back(quoted(text));
    return fmt::format("[{}]", fmt::join(items, ", "));
}

std::string abbreviated(const std::vector<std::int64_t>& numbers) {
    constexpr std::size_t shown = 8;
    if (numbers.size() <= 2 * shown)
        return fmt::format("[{}]", fmt::join(numbers, ", "));
    return fmt::format("[{}, ... {} in all]", fmt::join(std::span{numbers}.first(shown), ", "), numbers.size());
}

} // namespace krohost
