// What a user names besides meshes, by the first byte: a .pvd, a .series, a layout, or names of files with times.

#include "fuzz/fuzz.h"

#include "krohost/cli/input/layout.h"
#include "krohost/cli/input/series.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/host/model/timesFromFileNames.h"

#include <array>
#include <cmath>

namespace {

using namespace krohost::cli;

/// The members come in the order of their times, each a file.
std::string expand(const std::string& path) {
    double previous = -INFINITY;
    const auto files = expandCollections({path});
    for (const SeriesFile& file : files) {
        const double time = file.time.value_or(0);
        fuzz::require(!file.path.empty() && std::isfinite(time) && time >= previous, "files come by their times");
        previous = time;
    }
    return "a series";
}

std::string times(const std::string& text) {
    const auto time = krohost::timeFromFileName(text);
    fuzz::require(!time || (std::isfinite(*time) && *time >= 0), "a time is a number");
    return time ? "a time" : "no time";
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    constexpr std::array names{"a.pvd", "a.series", "layout.json"};
    if (input.empty())
        return "nothing";
    const std::string text{asText(input.subspan(1))};
    const std::size_t kind = input[0] % 4;
    if (kind == names.size())
        return times(text);
    const std::string path = scratchFile(names[kind], text);
    try {
        return kind < 2 ? expand(path) : (readLayout(path), "a layout");
    } catch (const Failure& failure) {
        return sentence(failure.what());
    }
}
