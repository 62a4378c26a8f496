#pragma once

#include <string>
#include <vector>

namespace fuzz {

struct ToolRun {
    int exitCode = 0;
    std::string output; ///< what standard output would hold
    std::string errors;
};

/// Runs krohost in this process, with these arguments, which must be a sound command line, and the add-on.
ToolRun runTool(std::vector<std::string> arguments);

} // namespace fuzz
