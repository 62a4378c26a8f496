#include "krohost/cli/commands/dump.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/input/selection.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/csv.h"
#include "krohost/convert/zoneFiles.h"
#include "krohost/host/model/itemType.h"
#include "krohost/text/quoted.h"

#include <fmt/compile.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <type_traits>

namespace krohost::cli {

static_assert(std::endian::native == std::endian::little, "storage is written as it is");

namespace {

using nlohmann::ordered_json;

/// A part and where it is in memory.
struct LoadedPart : Part {
    const Deferred* data; ///< null when it could not be loaded
    /// Appends an item, in the shortest text that reads back to it.
    void (*writeItem)(fmt::memory_buffer& buffer, const Storage& storage, std::int64_t index);
    /// The same, with null for what is no number.
    void (*writeJsonItem)(fmt::memory_buffer& buffer, const Storage& storage, std::int64_t index);

    const Storage& storage() const { return data->parts()[partIndex]; }
};

using LoadedParts = std::vector<LoadedPart>;

template <class Item, bool isJson>
void writeItem(fmt::memory_buffer& buffer, const Storage& storage, std::int64_t index) {
    const Item item = storage.items<Item>()[static_cast<std::size_t>(index)];
    if constexpr (isJson && std::is_floating_point_v<Item>) {
        if (!std::isfinite(item)) {
            buffer.append(std::string_view{"null"});
            return;
        }
        if (item == 0 && std::signbit(item)) { // "-0" is an integer, which has no sign when it is read
            buffer.append(std::string_view{"-0.0"});
            return;
        }
    }
    fmt::format_to(std::back_inserter(buffer), FMT_COMPILE("{}"), item);
}

LoadedPart loaded(const Part& part, const Deferred* data) {
    LoadedPart result{part, data, nullptr, nullptr};
    if (data)
        withItemType(*data, [&]<class Item>(ItemTag<Item>) {
            result.writeItem = writeItem<Item, false>;
            result.writeJsonItem = writeItem<Item, true>;
        });
    return result;
}

template <class... Arguments>
void print(OutputStream& output, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(output.buffer()), format, std::forward<Arguments>(arguments)...);
}

/// One row of each part, side by side.
void writeRow(OutputStream& output, std::span<const LoadedPart> parts, std::int64_t row, std::string_view separator) {
    std::string_view before;
    for (const LoadedPart& part : parts)
        for (std::int64_t index = row * part.rowLength; index < (row + 1) * part.rowLength; ++index) {
            output.buffer().append(before);
            part.writeItem(output.buffer(), part.storage(), index);
            before = separator;
        }
}

std::string title(const Dataset& dataset, const Selection& selection, const Part& part) {
    if (selection.isNodeMap) {
        const Section& section = selection.zone.sections[part.partIndex];
        return fmt::format("section {}: {}, grid order {}, {} elements of {} nodes", part.partIndex + 1,
                           inWords(section.shape), section.gridOrder, part.rowCount, part.rowLength);
    }
    const ZoneVariable& variable = *selection.zone.suppliedVariable(part.target.variable);
    return fmt::format("{}: {} {}, {} values",
                       krohost::quoted(dataset.variables[static_cast<std::size_t>(part.target.variable) - 1]),
                       inWords(variable.location), inWords(variable.type), part.rowCount);
}

void writeTextTable(OutputStream& output, std::span<const LoadedPart> parts) {
    const Part& first = parts.front();
    const std::size_t width = fmt::formatted_size("{}", std::max<std::int64_t>(first.end - 1, 0));
    for (std::int64_t row = first.begin; row < first.end && !Host::isInterrupted(); ++row) {
        print(output, "{:>{}}  ", row, width);
        writeRow(output, parts, row, "  ");
        print(output, "\n");
        output.advance();
    }
}

/// Variables side by side; sections one after the other.
void writeText(OutputStream& output, const Dataset& dataset, const Selection& selection, const LoadedParts& parts) {
    const std::size_t tableLength = selection.isNodeMap ? 1 : parts.size();
    print(output, "# zone {} {}\n", selection.zone.number, krohost::quoted(selection.zone.name));
    for (std::size_t index = 0; index < parts.size(); index += tableLength) {
        const auto table = std::span{parts}.subspan(index, tableLength);
        for (const LoadedPart& part : table)
            print(output, "# {}\n", title(dataset, selection, part));
        writeTextTable(output, table);
    }
}

void writeCsv(OutputStream& output, const Dataset& dataset, const Selection& selection, const LoadedParts& parts) {
    std::vector<std::string> names;
    if (selection.isNodeMap)
        for (std::int64_t number = 1; number <= parts.front().rowLength; ++number)
            names.push_back(fmt::format("node{}", number));
    else
        for (const LoadedPart& part : parts)
            names.push_back(convert::csvText(dataset.variables[static_cast<std::size_t>(part.target.variable) - 1]));
    print(output, "{}\n", fmt::join(names, ","));
    for (std::int64_t row = parts.front().begin; row < parts.front().end && !Host::isInterrupted(); ++row) {
        writeRow(output, parts, row, ",");
        print(output, "\n");
        output.advance();
    }
}

void writeRaw(OutputStream& output, const LoadedPart& part) {
    const std::size_t rowByteCount = static_cast<std::size_t>(part.rowLength) * part.data->itemByteCount();
    output.write(part.storage().bytes().subspan(static_cast<std::size_t>(part.begin) * rowByteCount,
                                                static_cast<std::size_t>(part.end - part.begin) * rowByteCount));
}

/// The header of version 1.0 ends in a line feed at a multiple of 64 bytes.
void writeNpy(OutputStream& output, const LoadedPart& part) {
    const char* type = withItemType(*part.data, []<class Item>(ItemTag<Item>) {
        constexpr const char* integers[]{"|u1", "<i2", "<i4", "<i8"}; // by the binary logarithm of the size
        return std::is_same_v<Item, float>    ? "<f4"
               : std::is_same_v<Item, double> ? "<f8"
                                              : integers[std::countr_zero(sizeof(Item))];
    });
    const std::string columns = part.target.variable == 0 ? fmt::format(" {}", part.rowLength) : std::string{};
    const std::string header = fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': ({},{}), }}", type,
                                           part.end - part.begin, columns);
    const std::size_t length = (10 + header.size() + 1 + 63) / 64 * 64 - 10; // behind the ten bytes that tell it
    output.buffer().append(std::string_view{"\x93NUMPY\1\0", 8});
    output.buffer().push_back(static_cast<char>(length & 0xFF));
    output.buffer().push_back(static_cast<char>(length >> 8));
    print(output, "{:<{}}\n", header, length - 1);
    writeRaw(output, part);
}

