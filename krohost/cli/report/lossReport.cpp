#include "krohost/cli/report/lossReport.h"

#include "krohost/cli/report/jsonReport.h"
#include "krohost/convert/WriteError.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

/// Numbers that a double cannot hold are texts.
ordered_json number(long double value) {
    return reader::inDigits(value);
}

} // namespace

ordered_json lossList(const convert::Losses& losses) {
    ordered_json list = ordered_json::array();
    for (const convert::Loss& loss : losses.list()) {
        ordered_json object{{"what", loss.what},
                            {"message", convert::sentence(loss)},
                            {"array", textOrNull(loss.array)},
                            {"location", textOrNull(loss.location)},
                            {"file", textOrNull(loss.file)},
                            {"files", loss.fileCount},
                            {"count", loss.count},
                            {"first", nullptr}};
        if (loss.first)
            object["first"] = {{"index", loss.first->tuple},
                               {"component", loss.first->component},
                               {"value", number(loss.first->value)},
                               {"held", number(loss.first->held)}};
        list.push_back(std::move(object));
    }
    return list;
}

void printLosses(const Console& console, const convert::Losses& losses) {
    for (const convert::Loss& loss : losses.list())
        console.warning(convert::sentence(loss));
}

convert::Losses lossesOfLoad(const Plan& plan, const convert::UsedArrays& used) {
    std::vector<std::filesystem::path> files;
    const auto add = [&files](const std::vector<std::string>& names) {
        std::error_code ignored;
        for (const std::string& name : names) // of a layout's texts some are files
            if (std::filesystem::is_regular_file(name, ignored))
                files.emplace_back(name);
    };
    add(plan.layout ? plan.layout->strings : paths(plan.files));
    add(paths(plan.appendedFiles));
    try {
        return convert::narrowingLosses(files, used);
    } catch (const convert::Interrupted&) {
        return {};
    }
}

convert::UsedArrays allArrays(const Dataset& dataset) {
    const bool areNodesNarrow = std::any_of(dataset.zones.begin(), dataset.zones.end(), [](const Zone& zone) {
        return zone.nodeMap && zone.nodeMap->itemByteCount() == sizeof(std::int32_t);
    });
    return {[](const reader::Array&) { return true; }, areNodesNarrow};
}

} // namespace krohost::cli
