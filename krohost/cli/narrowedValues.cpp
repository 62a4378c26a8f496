#include "krohost/cli/narrowedValues.h"

#include "krohost/write/Loss.h"
#include "krohost/write/zoneFiles.h"

#include <algorithm>
#include <utility>

namespace krohost::cli {

namespace {

constexpr std::size_t countLimit = 1 << 20;

/// Which component of the array the variable is; nothing when it is none.
std::optional<std::uint64_t> componentOf(const vtu::Array& array, ValueLocation_e location, const std::string& name) {
    const bool isAtCells = array.section == vtu::Section::cellData;
    if (array.section == vtu::Section::cells || isAtCells != (location == ValueLocation_CellCentered))
        return std::nullopt;
    const std::vector<std::string> names = vtu::variableNames(array);
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end())
        return std::nullopt;
    return static_cast<std::uint64_t>(found - names.begin());
}

} // namespace

OriginalFiles::OriginalFiles(const Dataset& dataset, std::vector<std::filesystem::path> files)
    : files_{write::zoneFiles(files)}, isOnePerZone_{files_.size() == dataset.zones.size()} {}

std::optional<NarrowedValues> OriginalFiles::ofVariable(const Zone& zone, ValueLocation_e location,
                                                        const std::string& name) {
    return collect(zone, [&](const vtu::Array& array) { return componentOf(array, location, name); });
}

std::optional<NarrowedValues> OriginalFiles::ofNodes(const Zone& zone) {
    return collect(zone, [&](const vtu::Array& array) {
        const bool isWanted = array.section == vtu::Section::cells;
        return isWanted ? std::optional<std::uint64_t>{0} : std::nullopt;
    });
}

template <class IsWanted>
std::optional<NarrowedValues> OriginalFiles::collect(const Zone& zone, const IsWanted& isWanted) {
    const auto zoneIndex = static_cast<std::size_t>(zone.number) - 1;
    const std::size_t begin = isOnePerZone_ ? zoneIndex : 0, end = isOnePerZone_ ? begin + 1 : files_.size();
    NarrowedValues values;
    bool isWhole = true;
    for (std::size_t index = begin; index < end; ++index) {
        read(index);
        for (const vtu::PiecewiseArray& array : arrays_)
            if (const auto component = isWanted(array.first()))
                vtu::forEachNarrowedValue(
                    document_, array,
                    [&](const vtu::NarrowedValue& value) {
                        if (value.component != *component && !array.isConnectivity())
                            return;
                        isWhole = isWhole && isOnePerZone_ && values.size() < countLimit;
                        if (isWhole)
                            values.push_back(value);
                    },
                    write::pollInterrupt);
    }
    return isWhole ? std::optional{std::move(values)} : std::nullopt;
}

void OriginalFiles::read(std::size_t fileIndex) {
    if (std::exchange(readIndex_, fileIndex) == fileIndex)
        return;
    document_ = vtu::readDocument(files_[fileIndex], write::pollInterrupt);
    arrays_ = vtu::piecewiseArrays(document_);
}

} // namespace krohost::cli
