#include "krohost/text/letterCase.h"

#include <algorithm>

namespace krohost {

namespace {

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return lower(one) == lower(other); });
}

} // namespace krohost
