#include "krohost/cli/commands/table.h"
#include "krohost/cli/terminal/Table.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

/// The add-ons that the library at `path` has registered, and their loaders, for programs.
ordered_json addOnsDocument(const Host& host, const std::filesystem::path& path) {
    ordered_json addOns = ordered_json::array(), loaders = ordered_json::array();
    for (const KroAddOn& addOn : host.addOns())
        addOns.push_back({{"name", addOn.name}, {"version", addOn.version}, {"author", addOn.author}});
    for (const Loader& loader : host.loaders())
        loaders.push_back(
            {{"name", loader.name}, {"patterns", loader.patterns}, {"takesSeveralFiles", loader.takesSeveralFiles}});
    return {{"path", path.string()}, {"addOns", addOns}, {"loaders", loaders}};
}

/// The same document for people.
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

class AddOns : public Command {
public:
    explicit AddOns(CLI::App& app) {
        addAddOnOption(app, host);
        addJsonOption(app, output);
        addOutputOptions(app, output);
    }

    bool hasFiles() const override { return false; }

    Outcome run(Session& session) override {
        Outcome outcome;
        outcome.report.isLoaded = true; // there is nothing to load
        outcome.document = addOnsDocument(session.host, session.addOn);
        outcome.text = addOnsTable(outcome.document, session.console.outputStyle());
        return outcome;
    }
};

} // namespace

const CommandEntry addOnsCommand{"addons", "Show the add-on and the loaders that it brings",
                                 "  krohost addons                            which files can be loaded\n"
                                 "  krohost addons --json\n",
                                 makeCommand<AddOns>};

} // namespace krohost::cli
