#include "krohost/convert/conversion.h"

#include "krohost/convert/WriteError.h"
#include "krohost/convert/cellOrder.h"
#include "krohost/convert/conversionLosses.h"
#include "krohost/convert/csv.h"
#include "krohost/convert/damage.h"
#include "krohost/convert/fieldData.h"
#include "krohost/convert/hdfWriters.h"
#include "krohost/convert/vtuFile.h"
#include "krohost/convert/zoneGrid.h"
#include "krohost/reader/Document.h"
#include "krohost/text/letterCase.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace krohost::convert {

namespace {

namespace fs = std::filesystem;

struct FormatName {
    std::string_view name;
    FileFormat format;
};
/// The first name of a format is its own.
constexpr std::array<FormatName, 7> formatNames{{{"vtu", FileFormat::vtu},
                                                 {"vtm", FileFormat::vtm},
                                                 {"pvd", FileFormat::pvd},
                                                 {"vtkhdf", FileFormat::vtkhdf},
                                                 {"cgns", FileFormat::cgns},
                                                 {"csv", FileFormat::csv},
                                                 {"hdf", FileFormat::vtkhdf}}};

bool haveOneTime(const Dataset& dataset) {
    return std::all_of(dataset.zones.begin(), dataset.zones.end(),
                       [&](const Zone& zone) { return zone.solutionTime == dataset.zones.front().solutionTime; });
}

void requireWritable(const Dataset& dataset, FileFormat format) {
    if (dataset.zones.empty())
        throw WriteError("There are no zones to write.");
    if (format == FileFormat::vtu && dataset.zones.size() > 1)
        throw WriteError(fmt::format("A .vtu file holds one zone, there are {}; write a .vtm or, over time, a .pvd.",
                                     dataset.zones.size()));
    const bool hasSeries = format == FileFormat::pvd || format == FileFormat::csv;
    if (!hasSeries && !haveOneTime(dataset))
        throw WriteError(
            fmt::format("The zones have several solution times, for which a .{} file has no place; write a "
                        ".pvd.",
                        formatName(format)));
}

/// The name, from the collection, of a member with this index.
std::string memberName(const std::string& stem, std::size_t index) {
    return fmt::format("{}/{}_{}.vtu", stem, stem, index);
}

/// Removes the members that only the collection has which is replaced: those that it names and that are called as ours.
void removeOldMembers(const Request& request, const std::string& stem, std::size_t memberCount, Outputs& outputs) {
    if (!request.permission.isReplacing)
        return;
    const reader::Document old = reader::readDocument(request.path, pollInterrupt);
    std::set<std::string> named;
    for (const reader::Member& member : old.members)
        named.insert(member.file);
    for (const reader::Element& element : old.strays) // of a .pvd
        if (const std::string* file = element.find("file"))
            named.insert(*file);
    for (std::size_t index = memberCount; named.contains(memberName(stem, index)); ++index)
        outputs.removeOld(request.path.parent_path() / memberName(stem, index));
}

/// What is written of the zones that the host does not hold as it is in their files.
struct Originals {
    CellOrders orders;
    std::vector<std::vector<Array>> fields;
};

Grid gridOf(Host& host, const Originals& originals, std::size_t zoneIndex) {
    return zoneGrid(host, host.dataset().zones[zoneIndex], originals.orders[zoneIndex], originals.fields[zoneIndex]);
}

/// A file per zone in a folder of the collection's name; gives what the collection says of them.
std::vector<CollectionMember> writeMembers(Host& host, const Request& request, const Originals& originals,
                                           Outputs& outputs) {
    const std::string name = request.path.filename().string(), ownStem = request.path.stem().string();
    const std::string stem = ownStem == name ? name + "-zones" : ownStem; // the name of a folder beside it
    std::map<double, std::size_t> partCounts;
    std::vector<CollectionMember> members;
    for (const Zone& zone : host.dataset().zones) {
        const std::size_t index = members.size();
        const std::string file = memberName(stem, index);
        outputs.add(request.path.parent_path() / file, [&](const fs::path& temporary) {
            writeVtu(temporary, request.encoding, gridOf(host, originals, index));
        });
        const auto block = zone.auxiliaryData.find("Block.name");
        members.push_back({file, zone.name, block == zone.auxiliaryData.end() ? "" : block->second, zone.solutionTime,
                           partCounts[zone.solutionTime]++});
    }
    removeOldMembers(request, stem, members.size(), outputs);
    return members;
}

std::vector<Grid> grids(Host& host, const Originals& originals) {
    std::vector<Grid> result;
    while (result.size() < host.dataset().zones.size())
        result.push_back(gridOf(host, originals, result.size()));
    return result;
}

void write(Host& host, const Request& request, const Originals& originals, Outputs& outputs, Losses& losses) {
    if (request.format == FileFormat::csv)
        return writeCsv(host, request.path, request.permission.isReplacing, outputs, losses);
    outputs.add(request.path, [&](const fs::path& temporary) {
        switch (request.format) {
        case FileFormat::vtu:
            return writeVtu(temporary, request.encoding, gridOf(host, originals, 0));
        case FileFormat::vtm:
            return writeVtm(temporary, writeMembers(host, request, originals, outputs));
        case FileFormat::pvd:
            return writePvd(temporary, writeMembers(host, request, originals, outputs));
        case FileFormat::vtkhdf:
            return hdfWriters().vtkhdf(temporary, request.encoding.isCompressed, grids(host, originals), losses);
        case FileFormat::cgns:
            return hdfWriters().cgns(host, temporary, originals.orders, losses);
        case FileFormat::csv:
            break;
        }
    });
}

} // namespace

std::optional<FileFormat> fileFormat(std::string_view nameOrExtension) {
    const std::string_view name = nameOrExtension.substr(nameOrExtension.starts_with('.') ? 1 : 0);
    const auto found = std::find_if(formatNames.begin(), formatNames.end(),
                                    [&](const FormatName& entry) { return equalsIgnoringCase(entry.name, name); });
    return found == formatNames.end() ? std::nullopt : std::optional{found->format};
}

std::string_view formatName(FileFormat format) {
    return std::find_if(formatNames.begin(), formatNames.end(),
                        [&](const FormatName& entry) { return entry.format == format; })
        ->name;
}

Conversion convertZones(Host& host, const std::vector<fs::path>& inputs, const Request& request) {
    const Dataset& dataset = host.dataset();
    requireWritable(dataset, request.format);
    Conversion conversion;
    conversion.zoneCount = dataset.zones.size();
    Losses& losses = conversion.losses = conversionLosses(dataset, inputs, request.format);
    Originals originals;
    if (request.format != FileFormat::csv)
        originals = {cellOrders(dataset, inputs, losses), fieldData(dataset, inputs)};
    requireAllowed(losses, request.isStrict);
    Outputs outputs{request.permission};
    write(host, request, originals, outputs, losses);
    requireAllowed(losses, request.isStrict); // names are found out while they are written
    pollInterrupt();
    conversion.isIncomplete = firstDamage(losses) != nullptr;
    conversion.files = outputs.publish();
    return conversion;
}

LossesNotAllowed::LossesNotAllowed(Losses losses)
    : WriteError{fmt::format("Nothing was written, because --strict allows no losses, of which there {}.",
                             losses.list().size() == 1 ? "is one" : fmt::format("are {}", losses.list().size()))},
      losses_{std::move(losses)} {}

void requireAllowed(const Losses& losses, bool isStrict) {
    if (isStrict && !losses.empty())
        throw LossesNotAllowed(losses);
}

} // namespace krohost::convert
