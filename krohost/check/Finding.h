#pragma once

#include "krohost/reader/Document.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace krohost::check {

/// An error is refused when the file is loaded, or gives data that are wrong; a warning is neither, and worth a look.
enum class Severity { error, warning };

struct Finding {
    Severity severity = Severity::error;
    std::string code;                         ///< a word for programs, the same in all versions
    std::string file;                         ///< empty where it is not known
    std::optional<reader::Position> position; ///< of the element; the byte is that of the data where these are meant
    std::string message;
    std::string reason = {}; ///< what the loader says in a dialog; empty for what the host has found itself
};

/// Collects what is found in one file, of which a thousand errors and a thousand warnings are kept.
class Findings {
public:
    explicit Findings(std::string file) : file_{std::move(file)} {}

    void error(std::string_view code, const reader::Position& position, std::string message) {
        add(Severity::error, code, position, std::move(message));
    }
    void warning(std::string_view code, const reader::Position& position, std::string message) {
        add(Severity::warning, code, position, std::move(message));
    }

    void add(Severity severity, std::string_view code, const reader::Position& position, std::string message);

    /// In the order of their positions; a last one of each severity says how many were left out.
    std::vector<Finding> take();

private:
    std::string file_;
    std::vector<Finding> list_;
    std::map<Severity, std::size_t> counts_;
};

} // namespace krohost::check
