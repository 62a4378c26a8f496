#include "krohost/cli/input/selection.h"

#include "krohost/cli/terminal/Failure.h"
#include "krohost/text/quoted.h"
#include "krohost/text/suggest.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace krohost::cli {

namespace {

std::optional<std::int64_t> parsePlace(const std::string& text) {
    std::int64_t place = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), place);
    const bool isWhole = result.ec == std::errc{} && result.ptr == text.data() + text.size();
    return isWhole && place >= 0 ? std::optional{place} : std::nullopt;
}

template <class... Arguments>
[[noreturn]] void fail(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    throw Failure(fmt::format(format, std::forward<Arguments>(arguments)...), Exit_Usage);
}

std::string nameOf(const Zone& zone) {
    return fmt::format("zone {} {}", zone.number, krohost::quoted(zone.name));
}

/// A name takes precedence over a number.
const Zone& findZone(const Dataset& dataset, const std::string& wanted) {
    const auto fits = [&](const Zone& zone) { return wanted.empty() || zone.name == wanted; };
    const auto count = std::count_if(dataset.zones.begin(), dataset.zones.end(), fits);
    if (count == 1)
        return *std::find_if(dataset.zones.begin(), dataset.zones.end(), fits);
    if (count > 1)
        fail("There are {} zones{}; choose one by its number with --zone.", count,
             wanted.empty() ? "" : " " + krohost::quoted(wanted));
    for (const Zone& zone : dataset.zones)
        if (std::to_string(zone.number) == wanted)
            return zone;
    fail("There is no zone {}; there are {}.", krohost::quoted(wanted), dataset.zones.size());
}

Part makePart(Target target, std::size_t partIndex, std::int64_t rowCount, std::int64_t rowLength,
              const SelectionOptions& options) {
    const Range range = options.range.value_or(Range{});
    const std::int64_t end = range.end.value_or(rowCount);
    if (range.begin > rowCount || end > rowCount)
        fail("The range {}:{} is too large: there are {} {}.", range.begin, range.end ? std::to_string(end) : "",
             rowCount, target.variable == 0 ? "elements" : "values");
    return {target, partIndex, rowCount, rowLength, range.begin, end};
}

std::vector<std::string> variableNames(const Dataset& dataset, const Zone& zone, const std::string& location) {
    std::vector<std::string> names;
    for (const ZoneVariable& variable : zone.variables)
        if (variable.data && (location.empty() || location == inWords(variable.location)))
            names.push_back(dataset.variables[static_cast<std::size_t>(variable.data->target().variable) - 1]);
    return names;
}

Part findVariable(const Dataset& dataset, const Zone& zone, const std::string& name, const SelectionOptions& options) {
    std::vector<const ZoneVariable*> found;
    for (const ZoneVariable& variable : zone.variables)
        if (variable.data &&
            dataset.variables[static_cast<std::size_t>(variable.data->target().variable) - 1] == name &&
            (options.location.empty() || options.location == inWords(variable.location)))
            found.push_back(&variable);
    if (found.empty())
        fail("{}", noSuch(options.location.empty() ? "variable" : (options.location + " variable").c_str(), name,
                          variableNames(dataset, zone, options.location)));
    if (found.size() > 1)
        fail("There are {} variables {} in {}; choose one with --location.", found.size(), krohost::quoted(name),
             nameOf(zone));
    return makePart(found.front()->data->target(), 0, found.front()->data->valueCount, 1, options);
}

std::vector<Part> findSections(const Zone& zone, const SelectionOptions& options, bool needsOne) {
    if (!zone.nodeMap)
        fail("There is no node map in {}.", nameOf(zone));
    const auto count = static_cast<std::int32_t>(zone.sections.size());
    if (options.section && (*options.section < 1 || *options.section > count))
        fail("There is no section {} in {}; there are {}.", *options.section, nameOf(zone), count);
    if (!options.section && count > 1 && (needsOne || options.range))
        fail("There are {} sections in {}; choose one with --section.", count, nameOf(zone));
    std::vector<Part> parts;
    for (std::int32_t number = options.section.value_or(1); number <= options.section.value_or(count); ++number) {
        const auto index = static_cast<std::size_t>(number) - 1;
        const Section& section = zone.sections[index];
        parts.push_back(makePart({zone.number, 0}, index, section.elementCount, section.nodesPerElement(), options));
    }
    return parts;
}

/// Columns of one table have one length.
void requireTable(const std::vector<Part>& parts) {
    for (const Part& part : parts)
        if (part.rowCount != parts.front().rowCount)
            fail("Variables with {} and {} values are not columns of one table.", parts.front().rowCount,
                 part.rowCount);
}

} // namespace

std::optional<Range> parseRange(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos)
        return std::nullopt;
    const std::string begin = text.substr(0, colon), end = text.substr(colon + 1);
    const std::optional<std::int64_t> first = begin.empty() ? 0 : parsePlace(begin);
    const std::optional<std::int64_t> last = end.empty() ? std::nullopt : parsePlace(end);
    if (!first || (!last && !end.empty()) || (last && *last < *first))
        return std::nullopt;
    return Range{*first, last};
}

void addSelectionOptions(CLI::App& command, SelectionOptions& options) {
    auto* variable =
        command.add_option("--variable", options.variables, "Variable to write; several ones become columns")
            ->allow_extra_args(false)
            ->type_name("NAME");
    auto* nodeMap = command
                        .add_flag(
                            "--node-map", [](std::int64_t) {}, "Write the nodes of each element instead")
                        ->excludes(variable);
    command.add_option("--location", options.location, "Which of two variables of one name is meant")
        ->check(CLI::IsMember({"nodal", "cell"}))
        ->needs(variable);
    command.add_option("--zone", options.zone, "Zone, where there are several")->type_name("N|NAME");
    command.add_option("--section", options.section, "Section, from 1 (default: all)")->needs(nodeMap);
    command
        .add_option_function<std::string>(
            "--range", [&options](const std::string& text) { options.range = parseRange(text); },
            "Values or elements from A up to, but without, B, counted from 0; either may be missing")
        ->check([](const std::string& text) { return parseRange(text) ? "" : text + " is not a range"; })
        ->type_name("A:B");
    command.callback([variable, nodeMap] {
        if (variable->count() + nodeMap->count() == 0)
            throw CLI::RequiredError("--variable or --node-map");
    });
}

Selection select(const Dataset& dataset, const SelectionOptions& options, bool needsOneSection) {
    const Zone& zone = findZone(dataset, options.zone);
    if (options.variables.empty())
        return {zone, true, findSections(zone, options, needsOneSection)};
    Selection selection{zone, false, {}};
    for (const std::string& name : options.variables)
        selection.parts.push_back(findVariable(dataset, zone, name, options));
    requireTable(selection.parts);
    return selection;
}

} // namespace krohost::cli
