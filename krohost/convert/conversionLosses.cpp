#include "krohost/convert/conversionLosses.h"

#include "krohost/convert/fieldData.h"
#include "krohost/convert/vtuFile.h"
#include "krohost/convert/zoneFiles.h"
#include "krohost/convert/zoneGrid.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>

namespace krohost::convert {

namespace {

namespace fs = std::filesystem;
using reader::Document;

/// What a format has room for.
bool holdsFieldData(FileFormat format) {
    return format != FileFormat::cgns && format != FileFormat::csv;
}
bool holdsVectors(FileFormat format) {
    return format != FileFormat::csv;
}

/// Compares what a file has with what is written of its zone.
class ZoneLosses {
public:
    ZoneLosses(const Dataset& dataset, const Zone& zone, const Document& document, FileFormat format, Losses& losses)
        : dataset_{dataset}, zone_{zone}, document_{document}, file_{document.path.string()}, format_{format},
          losses_{losses} {}

    void add() {
        for (const auto location : {ValueLocation_Nodal, ValueLocation_CellCentered})
            addArrays(location);
        addSurplusComponents();
        addRemarks();
        addFields();
    }

    /// Those of a zone's file, or of the collection that it is a member of.
    void addFields() {
        for (const reader::Array& array : document_.fieldData)
            addFieldData(array);
        for (const reader::TextArray& array : document_.textArrays)
            drop(array.element.nameAttribute(), array.association, 1, "an array of texts");
    }

private:
    void addArrays(ValueLocation_e location) {
        const bool isNodal = location == ValueLocation_Nodal;
        const std::vector<ArrayVariables> written = arrayVariables(dataset_, zone_, location);
        std::set<std::pair<std::string, std::size_t>> writtenArrays;
        joinedVariables_.clear();
        for (const ArrayVariables& array : written) {
            writtenArrays.emplace(array.name, array.numbers.size());
            if (array.numbers.size() == vectorLength)
                for (const char* suffix : {"_X", "_Y", "_Z"})
                    joinedVariables_.insert(array.name + suffix);
        }
        std::set<std::string> vectors;
        if (!document_.pieces.empty()) {
            const reader::Piece& piece = document_.pieces.front();
            for (const reader::Array& array : isNodal ? piece.pointData : piece.cellData) {
                addArray(array, writtenArrays);
                if (array.componentCount == vectorLength)
                    vectors.insert(array.name);
            }
        }
        for (const ArrayVariables& array : written)
            if (holdsVectors(format_) && array.numbers.size() == vectorLength && !vectors.contains(array.name))
                losses_.add(
                    {"joined",
                     fmt::format("The arrays \"{0}_X\", \"{0}_Y\" and \"{0}_Z\" ({1}) of \"{2}\" are written as "
                                 "one vector \"{0}\".",
                                 array.name, inWords(location), file_),
                     array.name, inWords(location), file_, 1, vectorLength});
    }

    void addArray(const reader::Array& array, const std::set<std::pair<std::string, std::size_t>>& written) {
        const std::uint64_t count = array.componentCount.value_or(0);
        const std::vector<std::string> names = reader::variableNames(array);
        const auto isJoined = [&](const std::string& name) { return joinedVariables_.contains(name); };
        const bool isWritten = std::all_of(names.begin(), names.end(), [&](const std::string& name) {
            return written.contains({name, 1}) || isJoined(name);
        });
        if (count == 0 || names.size() != count || (!isWritten && !written.contains({array.name, count})))
            return drop(array.name, array.association, array.tupleCount * count, "an array that is not loaded");
        if (holdsVectors(format_) && !written.contains({array.name, count}) &&
            std::none_of(names.begin(), names.end(), isJoined))
            losses_.add(
                {"split",
                 fmt::format("The {} components of the array \"{}\" ({}) of \"{}\" are written as arrays of "
                             "their own, from \"{}\" to \"{}\".",
                             count, array.name, locationWord(array.association), file_, names.front(), names.back()),
                 array.name, locationWord(array.association), file_, 1, count});
        addComponentNames(array);
    }

