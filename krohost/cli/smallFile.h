#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace krohost::cli {

/// A file that krohost itself reads whole, as opposed to those that it has loaded.
struct SmallFile {
    std::string kind; ///< "layout", for messages
    std::string path;

    /// Throws Failure when the file cannot be read or is larger than any that makes sense.
    std::string text() const;
    /// The text as JSON, without what is nested deeper than `depth`. Throws Failure.
    nlohmann::json json(int depth) const;
    [[noreturn]] void failAsMalformed(const std::string& reason) const;
};

} // namespace krohost::cli
