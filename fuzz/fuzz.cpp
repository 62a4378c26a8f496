#include "fuzz/fuzz.h"

#include "tests/support/TemporaryFolder.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

void require(bool holds, std::string_view claim) {
    if (holds)
        return;
    std::fprintf(stderr, "this does not hold: %.*s\n", static_cast<int>(claim.size()), claim.data());
    std::abort();
}

std::string sentence(std::string_view message) {
    std::string text;
    char quote = '\0'; // that a text stands in
    for (const char character : message) {
        const bool isDigit = character >= '0' && character <= '9';
        const bool isApostrophe = character == '\'' && !text.empty() && std::isalpha(text.back());
        const bool isQuote = character == '"' || (character == '\'' && !isApostrophe);
        if (isQuote && (quote == '\0' || quote == character))
            quote = quote == '\0' ? character : '\0';
        else if (quote != '\0' || (isDigit && text.ends_with('#')))
            continue;
        text += character == '\n' ? ' ' : isDigit ? '#' : character;
    }
    return text;
}

std::filesystem::path scratchFile(const std::string& name, std::string_view bytes) {
    static const test::TemporaryFolder folder;
    return folder.write(name, bytes);
}

} // namespace fuzz
