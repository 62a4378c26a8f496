#pragma once

#include "krohost/convert/conversion.h"

#include <string>

namespace krohost::cli {

/// What `krohost convert` is asked for.
struct ConvertOptions {
    std::string output;
    std::optional<convert::FileFormat> format; ///< by the output's extension when there is none
    convert::Encoding encoding;
    bool isRepairing = false; ///< the file is read without the add-on
};

} // namespace krohost::cli
