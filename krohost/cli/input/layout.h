/// Recorded loads: `{"loader": NAME, "instructions": [TEXT, ...]}`.
#pragma once

#include "krohost/convert/Outputs.h"
#include "krohost/host/model/Dataset.h"

#include <string>

namespace krohost::cli {

/// Throws Failure when the file cannot be written, or the instructions hold text that is not UTF-8.
void writeLayout(const std::string& path, const convert::Permission& permission, const Instructions& instructions);

/// Throws Failure when the file cannot be read or is no layout.
Instructions readLayout(const std::string& path);

} // namespace krohost::cli
