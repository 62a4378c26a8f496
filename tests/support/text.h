#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>

namespace test {

inline std::string repeated(const std::string& text, std::size_t count) {
    std::string repetition;
    repetition.reserve(count * text.size());
    while (count-- > 0)
        repetition += text;
    return repetition;
}

/// The pattern for each number from 1 on; "{0}" is the number and "{1}" the one before.
inline std::string numbered(std::size_t count, const std::string& pattern) {
    std::string list;
    for (std::size_t number = 1; number <= count; ++number)
        list += fmt::format(fmt::runtime(pattern), number, number - 1);
    return list;
}

} // namespace test
