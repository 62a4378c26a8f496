#include "krohost/cli/commands/dumpFormats.h"

#include "krohost/cli/report/jsonReport.h"
#include "krohost/convert/csv.h"
#include "krohost/host/model/itemType.h"
#include "krohost/host/runtime/Host.h"
#include "krohost/text/quoted.h"

#include <fmt/compile.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <span>
#include <type_traits>

namespace krohost::cli {

static_assert(std::endian::native == std::endian::little, "storage is written as it is");

namespace {

using nlohmann::ordered_json;

struct PrintedPart : LoadedPart {
    /// Appends an item, in the shortest text that reads back to it; as JSON, null for what is no number.
    void (*writeItem)(fmt::memory_buffer& buffer, const Storage& storage, std::int64_t index) = nullptr;
};

struct Values {
    const Dataset& dataset;
    const Selection& selection;
    std::vector<PrintedPart> parts;
};

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

template <class... Arguments>
void print(OutputStream& output, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(output.buffer()), format, std::forward<Arguments>(arguments)...);
}

/// One row of each part, side by side.
void writeRow(OutputStream& output, std::span<const PrintedPart> parts, std::int64_t row, std::string_view separator) {
    std::string_view before;
    for (const PrintedPart& part : parts)
        for (std::int64_t index = row * part.rowLength; index < (row + 1) * part.rowLength; ++index) {
            output.buffer().append(before);
            part.writeItem(output.buffer(), part.storage(), index);
            before = separator;
        }
}

std::string title(const Values& values, const Part& part) {
    const auto& [dataset, selection, parts] = values;
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

void writeTextTable(OutputStream& output, std::span<const PrintedPart> parts) {
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
void writeText(OutputStream& output, const Values& values) {
    const auto& [dataset, selection, parts] = values;
    const std::size_t tableLength = selection.isNodeMap ? 1 : parts.size();
    print(output, "# zone {} {}\n", selection.zone.number, krohost::quoted(selection.zone.name));
    for (std::size_t index = 0; index < parts.size(); index += tableLength) {
        const auto table = std::span{parts}.subspan(index, tableLength);
        for (const PrintedPart& part : table)
            print(output, "# {}\n", title(values, part));
        writeTextTable(output, table);
    }
}

void writeCsv(OutputStream& output, const Values& values) {
    const auto& [dataset, selection, parts] = values;
    std::vector<std::string> names;
    if (selection.isNodeMap)
        for (std::int64_t number = 1; number <= parts.front().rowLength; ++number)
            names.push_back(fmt::format("node{}", number));
    else
        for (const PrintedPart& part : parts)
            names.push_back(convert::csvText(dataset.variables[static_cast<std::size_t>(part.target.variable) - 1]));
    print(output, "{}\n", fmt::join(names, ","));
    for (std::int64_t row = parts.front().begin; row < parts.front().end && !Host::isInterrupted(); ++row) {
        writeRow(output, parts, row, ",");
        print(output, "\n");
        output.advance();
    }
}

void writeRaw(OutputStream& output, const PrintedPart& part) {
    const std::size_t rowByteCount = static_cast<std::size_t>(part.rowLength) * part.data->itemByteCount();
    output.write(part.storage().bytes().subspan(static_cast<std::size_t>(part.begin) * rowByteCount,
                                                static_cast<std::size_t>(part.end - part.begin) * rowByteCount));
}

/// The header of version 1.0 ends in a line feed at a multiple of 64 bytes.
void writeNpy(OutputStream& output, const PrintedPart& part) {
    const char* type = withItemType(*part.data, []<class Item>(ItemTag<Item>) {
        constexpr const char* integers[]{"|u1", "<i2", "<i4", "<i8"}; // by the binary logarithm of the size
        return std::is_same_v<Item, float>    ? "<f4"
               : std::is_same_v<Item, double> ? "<f8"
                                              : integers[std::countr_zero(sizeof(Item))];
    });
    const std::string columns = part.target.variable == 0 ? fmt::format(" {}", part.rowLength) : std::string{};
    const std::string header = fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': ({},{}), }}", type,
                                           part.end - part.begin, columns);
    const std::size_t length = (10 + header.size() + 1 + 63) / 64 * 64 - 10; // after the ten bytes that tell it
    output.buffer().append(std::string_view{"\x93NUMPY\1\0", 8});
    output.buffer().push_back(static_cast<char>(length & 0xFF));
    output.buffer().push_back(static_cast<char>(length >> 8));
    print(output, "{:<{}}\n", header, length - 1);
    writeRaw(output, part);
}

/// What is known of a part without its values.
ordered_json description(const Values& values, const Part& part) {
    const auto& [dataset, selection, parts] = values;
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

void writeJsonItems(OutputStream& output, const PrintedPart& part) {
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
            part.writeItem(output.buffer(), part.storage(), row * part.rowLength + column);
        }
        print(output, "{}", isNodeMap ? "]" : "");
        output.advance();
    }
    print(output, "]");
}

void writeJson(OutputStream& output, const Values& values) {
    const auto& [dataset, selection, parts] = values;
    const ordered_json zone{{"number", selection.zone.number}, {"name", selection.zone.name}};
    print(output, "{{\"loaded\":true,\"zone\":{},\"{}\":[", jsonText(zone),
          selection.isNodeMap ? "sections" : "variables");
    for (const PrintedPart& part : parts) {
        std::string object = jsonText(description(values, part));
        object.pop_back(); // the bracket, before which the items belong
        print(output, "{}\n{},\"{}\":", &part == parts.data() ? "" : ",", object,
              selection.isNodeMap ? "nodes" : "values");
        writeJsonItems(output, part);
        print(output, "}}");
    }
    print(output, "],\n");
}

PrintedPart printed(const LoadedPart& part, bool isJson) {
    PrintedPart result{part};
    if (part.data)
        withItemType(*part.data, [&]<class Item>(ItemTag<Item>) {
            result.writeItem = isJson ? writeItem<Item, true> : writeItem<Item, false>;
        });
    return result;
}

} // namespace

void writeDump(OutputStream& output, DumpFormat format, const LoadedSelection& selection) {
    Values values{selection.dataset, selection.selection, {}};
    for (const LoadedPart& part : selection.parts)
        values.parts.push_back(printed(part, format == DumpFormat::json));
    switch (format) {
    case DumpFormat::text:
        return writeText(output, values);
    case DumpFormat::csv:
        return writeCsv(output, values);
    case DumpFormat::npy:
        return writeNpy(output, values.parts.front());
    case DumpFormat::raw:
        for (const PrintedPart& part : values.parts)
            writeRaw(output, part);
        return;
    case DumpFormat::json:
        return writeJson(output, values);
    }
}

} // namespace krohost::cli
