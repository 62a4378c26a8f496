#include "krohost/cli/tableReport.h"

#include <fmt/format.h>

#include <algorithm>

namespace krohost::cli {

namespace {

enum class Align { left, right };

struct Column {
    std::string title;
    Align align;
};

/// Columns as wide as their widest text, two blanks apart.
class Table {
public:
    explicit Table(std::vector<Column> columns) : columns_{std::move(columns)} {
        for (const Column& column : columns_)
            widths_.push_back(width(column.title));
    }

    void addRow(std::vector<std::string> row) {
        for (std::size_t index = 0; index < row.size(); ++index)
            widths_[index] = std::max(widths_[index], width(row[index]));
        rows_.push_back(std::move(row));
    }

    std::string text(const char* indent) const {
        std::vector<std::string> titles;
        for (const Column& column : columns_)
            titles.push_back(column.title);
        std::string result = line(indent, titles);
        for (const auto& row : rows_)
            result += line(indent, row);
        return result;
    }

private:
    /// Characters, where every byte that does not continue one counts.
    static std::size_t width(const std::string& text) {
        return static_cast<std::size_t>(std::count_if(
            text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
    }

    std::string line(const char* indent, const std::vector<std::string>& cells) const {
        std::string result = indent;
        for (std::size_t index = 0; index < cells.size(); ++index) {
            const std::string padding(widths_[index] - width(cells[index]), ' ');
            result += columns_[index].align == Align::right ? padding + cells[index] : cells[index] + padding;
            result += "  ";
        }
        result.erase(result.find_last_not_of(' ') + 1);
        return result + '\n';
    }

    std::vector<Column> columns_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<std::string>> rows_;
};

std::string text(std::int64_t number) {
    return std::to_string(number);
}

std::string zoneTable(const Dataset& dataset) {
    Table table{{{"Zone", Align::right},
                 {"Name", Align::left},
                 {"Type", Align::left},
                 {"Nodes", Align::right},
                 {"Elements", Align::right},
                 {"Sections", Align::right},
                 {"Strand", Align::right},
                 {"Time", Align::right}}};
    for (const Zone& zone : dataset.zones)
        table.addRow({text(zone.number), zone.name, inWords(zone.type), text(zone.nodeCount), text(zone.elementCount),
                      text(static_cast<std::int64_t>(zone.sections.size())),
                      text(zone.strandGroup.value_or(zone.strand)), fmt::format("{}", zone.solutionTime)});
    return table.text("");
}

std::string sectionTable(const Report& report, const Zone& zone) {
    Table table{{{"Section", Align::right},
                 {"Shape", Align::left},
                 {"Grid order", Align::right},
                 {"Nodes each", Align::right},
                 {"Elements", Align::right},
                 {report.isDemanded ? "CRC-32" : "", Align::left}}};
    for (std::size_t index = 0; index < zone.sections.size(); ++index) {
        const Section& section = zone.sections[index];
        const StorageSummary* summary = report.find({zone.number, 0}, index);
        table.addRow({text(static_cast<std::int64_t>(index) + 1), inWords(section.shape), text(section.gridOrder),
                      text(section.nodesPerElement()), text(section.elementCount),
                      summary ? hexadecimal(summary->crc32) : ""});
    }
    return zone.sections.empty() ? "" : table.text("  ");
}

std::string variableTable(const Report& report, const Dataset& dataset, const Zone& zone) {
    std::vector<Column> columns{{"Variable", Align::right},
                                {"Name", Align::left},
                                {"Location", Align::left},
                                {"Type", Align::left},
                                {"Values", Align::right}};
    if (report.isDemanded)
        for (const char* title : {"Min", "Max", "CRC-32"})
            columns.push_back({title, Align::right});
    Table table{columns};
    for (const ZoneVariable& variable : zone.variables) {
        if (!variable.data)
            continue;
        const Target target = variable.data->target();
        std::vector<std::string> row{
            text(target.variable), dataset.variables[static_cast<std::size_t>(target.variable) - 1],
            inWords(variable.location), inWords(variable.type), text(variable.data->valueCount)};
        if (const StorageSummary* summary = report.find(target))
            row.insert(row.end(), {fmt::format("{:g}", summary->min), fmt::format("{:g}", summary->max),
                                   hexadecimal(summary->crc32)});
        table.addRow(std::move(row));
    }
    return table.text("  ");
}

} // namespace

std::string tableReport(const Report& report, const Dataset& dataset) {
    std::string result =
        fmt::format("{} ({}): {} zone{}, {} variables\n\n", dataset.title, report.loaderName, dataset.zones.size(),
                    dataset.zones.size() == 1 ? "" : "s", dataset.variables.size());
    result += zoneTable(dataset);
    for (const Zone& zone : dataset.zones) {
        result += fmt::format("\nZone {}, {}\n", zone.number, zone.name);
        for (const auto& [name, value] : zone.auxiliaryData)
            result += fmt::format("  {} = {}\n", name, value);
        result += sectionTable(report, zone) + variableTable(report, dataset, zone);
    }
    return result;
}

} // namespace krohost::cli
