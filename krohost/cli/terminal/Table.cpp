#include "krohost/cli/terminal/Table.h"

#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <algorithm>

namespace krohost::cli {

namespace {

/// Characters, where every byte that does not continue one counts.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

} // namespace

Table::Table(std::vector<Column> columns) : columns_{std::move(columns)} {
    for (const Column& column : columns_)
        widths_.push_back(width(column.title));
}

void Table::addRow(std::vector<std::string> row) {
    for (std::size_t index = 0; index < row.size(); ++index) {
        row[index] = printableName(row[index]);
        widths_[index] = std::max(widths_[index], width(row[index]));
    }
    rows_.push_back(std::move(row));
}

std::string Table::text(Style style, const char* indent, std::size_t rowLimit) const {
    std::vector<std::string> titles;
    for (const Column& column : columns_)
        titles.push_back(column.title);
    const std::string heading = line(indent, titles);
    std::string result = style.heading(std::string_view{heading}.substr(0, heading.size() - 1)) + '\n';
    const std::size_t shownCount = std::min(rows_.size(), rowLimit);
    for (std::size_t index = 0; index < shownCount; ++index)
        result += line(indent, rows_[index]);
    if (shownCount < rows_.size())
        result += fmt::format("{}... and {} more\n", indent, rows_.size() - shownCount);
    return result;
}

std::string Table::line(const char* indent, const std::vector<std::string>& cells) const {
    std::string result = indent;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        const std::string padding(widths_[index] - width(cells[index]), ' ');
        result += columns_[index].align == Align::right ? padding + cells[index] : cells[index] + padding;
        result += "  ";
    }
    result.erase(result.find_last_not_of(' ') + 1);
    return result + '\n';
}

} // namespace krohost::cli