    void addComponentNames(const reader::Array& array) {
        const auto count = std::count_if(
            array.element.attributes.begin(), array.element.attributes.end(),
            [](const reader::Attribute& attribute) { return attribute.name.starts_with("ComponentName"); });
        if (count > 0)
            losses_.add({"dropped",
                         fmt::format("The names of components of the array \"{}\" ({}) of \"{}\" are left out: {}.",
                                     array.name, locationWord(array.association), file_, count),
                         array.name,
                         locationWord(array.association),
                         file_,
                         1,
                         static_cast<std::uint64_t>(count),
                         {},
                         "names of components"});
    }

    /// What tags say of arrays and nothing reads.
    void addRemarks() {
        for (const reader::Remark& remark : document_.remarks)
            losses_.add({"dropped",
                         fmt::format("That the array \"{}\" ({}) of \"{}\" has {} is left out.", remark.array,
                                     locationWord(remark.association), file_, remark.what),
                         remark.array,
                         locationWord(remark.association),
                         file_,
                         1,
                         1,
                         {},
                         remark.what});
    }

    void addSurplusComponents() {
        for (const reader::PiecewiseArray& array : reader::piecewiseArrays(document_))
            for (const reader::Array* part : array.parts) {
                const std::uint64_t kept = array.first().componentCount.value_or(0);
                const std::uint64_t count = part->componentCount.value_or(0);
                if (count > kept && part->tupleCount > 0 && !array.isConnectivity())
                    drop(part->name, part->association, (count - kept) * part->tupleCount,
                         "components that it does not have in the first piece");
            }
    }

    /// Whether the array is written, as field data of the zone; a member of a collection may have others of its own.
    bool isWritten(const reader::Array& array, const FieldValue& value) {
        const auto found = zone_.auxiliaryData.find(array.name);
        return holdsFieldData(format_) && found != zone_.auxiliaryData.end() && found->second == value.text &&
               isFieldOf(zone_, array.name, value.text) && keptFields_.insert(array.name).second;
    }

    void addFieldData(const reader::Array& array) {
        const std::optional<FieldValue> value = onlyValue(document_, array);
        const bool isTime =
            value && format_ == FileFormat::cgns && isTimeName(array.name) && value->number == zone_.solutionTime;
        if (!isTime && (!value || !isWritten(array, *value)))
            drop(array.name, array.association, array.tupleCount * array.componentCount.value_or(0), "field data");
    }

    void drop(const std::string& name, reader::Association association, std::uint64_t count, const char* what) {
        losses_.add({"dropped",
                     fmt::format("The array \"{}\" ({}) of \"{}\" is left out: {}.", name, locationWord(association),
                                 file_, what),
                     name,
                     locationWord(association),
                     file_,
                     1,
                     count,
                     {},
                     what});
    }

