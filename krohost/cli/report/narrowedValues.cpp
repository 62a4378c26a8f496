#include "krohost/cli/report/narrowedValues.h"

#include "krohost/convert/Loss.h"

#include <algorithm>

namespace krohost::cli {

namespace {

constexpr std::size_t countLimit = 1 << 20;

} // namespace

OriginalFiles::OriginalFiles(const Dataset& dataset, const std::vector<std::filesystem::path>& files)
    : files_{convert::zoneFiles(files, dataset.zones.size())} {}

std::optional<NarrowedValues> OriginalFiles::ofVariable(const Zone& zone, ValueLocation_e location,
                                                        const std::string& name) {
    const auto found = read(zone) ? components_.find({location, name}) : components_.end();
    if (found == components_.end())
        return std::nullopt;
    return collect(arrays_[found->second.arrayIndex], found->second.number);
}

std::optional<NarrowedValues> OriginalFiles::ofNodes(const Zone& zone) {
    if (!read(zone))
        return std::nullopt;
    const auto found =
        std::find_if(arrays_.begin(), arrays_.end(), [](const auto& array) { return array.isConnectivity(); });
    return found == arrays_.end() ? std::nullopt : collect(*found, 0);
}

std::optional<NarrowedValues> OriginalFiles::collect(const reader::PiecewiseArray& array,
                                                     std::uint64_t component) const {
    NarrowedValues values;
    bool isWhole = true;
    reader::forEachNarrowedValue(
        document_, array,
        [&](const reader::NarrowedValue& value) {
            if (value.component != component && !array.isConnectivity())
                return;
            isWhole = isWhole && values.size() < countLimit;
            if (isWhole)
                values.push_back(value);
        },
        convert::pollInterrupt);
    return isWhole ? std::optional{std::move(values)} : std::nullopt;
}

bool OriginalFiles::read(const Zone& zone) {
    const auto index = static_cast<std::size_t>(zone.number) - 1;
    if (!files_.areKnown)
        return false;
    if (std::exchange(readIndex_, index) == index)
        return !document_.malformation;
    document_ = reader::readDocument(files_.files[index], convert::pollInterrupt);
    arrays_ = reader::piecewiseArrays(document_);
    components_.clear();
    for (std::size_t arrayIndex = 0; arrayIndex < arrays_.size(); ++arrayIndex) {
        const reader::Array& array = arrays_[arrayIndex].first();
        const bool isAtCells = array.association == reader::Association::cellData;
        std::uint64_t number = 0;
        if (array.association != reader::Association::cells)
            for (std::string& name : reader::variableNames(array))
                components_.try_emplace({isAtCells ? ValueLocation_CellCentered : ValueLocation_Nodal, std::move(name)},
                                        Component{arrayIndex, number++});
    }
    return !document_.malformation;
}

} // namespace krohost::cli
