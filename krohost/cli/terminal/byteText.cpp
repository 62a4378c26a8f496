#include "krohost/cli/terminal/byteText.h"

#include <fmt/format.h>

#include <array>

namespace krohost::cli {

std::string byteText(std::int64_t byteCount) {
    constexpr std::array units{"B", "kB", "MB", "GB", "TB", "PB", "EB"};
    double number = static_cast<double>(byteCount);
    std::size_t unit = 0;
    for (; number >= 999.5; ++unit)
        number /= 1000;
    return fmt::format("{:.{}f} {}", number, unit > 0 && number < 9.95 ? 1 : 0, units[unit]);
}

} // namespace krohost::cli
