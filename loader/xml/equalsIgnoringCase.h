#pragma once

#include <algorithm>
#include <string_view>

namespace veltra::vtkfile {

/// Compares texts without regard to the case of their ASCII letters.
inline bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    const auto lowerCase = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return std::ranges::equal(left, right, {}, lowerCase, lowerCase);
}

} // namespace veltra::vtkfile