/// What is known of a part without its values.
ordered_json description(const Dataset& dataset, const Selection& selection, const Part& part) {
    if (selection.isNodeMap) {
        const Section& section = selection.zone.sections[part.partIndex];
        return {{"number", part.partIndex + 1},   {"shape", inWords(section.shape)},
                {"gridOrder", section.gridOrder}, {"nodesPerElement", part.rowLength},
                {"elements", part.rowCount},      {"first", part.begin}};
    }
    const ZoneVariable& variable = *selection.zone.suppliedVariable(part.target.variable);
    return {{"number", part.target.variable},
            {"name", dataset.variables[static_cast<std::size_t>(part.target.variable) - 1]},
            {"type", inWords(variable.type)},
            {"location", inWords(variable.location)},
            {"count", part.rowCount},
            {"first", part.begin}};
}

void writeJsonItems(OutputStream& output, const LoadedPart& part) {
    const bool isNodeMap = part.target.variable == 0;
    if (!part.data) {
        print(output, "null");
        return;
    }
    print(output, "[");
    for (std::int64_t row = part.begin; row < part.end && !Host::isInterrupted(); ++row) {
        print(output, "{}{}", row == part.begin ? "" : ",", isNodeMap ? "[" : "");
        for (std::int64_t column = 0; column < part.rowLength; ++column) {
            print(output, "{}", column == 0 ? "" : ",");
            part.writeJsonItem(output.buffer(), part.storage(), row * part.rowLength + column);
        }
        print(output, "{}", isNodeMap ? "]" : "");
        output.advance();
    }
    print(output, "]");
}

void writeJson(OutputStream& output, const Dataset& dataset, const Selection& selection, const LoadedParts& parts) {
    const ordered_json zone{{"number", selection.zone.number}, {"name", selection.zone.name}};
    print(output, "{{\"loaded\":true,\"zone\":{},\"{}\":[", jsonText(zone),
          selection.isNodeMap ? "sections" : "variables");
    for (const LoadedPart& part : parts) {
        std::string object = jsonText(description(dataset, selection, part));
        object.pop_back(); // the bracket, before which the items belong
        print(output, "{}\n{},\"{}\":", &part == parts.data() ? "" : ",", object,
              selection.isNodeMap ? "nodes" : "values");
        writeJsonItems(output, part);
        print(output, "}}");
    }
    print(output, "],\n");
}

