#include "krohost/cli/commands/addons.h"

#include "krohost/cli/options.h"
#include "krohost/cli/terminal/Table.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

namespace krohost::cli {

using nlohmann::ordered_json;

void addAddOnsOptions(CLI::App& command, CommandLine& line) {
    addAddOnOption(command, line);
    command.add_flag("--json", line.isJson, "Print one JSON document");
    addOutputOptions(command, line);
}

ordered_json addOnsDocument(const Host& host, const std::filesystem::path& path) {
    ordered_json addOns = ordered_json::array(), loaders = ordered_json::array();
    for (const KroAddOn& addOn : host.addOns())
        addOns.push_back({{"name", addOn.name}, {"version", addOn.version}, {"author", addOn.author}});
    for (const Loader& loader : host.loaders())
        loaders.push_back(
            {{"name", loader.name}, {"patterns", loader.patterns}, {"takesSeveralFiles", loader.takesSeveralFiles}});
    return {{"path", path.string()}, {"addOns", addOns}, {"loaders", loaders}};
}

std::string addOnsTable(const ordered_json& document, Style style) {
    std::string result;
    for (const ordered_json& addOn : document["addOns"])
        result += fmt::format("{} {} ({})\n", printableLine(addOn["name"].get<std::string>()),
                              printableLine(addOn["version"].get<std::string>()),
                              printableLine(addOn["author"].get<std::string>()));
    result += fmt::format("  {}\n\n", printableLine(document["path"].get<std::string>()));
    Table table{{{"Loader", Align::left}, {"Files", Align::left}, {"At once", Align::left}}};
    for (const ordered_json& loader : document["loaders"])
        table.addRow({loader["name"],
                      fmt::format("{}", fmt::join(loader["patterns"].get<std::vector<std::string>>(), " ")),
                      loader["takesSeveralFiles"] ? "several" : "one"});
    return result + table.text(style);
}

} // namespace krohost::cli
