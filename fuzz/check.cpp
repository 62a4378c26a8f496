// A file, checked as by `krohost check --explain --deep`: each that the add-on refuses has an error with its place.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"

#include "krohost/check/checkFile.h"

namespace {

/// The work is in proportion to what the data inflate to, which can be more than a fuzzer waits for.
struct Long {};

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::filesystem::path path = scratchFile("mesh.vtu", asText(input));
    const std::string shown = loadInHost(path);
    std::size_t pollCount = 0;
    try {
        const auto findings = krohost::check::checkFile(path, {true, true}, [&] {
            if (++pollCount > 10000)
                throw Long();
        });
        const bool hasError = krohost::check::isExplained(findings);
        const bool isOfMemory = shown.find("nsufficient memory") != shown.npos;
        require(shown == "loaded" || isOfMemory || hasError, "what is refused is explained: " + shown);
        return shown + (hasError ? ", error" : ", no error");
    } catch (const Long&) {
        return shown + ", long";
    }
}
