#pragma once

#include <cstdint>
#include <string>

/// An add-on that has registered itself, from 1.
struct KroAddOn {
    std::int32_t number;
    std::string name, version, author;
};
