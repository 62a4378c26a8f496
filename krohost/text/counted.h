#pragma once

#include <cstddef>
#include <string>

namespace krohost {

/// "1 zone", "2 zones"
inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

} // namespace krohost