    static constexpr std::size_t vectorLength = 3;
    const Dataset& dataset_;
    const Zone& zone_;
    const Document& document_;
    std::string file_;
    FileFormat format_;
    Losses& losses_;
    std::set<std::string> keptFields_;
    std::set<std::string> joinedVariables_; // at the location that is looked at
};

/// The field data of the inputs that are collections; their members' zones have them all.
void addCollections(const Dataset& dataset, const std::vector<fs::path>& inputs, FileFormat format, Losses& losses) {
    std::size_t zoneIndex = 0;
    for (const fs::path& input : inputs) {
        const Document document = reader::readDocument(input, pollInterrupt);
        const std::size_t zoneCount = zoneFiles({input}, 0).files.size();
        if (document.isCollection() && zoneCount > 0)
            ZoneLosses{dataset, dataset.zones[zoneIndex], document, format, losses}.addFields();
        zoneIndex += zoneCount;
    }
}

/// One loss for all zones of which something has no place in the format.
template <class Has>
void addForZones(const Dataset& dataset, Losses& losses, const char* what, const Has& has) {
    const auto count = std::count_if(dataset.zones.begin(), dataset.zones.end(), has);
    if (count > 0)
        losses.add({.what = "dropped",
                    .message = fmt::format("{} left out, of {} zone{}.", what, count, count == 1 ? "" : "s"),
                    .count = static_cast<std::uint64_t>(count)});
}

void addZoneProperties(const Dataset& dataset, FileFormat format, Losses& losses) {
    const auto hasCells = [](const Zone& zone) { return zone.nodeMap != nullptr; };
    const auto hasBlock = [](const Zone& zone) { return zone.auxiliaryData.contains("Block.name"); };
    const auto isAny = [](const Zone&) { return true; };
    if (format == FileFormat::csv)
        addForZones(dataset, losses, "The nodes of cells are", hasCells);
    addForZones(dataset, losses, "Strands are", [](const Zone& zone) { return zone.strand != -1; });
    if ((format == FileFormat::csv || format == FileFormat::vtkhdf) && dataset.zones.size() > 1)
        addForZones(dataset, losses, "Names are", isAny);
    if (format == FileFormat::csv)
        addForZones(dataset, losses, "Solution times are", [](const Zone& zone) { return zone.solutionTime != 0; });
    if (format == FileFormat::vtu || format == FileFormat::vtm || format == FileFormat::pvd)
        for (const Zone& zone : dataset.zones)
            addXmlRenaming(zone.name, losses);
    if (format != FileFormat::vtm)
        addForZones(dataset, losses, "Names of blocks are", hasBlock);
    if (format == FileFormat::vtkhdf) {
        const Zone& first = dataset.zones.front();
        addForZones(dataset, losses, "Field data other than those of the first zone are", [&](const Zone& zone) {
            return zone.auxiliaryData != first.auxiliaryData && !zone.auxiliaryData.empty();
        });
    }
}

void addMissingCoordinates(const Dataset& dataset, Losses& losses) {
    for (const Zone& zone : dataset.zones) {
        const std::vector<std::int32_t> numbers = coordinateVariables(dataset, zone);
        if (std::find(numbers.begin(), numbers.end(), 0) != numbers.end())
            losses.add({"changed",
                        fmt::format("Zone {} \"{}\" has fewer than three coordinates; those missing are written as 0.",
                                    zone.number, zone.name)});
    }
}

/// Those that 32-bit numbers hold.
bool areNodesNarrow(const Dataset& dataset) {
    return std::any_of(dataset.zones.begin(), dataset.zones.end(), [](const Zone& zone) {
        return zone.nodeMap && zone.nodeMap->itemByteCount() == sizeof(std::int32_t);
    });
}

} // namespace

Losses conversionLosses(const Dataset& dataset, const std::vector<fs::path>& inputs, FileFormat format) {
    const bool usesNodes = format != FileFormat::csv && areNodesNarrow(dataset);
    const auto isUsed = [](const reader::Array&) { return true; };
    Losses losses = narrowingLosses(inputs, {isUsed, usesNodes, isUsed});
    const auto [files, collections, areKnown] = zoneFiles(inputs, dataset.zones.size());
    if (areKnown)
        addCollections(dataset, inputs, format, losses);
    else
        losses.add({"changed", "What is lost cannot be told: it is not known which zone comes from which file."});
    for (std::size_t index = 0; areKnown && index < files.size(); ++index) {
        const Document document = reader::readDocument(files[index], pollInterrupt);
        if (!document.malformation) // else it is among the losses itself
            ZoneLosses{dataset, dataset.zones[index], document, format, losses}.add();
    }
    addZoneProperties(dataset, format, losses);
    const bool isNamed =
        files.size() == 1 && dataset.zones.size() == 1 && dataset.zones.front().name != files.front().stem().string();
    if (isNamed && (format == FileFormat::csv || format == FileFormat::vtkhdf))
        addForZones(dataset, losses, "Names are", [](const Zone&) { return true; });
    if (format != FileFormat::csv)
        addMissingCoordinates(dataset, losses);
    return losses;
}

} // namespace krohost::convert
