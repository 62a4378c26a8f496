/// A file to be damaged: one piece of 23 points and 4 cells, nodal "pressure" and "velocity", "material" in cells.
#pragma once

#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <optional>
#include <string>
#include <utility>

namespace test {

inline VtuBuilder sound() {
    return vtu().piece(mixed());
}
inline VtuBuilder with(const char* element, const char* attribute, std::optional<std::string> value) {
    return sound().attribute(element, attribute, std::move(value));
}
inline VtuBuilder withText(const char* array, std::string text) {
    return sound().inlineText(array, std::move(text));
}
inline VtuBuilder withMarkup(const char* from, std::string to) {
    return sound().markup(from, std::move(to));
}

/// Makes a loaded file malformed to krohost's own reader, whose XML library does not know this letter in names.
inline VtuBuilder odd(VtuBuilder file) {
    return file.markup("<UnstructuredGrid>", "<UnstructuredGrid \u0370=\"\">");
}

} // namespace test
