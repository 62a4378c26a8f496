#include "krohost/cli/input/addOnPath.h"

#include "krohost/host/runtime/Host.h"
#include "krohost/text/quoted.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>
#include <sstream>

namespace krohost::cli {

namespace {

using std::filesystem::path;

/// A file, or the add-on of a folder.
path addOnAt(const path& place) {
    std::error_code ignored;
    return std::filesystem::is_directory(place, ignored) ? place / "vtk-data-loader.so" : place;
}

std::vector<path> splitList(const std::string& list) {
    std::vector<path> places;
    std::istringstream stream{list};
    for (std::string place; std::getline(stream, place, ':');)
        if (!place.empty())
            places.push_back(addOnAt(place));
    return places;
}

/// In the build tree, and installed.
std::vector<path> placesBesideKrohost() {
    const path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return {(folder / "../lib/vtk-data-loader.so").lexically_normal(),
            (folder / KROHOST_ADDON_FOLDER "/vtk-data-loader.so").lexically_normal()};
}

} // namespace

path addOnPath(const HostSettings& settings) {
    if (settings.addOn)
        return addOnAt(*settings.addOn);
    const char* variable = std::getenv("KROHOST_ADDON_PATH");
    const bool hasVariable = variable != nullptr && *variable != '\0';
    std::vector<std::string> places;
    for (const path& file : hasVariable ? splitList(variable) : placesBesideKrohost()) {
        std::error_code ignored;
        if (std::filesystem::exists(file, ignored))
            return file;
        places.push_back(krohost::quoted(file.string()));
    }
    throw AddOnError(fmt::format("No add-on was found{}. krohost looked for {}. Name one with --addon FILE or in the "
                                 "environment variable KROHOST_ADDON_PATH.",
                                 hasVariable ? " in KROHOST_ADDON_PATH" : "", fmt::join(places, ", ")));
}

} // namespace krohost::cli
