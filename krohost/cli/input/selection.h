/// From what the user names to places in a dataset.
#pragma once

#include "krohost/host/model/Dataset.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace krohost::cli {

/// Places from `begin` up to, but without, `end`, counted from 0.
struct Range {
    std::int64_t begin = 0;
    std::optional<std::int64_t> end = std::nullopt; ///< nothing: to the last one
};

/// `A:B`, `A:`, `:B` or `:`; nothing for other text.
std::optional<Range> parseRange(const std::string& text);

/// Which values are meant.
struct SelectionOptions {
    std::vector<std::string> variables; ///< none: the node map
    std::string location;               ///< "nodal", "cell" or, for variables whose name says enough, empty
    std::string zone;                   ///< name or number; empty: the only one
    std::optional<std::int32_t> section;
    std::optional<Range> range;
};

/// --variable, --node-map, --location, --zone, --section and --range.
void addSelectionOptions(CLI::App& command, SelectionOptions& options);

/// Rows of a variable, one value each, or of a section's node list, one element each.
struct Part {
    Target target;
    std::size_t partIndex; ///< of the target's storage
    std::int64_t rowCount; ///< that there are
    std::int64_t rowLength;
    std::int64_t begin, end; ///< of the rows that are wanted
};

struct Selection {
    const Zone& zone;
    bool isNodeMap;
    std::vector<Part> parts; ///< variables or sections
};

/// Throws Failure for what is not there or not clear. `needsOneSection`: of a node map one section alone is wanted.
Selection select(const Dataset& dataset, const SelectionOptions& options, bool needsOneSection);

} // namespace krohost::cli
