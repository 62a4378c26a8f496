// A collection and its members, which are in the input one after the other: "case.vtm", "1.vtu", "2.vtu"...

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"

namespace {

constexpr std::string_view separator = "\n@@@@\n";

} // namespace

std::string fuzz::outcome(Bytes input) {
    std::string_view rest = asText(input);
    std::filesystem::path collection;
    for (int number = 0; number < 5; ++number) { // a member that there is none of now must not be one of another input
        const std::string_view text = rest.substr(0, rest.find(separator));
        const std::filesystem::path path =
            scratchFile(number == 0 ? "case.vtm" : std::to_string(number) + ".vtu", text);
        rest.remove_prefix(std::min(rest.size(), text.size() + separator.size()));
        if (number == 0)
            collection = path;
    }
    return loadInHost(collection);
}
