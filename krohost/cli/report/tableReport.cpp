#include "krohost/cli/report/tableReport.h"

#include "krohost/cli/report/summaryReport.h"
#include "krohost/cli/terminal/Table.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

namespace krohost::cli {

namespace {

std::string text(std::int64_t number) {
    return std::to_string(number);
}

std::string sectionTable(const Report& report, const Zone& zone, Style style) {
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
    return zone.sections.empty() ? "" : table.text(style, "  ");
}

std::string variableTable(const Report& report, const Dataset& dataset, const Zone& zone, Style style) {
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
    return table.text(style, "  ");
}

} // namespace

std::string tableReport(const Report& report, const Dataset& dataset, Style style, bool isShowingAll) {
    constexpr std::size_t manyZones = 33;
    std::string result = style.heading(fmt::format("{} ({}): {} zone{}, {} variables", printableLine(dataset.title),
                                                   printableLine(report.loaderName), dataset.zones.size(),
                                                   dataset.zones.size() == 1 ? "" : "s", dataset.variables.size())) +
                         "\n\n";
    if (dataset.zones.size() >= manyZones && !isShowingAll)
        return result + summaryReport(report, dataset, style);
    result += zoneTable(dataset, dataset.zones.size(), style);
    for (const Zone& zone : dataset.zones) {
        result += '\n' + style.heading(fmt::format("Zone {}, {}", zone.number, printableName(zone.name))) + '\n';
        for (const auto& [name, value] : zone.auxiliaryData)
            result += fmt::format("  {} = {}\n", printableName(name), printableName(value));
        result += sectionTable(report, zone, style) + variableTable(report, dataset, zone, style);
    }
    return result;
}

} // namespace krohost::cli
