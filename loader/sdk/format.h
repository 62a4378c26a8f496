#pragma once

#include <boost/format.hpp>

#include <locale>

namespace veltra {

/// A format whose numbers read the same whatever the host process makes of its locale. [any thread]
inline boost::format format(const char* text) {
    // The locale's tables of characters are filled without a lock at their first use: here, by one thread for all.
    static const std::locale& locale = []() -> const std::locale& {
        const std::locale& classic = std::locale::classic();
        const auto& characters = std::use_facet<std::ctype<char>>(classic);
        const char letter = 'a';
        char same = 0;
        characters.narrow(&letter, &letter + 1, '\0', &same);
        characters.widen(letter);
        return classic;
    }();
    return boost::format(text, locale);
}

} // namespace veltra
