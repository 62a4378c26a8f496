#pragma once

#include <string>
#include <string_view>

namespace krohost::cli {

/// Colours for what goes to one of the standard streams, or none.
class Style {
public:
    explicit Style(bool isColoured) : isColoured_{isColoured} {}

    std::string heading(std::string_view text) const { return wrapped("\x1b[1m", text); }
    std::string error(std::string_view text) const { return wrapped("\x1b[31m", text); }

private:
    std::string wrapped(const char* code, std::string_view text) const {
        return isColoured_ ? std::string{code}.append(text).append("\x1b[0m") : std::string{text};
    }

    bool isColoured_;
};

} // namespace krohost::cli
