#include "fuzz/fuzz.h"

#include "fuzz/cost.h"
#include "tests/support/TemporaryFolder.h"

#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

void require(bool holds, std::string_view claim) {
    if (holds)
        return;
    std::fprintf(stderr, "this does not hold: %.*s\n", static_cast<int>(claim.size()), claim.data());
    std::abort();
}

std::string limitedOutcome(Bytes input) {
    static const char* const factor = std::getenv("KRO_FUZZ_COST");
    static const double most = factor != nullptr ? std::atof(factor) : 1;
    const auto limit =
        static_cast<std::uint64_t>(most * static_cast<double>(std::max(64ul << 20, 1100 * input.size())));
    Cost::begin();
    const std::string outcome = fuzz::outcome(input);
    const Cost cost = Cost::sinceBegin();
    if (factor != nullptr)
        std::fprintf(stderr, "%zu bytes: %" PRIu64 " of memory, %" PRIu64 " read: %s\n", input.size(),
                     cost.peakByteCount, cost.readByteCount, outcome.c_str());
    require(cost.peakByteCount <= limit, "an input takes no more memory than 64 MB or 1100 times its size");
    require(cost.readByteCount <= limit, "for an input no more is read than 64 MB or 1100 times its size");
    return outcome;
}

std::string sentence(std::string_view message) {
    std::string text;
    char quote = '\0'; // that a text is in
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
