#include "krohost/cli/addOnPath.h"

#include "krohost/Host.h"

#include <fmt/format.h>

#include <array>
#include <cstdlib>

namespace krohost::cli {

namespace {

/// Seen from the folder of krohost.
constexpr std::array places{"../lib/vtk-data-loader.so", "../lib/krohost/vtk-data-loader.so"};

} // namespace

std::filesystem::path addOnPath(const CommandLine& line) {
    if (line.addOn)
        return *line.addOn;
    if (const char* fromEnvironment = std::getenv("KROHOST_ADDON_PATH"); fromEnvironment && *fromEnvironment != '\0')
        return fromEnvironment;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string text = "No add-on was found. krohost looked for";
    for (const char* place : places) {
        const std::filesystem::path path = (folder / place).lexically_normal();
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored))
            return path;
        text += fmt::format("\n  {}", path.string());
    }
    throw AddOnError(text + "\nName one with --addon FILE or in the environment variable KROHOST_ADDON_PATH.");
}

} // namespace krohost::cli
