#pragma once

#include "krohost/write/conversion.h"

#include <string>

namespace krohost::cli {

/// What `krohost convert` is asked for.
struct ConvertOptions {
    std::string output;
    std::optional<write::FileFormat> format; ///< by the output's extension when there is none
    write::Encoding encoding;
    bool isRepairing = false; ///< the file is read without the add-on
};

} // namespace krohost::cli
