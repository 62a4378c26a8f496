#include "krohost/cli/report/jsonReport.h"

#include "krohost/cli/report/lossReport.h"
#include "krohost/text/printable.h"

#include <nlohmann/json.hpp>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

ordered_json variableList(const Dataset& dataset) {
    ordered_json list = ordered_json::array();
    for (const std::string& name : dataset.variables)
        list.push_back({{"number", list.size() + 1}, {"name", name}});
    return list;
}

ordered_json checksum(const StorageSummary* summary) {
    return summary ? ordered_json(hexadecimal(summary->crc32)) : ordered_json();
}

ordered_json sectionList(const Report& report, const Zone& zone) {
    ordered_json list = ordered_json::array();
    for (std::size_t index = 0; index < zone.sections.size(); ++index) {
        const Section& section = zone.sections[index];
        ordered_json entry{{"number", index + 1},
                           {"shape", inWords(section.shape)},
                           {"shapeCode", section.shape},
                           {"gridOrder", section.gridOrder},
                           {"nodesPerElement", section.nodesPerElement()},
                           {"elements", section.elementCount}};
        if (report.isDemanded)
            entry["crc32"] = checksum(report.find({zone.number, 0}, index));
        list.push_back(std::move(entry));
    }
    return list;
}

ordered_json zoneVariableList(const Report& report, const Zone& zone) {
    ordered_json list = ordered_json::array();
    for (const ZoneVariable& variable : zone.variables) {
        if (!variable.data)
            continue;
        const Target target = variable.data->target();
        ordered_json entry{{"number", target.variable},
                           {"type", inWords(variable.type)},
                           {"location", inWords(variable.location)},
                           {"count", variable.data->valueCount}};
        if (report.isDemanded) {
            const StorageSummary* summary = report.find(target);
            entry["min"] = summary ? ordered_json(summary->min) : ordered_json(); // NaN is written as null
            entry["max"] = summary ? ordered_json(summary->max) : ordered_json();
            entry["crc32"] = checksum(summary);
        }
        list.push_back(std::move(entry));
    }
    return list;
}

ordered_json zoneList(const Report& report, const Dataset& dataset) {
    ordered_json list = ordered_json::array();
    for (const Zone& zone : dataset.zones)
        list.push_back({{"number", zone.number},
                        {"name", zone.name},
                        {"zoneType", zone.type},
                        {"nodes", zone.nodeCount},
                        {"elements", zone.elementCount},
                        {"strand", zone.strand},
                        {"strandGroup", zone.strandGroup ? ordered_json(*zone.strandGroup) : ordered_json()},
                        {"solutionTime", zone.solutionTime},
                        {"aux", ordered_json(zone.auxiliaryData)},
                        {"sections", sectionList(report, zone)},
                        {"variables", zoneVariableList(report, zone)}});
    return list;
}

} // namespace

ordered_json textOrNull(const std::string& text) {
    return text.empty() ? ordered_json() : ordered_json(text);
}

std::string jsonText(const ordered_json& value, int indent) {
    return printableJson(value.dump(indent, ' ', false, ordered_json::error_handler_t::replace));
}

ordered_json jsonReport(const Report& report, const Dataset& dataset) {
    const auto instructions = dataset.instructions ? dataset.instructions->strings : std::vector<std::string>{};
    return {{"loader", textOrNull(report.loaderName)},
            {"loaded", report.isLoaded},
            {"error", nullptr},
            {"title", textOrNull(dataset.title)},
            {"instructions", instructions},
            {"dialogs", ordered_json::array()},
            {"stoppedAt", textOrNull(report.stoppedAt)},
            {"violations", ordered_json::array()},
            {"losses", lossList(report.losses)},
            {"variables", variableList(dataset)},
            {"zones", zoneList(report, dataset)}};
}

} // namespace krohost::cli
