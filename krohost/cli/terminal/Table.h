#pragma once

#include "krohost/cli/terminal/Style.h"

#include <cstddef>
#include <string>
#include <vector>

namespace krohost::cli {

enum class Align { left, right };

struct Column {
    std::string title;
    Align align;
};

/// Columns as wide as their widest text, two blanks apart, below a heading.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// A row may have fewer cells than there are columns. Each is printed as one line.
    void addRow(std::vector<std::string> row);

    /// With at most this many rows, and below them how many are left out.
    std::string text(Style style, const char* indent = "", std::size_t rowLimit = ~std::size_t{0}) const;

private:
    std::string line(const char* indent, const std::vector<std::string>& cells) const;

    std::vector<Column> columns_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<std::string>> rows_;
};

} // namespace krohost::cli
