// A file, read by the host's own reader with every array decoded, against what the add-on has put into the host.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"

#include "krohost/reader/decode.h"
#include "krohost/reader/values.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <type_traits>
#include <vector>

namespace {

using namespace krohost::reader;

constexpr std::uint64_t largestByteCount = 1 << 20; // of the values of an array

/// As the host stores values of such a type.
template <class Value>
double narrowed(Value value) {
    if constexpr (std::is_floating_point_v<Value>)
        return value;
    else if constexpr (sizeof value == 1)
        return static_cast<std::uint8_t>(value);
    else if constexpr (sizeof value == 2)
        return static_cast<std::int16_t>(value);
    else
        return static_cast<std::int32_t>(value);
}

/// The first values of an array, as many as a piece needs; nothing when they are not sound, or more than are compared.
std::optional<std::vector<double>> firstValues(const Document& document, const Array& array, std::uint64_t count) {
    std::vector<double> values;
    std::vector<std::byte> bytes(16384);
    ArrayReader reader(document, array, {});
    while (std::size_t byteCount = reader.read(bytes)) {
        forEachValue(*array.type, std::span(bytes).first(byteCount),
                     [&](auto value) { values.push_back(narrowed(value)); });
        if (reader.decoded().byteCount > largestByteCount)
            return std::nullopt;
    }
    const bool isSound = reader.decoded().faults.empty() && values.size() >= count;
    values.resize(std::min<std::size_t>(values.size(), count));
    return isSound ? std::optional(values) : std::nullopt;
}

std::string variableName(const Array& array, std::uint64_t component) {
    constexpr std::array axes{"X", "Y", "Z"};
    if (array.association == Association::points)
        return axes.at(component);
    if (array.componentCount == 1)
        return array.name;
    return array.name + '_' + (*array.componentCount <= 3 ? axes[component] : std::to_string(component + 1));
}

bool isSame(double own, double loaded) {
    return own == loaded || (std::isnan(own) && std::isnan(loaded));
}

/// Whether a variable was demanded before and could not be had.
bool hasFailed(const krohost::Host& host, std::size_t index) {
    return std::ranges::any_of(host.dialogs(), [&](const krohost::Dialog& dialog) {
        return dialog.zone == 1 && dialog.variable == static_cast<std::int32_t>(index + 1);
    });
}

/// How many variables were compared.
std::size_t compare(krohost::Host& host, const Document& document, const Array& array, const krohost::Zone& zone) {
    const auto location = array.association == Association::cellData ? ValueLocation_CellCentered : ValueLocation_Nodal;
    const std::uint64_t componentCount = array.componentCount.value_or(0);
    const auto own = firstValues(document, array, array.tupleCount * componentCount);
    std::size_t count = 0;
    for (std::uint64_t component = 0; own && component < componentCount; ++component)
        for (std::size_t index = 0; index < zone.variables.size(); ++index) {
            const bool isIt = zone.variables[index].location == location && zone.variables[index].data &&
                              !hasFailed(host, index) &&
                              host.dataset().variables[index] == variableName(array, component);
            const auto loaded = isIt ? host.demandValues(1, static_cast<std::int32_t>(index + 1)) : std::nullopt;
            for (std::size_t tuple = 0; loaded && tuple < loaded->size(); ++tuple)
                fuzz::require(isSame(own->at(tuple * componentCount + component), (*loaded)[tuple]),
                              "both readers read the same");
            count += loaded ? 1 : 0;
        }
    return count;
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::filesystem::path path = scratchFile("mesh.vtu", asText(input));
    const Document document = readDocument(path);
    std::size_t faultyCount = 0, comparedCount = 0;
    for (const Array* array : document.arrays())
        faultyCount += array->type && firstValues(document, *array, 0) ? 0 : 1;
    std::string shown = loadInHost(path, 0, [&](krohost::Host& host) {
        if (document.pieces.size() != 1 || document.malformation || host.dataset().zones.size() != 1)
            return;
        const Piece& piece = document.pieces.front();
        for (const auto* arrays : {&piece.points, &piece.pointData, &piece.cellData})
            for (const Array& array : *arrays)
                if (array.tupleCount < largestByteCount && array.type)
                    comparedCount += compare(host, document, array, host.dataset().zones.front());
    });
    return shown + (comparedCount > 0 ? ", compared" : "") + (faultyCount > 0 ? ", with faults" : "") +
           (document.malformation ? ", malformed" : "");
}
