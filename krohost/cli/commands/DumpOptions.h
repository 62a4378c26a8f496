#pragma once

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

enum class DumpFormat { text, csv, npy, raw };

struct CommandLine;

/// What `krohost dump` is to write, and where.
struct DumpOptions {
    std::vector<std::string> variables; ///< none: the node map
    std::string location;               ///< "nodal", "cell" or, for variables whose name says enough, empty
    std::string zone;                   ///< name or number; empty: the only one
    std::optional<std::int32_t> section;
    std::optional<Range> range;
    DumpFormat format = DumpFormat::text;
    std::string outputFile; ///< empty: standard output
};

void addDumpOptions(CLI::App& command, CommandLine& line);

} // namespace krohost::cli
