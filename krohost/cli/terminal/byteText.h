#pragma once

#include <cstdint>
#include <string>

namespace krohost::cli {

/// "1.5 MB": three digits, in powers of 1000.
std::string byteText(std::int64_t byteCount);

} // namespace krohost::cli
