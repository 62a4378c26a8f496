#pragma once

#include "interface/kro.h"

#include <string>
#include <vector>

namespace krohost {

/// A data loader that an add-on has registered.
struct Loader {
    std::string name;
    std::vector<std::string> patterns; // "*.vtu"
    KroLoaderCallback load = nullptr;
    KroLoaderSelectedCallback loadSelected = nullptr;
    void* clientData = nullptr;
    bool takesSeveralFiles = false;

    /// Whether one of the patterns fits, in any letter case.
    bool matches(const std::string& fileName) const;
};

} // namespace krohost
