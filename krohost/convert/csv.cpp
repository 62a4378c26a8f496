#include "krohost/convert/csv.h"

#include "krohost/convert/Loaded.h"
#include "krohost/convert/OutputFile.h"
#include "krohost/convert/WriteError.h"
#include "krohost/host/model/itemType.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

namespace krohost::convert {

namespace {

const KroFieldData* suppliedData(const Zone& zone, std::int32_t number, ValueLocation_e location) {
    const ZoneVariable* variable = zone.suppliedVariable(number);
    return variable && variable->location == location ? variable->data.get() : nullptr;
}

std::vector<std::int32_t> columnsAt(const Dataset& dataset, ValueLocation_e location) {
    std::vector<std::int32_t> columns;
    for (std::int32_t number = 1; static_cast<std::size_t>(number) <= dataset.variables.size(); ++number)
        if (std::any_of(dataset.zones.begin(), dataset.zones.end(),
                        [&](const Zone& zone) { return suppliedData(zone, number, location) != nullptr; }))
            columns.push_back(number);
    return columns;
}

/// Loaded values of one variable, as text.
class Column {
public:
    Column(Host& host, const KroFieldData& data) : type_{data.type}, loaded_{host, data.target()} {}

    void appendText(fmt::memory_buffer& text, std::size_t row) const {
        withItemType(type_, [&]<class Item>(ItemTag<Item>) {
            fmt::format_to(std::back_inserter(text), ",{}", +loaded_.items<Item>()[row]);
        });
    }

private:
    FieldDataType_e type_;
    Loaded loaded_;
};

void writeRows(Host& host, const Zone& zone, ValueLocation_e location, const std::vector<std::int32_t>& numbers,
               OutputFile& file) {
    std::vector<std::unique_ptr<const Column>> columns;
    for (const std::int32_t number : numbers) {
        const KroFieldData* data = suppliedData(zone, number, location);
        columns.push_back(data ? std::make_unique<const Column>(host, *data) : nullptr);
    }
    if (std::none_of(columns.begin(), columns.end(), [](const auto& column) { return column != nullptr; }))
        return;
    const auto rowCount = static_cast<std::size_t>(zone.valueCount(location));
    for (std::size_t row = 0; row < rowCount; ++row) {
        fmt::memory_buffer text;
        fmt::format_to(std::back_inserter(text), "{},{}", zone.number, row + 1);
        for (const auto& column : columns)
            if (column)
                column->appendText(text, row);
            else
                text.push_back(',');
        text.push_back('\n');
        file.write({text.data(), text.size()});
        if (row % 4096 == 0 && Host::isInterrupted())
            throw Interrupted();
    }
}

void writeTable(Host& host, ValueLocation_e location, const char* rowTitle, const std::vector<std::int32_t>& columns,
                const std::filesystem::path& path) {
    OutputFile file{path};
    std::string header = fmt::format("zone,{}", rowTitle);
    for (const std::int32_t number : columns)
        header += ',' + csvText(host.dataset().variables[static_cast<std::size_t>(number) - 1]);
    file.write(header + '\n');
    for (const Zone& zone : host.dataset().zones)
        writeRows(host, zone, location, columns, file);
    file.close();
}

bool beginsWith(const std::filesystem::path& path, std::string_view text) {
    std::string beginning(text.size(), '\0');
    std::ifstream file{path, std::ios::binary};
    return file.read(beginning.data(), static_cast<std::streamsize>(beginning.size())) && beginning == text;
}

/// As it is shown, with an apostrophe before what looks like a formula.
std::string nameInTable(const std::string& name) {
    const bool isFormula = !name.empty() && std::string_view{"=+-@\t\r\n"}.find(name.front()) != std::string_view::npos;
    return (isFormula ? "'" : "") + printableName(name);
}

} // namespace

void addCsvRenamings(const std::vector<std::string>& names, Losses& losses) {
    for (const std::string& name : names)
        if (const std::string other = nameInTable(name); other != name)
            losses.add(
                {"renamed", fmt::format("\"{}\" is called \"{}\" in the table, where a spreadsheet or a terminal "
                                        "could take it for a formula or a command.",
                                        name, other)});
}

std::string csvText(const std::string& text) {
    const std::string name = nameInTable(text);
    if (!name.starts_with('\'') && name.find_first_of(",\"") == name.npos)
        return name;
    std::string cell = "\"";
    for (const char character : name)
        cell.append(character == '"' ? 2 : 1, character);
    return cell + '"';
}

void writeCsv(Host& host, const std::filesystem::path& path, bool isReplacing, Outputs& outputs, Losses& losses) {
    addCsvRenamings(host.dataset().variables, losses);
    const auto add = [&](ValueLocation_e location, const char* rowTitle, const std::vector<std::int32_t>& columns,
                         const std::filesystem::path& table) {
        outputs.add(table, [&](const std::filesystem::path& temporary) {
            writeTable(host, location, rowTitle, columns, temporary);
        });
    };
    add(ValueLocation_Nodal, "node", columnsAt(host.dataset(), ValueLocation_Nodal), path);
    const std::vector<std::int32_t> atCells = columnsAt(host.dataset(), ValueLocation_CellCentered);
    const std::filesystem::path cellPath =
        path.parent_path() / (path.stem().string() + "-cells" + path.extension().string());
    if (!atCells.empty())
        add(ValueLocation_CellCentered, "cell", atCells, cellPath);
    else if (isReplacing && beginsWith(path, "zone,node,") && beginsWith(cellPath, "zone,cell,"))
        outputs.removeOld(cellPath);
}

} // namespace krohost::convert