void requireSafeOutput(const CommandLine& line) {
    const bool isBinary = line.dump.format == DumpFormat::npy || line.dump.format == DumpFormat::raw;
    if (isBinary && line.dump.outputFile.empty() && isatty(STDOUT_FILENO) == 1)
        throw Failure("The formats npy and raw are not for terminals; name a file with -o.", Exit_Usage);
}

void write(OutputStream& output, const CommandLine& line, const Dataset& dataset, const Selection& selection,
           const LoadedParts& parts) {
    if (line.isJson)
        return writeJson(output, dataset, selection, parts);
    switch (line.dump.format) {
    case DumpFormat::text:
        return writeText(output, dataset, selection, parts);
    case DumpFormat::csv:
        return writeCsv(output, dataset, selection, parts);
    case DumpFormat::npy:
        return writeNpy(output, parts.front());
    case DumpFormat::raw:
        for (const LoadedPart& part : parts)
            writeRaw(output, part);
    }
}

/// The files that the zone may come from: one, where a file is known for each zone.
std::vector<std::filesystem::path> filesOf(const Dataset& dataset, const Zone& zone, const Plan& plan) {
    const std::vector<std::string> names = paths(plan.files);
    if (names.size() == 1 && dataset.zones.size() == 1)
        return {names.front()};
    auto [files, collections, areKnown] = convert::zoneFiles({names.begin(), names.end()}, dataset.zones.size());
    if (areKnown)
        files = {files[static_cast<std::size_t>(zone.number) - 1]};
    return files;
}

convert::Losses lossesOf(const Dataset& dataset, const Selection& selection, const CommandLine& line,
                         const Plan& plan) {
    const std::vector<std::string>& wanted = line.dump.variables;
    const auto isWanted = [&](const reader::Array& array) {
        if (array.section == reader::Section::cells || array.section == reader::Section::fieldData)
            return selection.isNodeMap && array.section == reader::Section::cells;
        const std::vector<std::string> names = reader::variableNames(array);
        const char* location = array.section == reader::Section::cellData ? "cell" : "nodal";
        return (line.dump.location.empty() || line.dump.location == location) &&
               std::find_first_of(names.begin(), names.end(), wanted.begin(), wanted.end()) != names.end();
    };
    const bool areNodesNarrow = selection.isNodeMap && selection.zone.nodeMap->itemByteCount() == sizeof(std::int32_t);
    try {
        const std::vector<std::filesystem::path> files = filesOf(dataset, selection.zone, plan);
        convert::Losses losses = convert::narrowingLosses(files, {isWanted, areNodesNarrow, isWanted});
        if (line.dump.format == DumpFormat::csv && !line.isJson)
            convert::addCsvRenamings(wanted, losses);
        return losses;
    } catch (const convert::Interrupted&) {
        return {};
    }
}

} // namespace

std::unique_ptr<OutputStream> dump(Host& host, const CommandLine& line, const Plan& plan, Report& report) {
    const Dataset& dataset = host.dataset();
    const Selection selection = select(dataset, line.dump);
    requireSafeOutput(line);
    std::vector<Hold> holds; // of the one node map, or of each variable
    LoadedParts parts;
    for (const Part& part : selection.parts) {
        if (holds.empty() || !selection.isNodeMap) {
            holds.push_back(host.hold(dataset, part.target));
            report.demands.push_back({part.target, holds.back().data() != nullptr, {}});
        }
        parts.push_back(loaded(part, holds.back().data()));
    }
    const bool areLoaded = std::all_of(report.demands.begin(), report.demands.end(),
                                       [](const DemandResult& result) { return result.isLoaded; });
    if (!areLoaded && !line.isJson)
        return nullptr;
    report.losses = lossesOf(dataset, selection, line, plan);
    if (line.isStrict && !report.losses.empty()) {
        return nullptr;
    }
    auto output = std::make_unique<OutputStream>(line.dump.outputFile, plan.permission);
    write(*output, line, dataset, selection, parts);
    return output;
}

void finishDump(OutputStream& output, const CommandLine& line, const Report& report,
                const std::vector<std::string>& dialogs, const std::vector<std::string>& violations,
                const std::string& error) {
    if (line.isJson)
        print(output, "\"losses\":{},\"error\":{},\"dialogs\":{},\"violations\":{}}}\n",
              jsonText(lossList(report.losses)), jsonText(error.empty() ? ordered_json() : ordered_json(error)),
              jsonText(dialogs), jsonText(violations));
    if (line.dump.outputFile.empty() || !Host::isInterrupted())
        output.finish();
}

} // namespace krohost::cli
