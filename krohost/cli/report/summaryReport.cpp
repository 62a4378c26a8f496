#include "krohost/cli/report/summaryReport.h"

#include "krohost/cli/terminal/Table.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <tuple>
#include <vector>

namespace krohost::cli {

namespace {

constexpr std::size_t shownRowCount = 12, shownZoneCount = 5;

std::string text(std::int64_t number) {
    return std::to_string(number);
}

std::int64_t strandOf(const Zone& zone) {
    return zone.strandGroup.value_or(zone.strand);
}

/// Sum and extremes of a count over some zones.
struct Tally {
    std::int64_t sum = 0, least = INT64_MAX, greatest = 0;

    void add(std::int64_t count) {
        sum += count;
        least = std::min(least, count);
        greatest = std::max(greatest, count);
    }

    std::string text() const {
        return least == greatest ? fmt::format("{}, {} in each zone", sum, least)
                                 : fmt::format("{}, {} to {} in a zone", sum, least, greatest);
    }
};

struct ZoneGroup {
    std::int32_t firstZone = 0;
    std::int64_t zoneCount = 0;
    Tally nodes, elements;

    void add(const Zone& zone) {
        firstZone = firstZone == 0 ? zone.number : firstZone;
        ++zoneCount;
        nodes.add(zone.nodeCount);
        elements.add(zone.elementCount);
    }
};

/// `hexahedron, tetrahedron of order 2`, with at most five shapes.
std::string sectionsText(const Zone& zone) {
    constexpr std::size_t shownCount = 5;
    std::vector<std::string> shapes;
    for (const Section& section : zone.sections) {
        if (shapes.size() == shownCount)
            return fmt::format("{}, ... {} in all", fmt::join(shapes, ", "), zone.sections.size());
        shapes.push_back(inWords(section.shape) +
                         (section.gridOrder == 1 ? std::string{} : fmt::format(" of order {}", section.gridOrder)));
    }
    return fmt::format("{}", fmt::join(shapes, ", "));
}

std::string countText(const Dataset& dataset) {
    ZoneGroup all;
    std::set<double> times;
    std::set<std::int64_t> strands;
    for (const Zone& zone : dataset.zones) {
        all.add(zone);
        times.insert(zone.solutionTime);
        strands.insert(strandOf(zone));
    }
    const auto range = [](const auto& values) {
        return values.size() == 1
                   ? fmt::format("{}", *values.begin())
                   : fmt::format("{} to {}, {} different", *values.begin(), *values.rbegin(), values.size());
    };
    return fmt::format("Nodes     {}\nElements  {}\nTimes     {}\nStrands   {}\n", all.nodes.text(),
                       all.elements.text(), range(times), range(strands));
}

std::string kindTable(const Dataset& dataset, Style style) {
    std::map<std::tuple<std::string, std::string, std::int64_t>, ZoneGroup> kinds;
    for (const Zone& zone : dataset.zones) {
        const auto supplied = std::count_if(zone.variables.begin(), zone.variables.end(),
                                            [](const ZoneVariable& variable) { return variable.data != nullptr; });
        kinds[{inWords(zone.type), sectionsText(zone), supplied}].add(zone);
    }
    Table table{{{"Zones", Align::right},
                 {"Type", Align::left},
                 {"Variables", Align::right},
                 {"Nodes", Align::right},
                 {"Elements", Align::right},
                 {"First", Align::right},
                 {"Sections", Align::left}}};
    for (const auto& [kind, group] : kinds)
        table.addRow({text(group.zoneCount), std::get<0>(kind), text(std::get<2>(kind)), text(group.nodes.sum),
                      text(group.elements.sum), text(group.firstZone), std::get<1>(kind)});
    return table.text(style, "", shownRowCount);
}

std::string timeTable(const Dataset& dataset, Style style) {
    std::map<double, ZoneGroup> steps;
    for (const Zone& zone : dataset.zones)
        steps[zone.solutionTime].add(zone);
    if (steps.size() < 2)
        return {};
    Table table{{{"Time", Align::right},
                 {"Zones", Align::right},
                 {"Nodes", Align::right},
                 {"Elements", Align::right},
                 {"First", Align::right}}};
    for (const auto& [time, group] : steps)
        table.addRow({fmt::format("{}", time), text(group.zoneCount), text(group.nodes.sum), text(group.elements.sum),
                      text(group.firstZone)});
    return '\n' + table.text(style, "", shownRowCount);
}

struct VariableGroup {
    std::int64_t zoneCount = 0, valueCount = 0;
    StorageSummary extremes{0, NAN, NAN, 0};

    void add(const StorageSummary& summary) {
        extremes.min = std::fmin(extremes.min, summary.min); // passes over NaN
        extremes.max = std::fmax(extremes.max, summary.max);
    }
};

std::string variableTable(const Report& report, const Dataset& dataset, Style style) {
    std::map<std::tuple<std::int32_t, ValueLocation_e, FieldDataType_e>, VariableGroup> groups;
    for (const Zone& zone : dataset.zones)
        for (const ZoneVariable& variable : zone.variables) {
            if (!variable.data)
                continue;
            VariableGroup& group = groups[{variable.data->target().variable, variable.location, variable.type}];
            ++group.zoneCount;
            group.valueCount += variable.data->valueCount;
            if (const StorageSummary* summary = report.find(variable.data->target()))
                group.add(*summary);
        }
    std::vector<Column> columns{{"Variable", Align::right}, {"Name", Align::left},   {"Location", Align::left},
                                {"Type", Align::left},      {"Zones", Align::right}, {"Values", Align::right}};
    if (report.isDemanded)
        columns.insert(columns.end(), {{"Min", Align::right}, {"Max", Align::right}});
    Table table{columns};
    for (const auto& [key, group] : groups) {
        const auto [number, location, type] = key;
        std::vector<std::string> row{text(number),          dataset.variables[static_cast<std::size_t>(number) - 1],
                                     inWords(location),     inWords(type),
                                     text(group.zoneCount), text(group.valueCount)};
        if (report.isDemanded)
            row.insert(row.end(), {fmt::format("{:g}", group.extremes.min), fmt::format("{:g}", group.extremes.max)});
        table.addRow(std::move(row));
    }
    return table.text(style);
}

} // namespace

std::string zoneTable(const Dataset& dataset, std::size_t zoneCount, Style style) {
    Table table{{{"Zone", Align::right},
                 {"Name", Align::left},
                 {"Type", Align::left},
                 {"Nodes", Align::right},
                 {"Elements", Align::right},
                 {"Sections", Align::right},
                 {"Strand", Align::right},
                 {"Time", Align::right}}};
    for (const Zone& zone : dataset.zones) {
        if (zoneCount-- == 0)
            break;
        table.addRow({text(zone.number), zone.name, inWords(zone.type), text(zone.nodeCount), text(zone.elementCount),
                      text(static_cast<std::int64_t>(zone.sections.size())), text(strandOf(zone)),
                      fmt::format("{}", zone.solutionTime)});
    }
    return table.text(style);
}

std::string summaryReport(const Report& report, const Dataset& dataset, Style style) {
    return countText(dataset) + '\n' + kindTable(dataset, style) + timeTable(dataset, style) + '\n' +
           variableTable(report, dataset, style) + '\n' + zoneTable(dataset, shownZoneCount, style) +
           fmt::format("... and {} more; --all shows every zone\n", dataset.zones.size() - shownZoneCount);
}

} // namespace krohost::cli
