#include "krohost/reader/pieceArrays.h"

#include "krohost/text/letterCase.h"

#include <algorithm>
#include <array>
#include <set>

namespace krohost::reader {

namespace {

constexpr std::array<const char*, 3> axes{"X", "Y", "Z"};

/// The arrays of a list, each of which is taken once.
class ArrayIndex {
public:
    explicit ArrayIndex(const std::vector<Array>& arrays) {
        for (const Array& array : arrays) {
            exact_.emplace(array.name, &array);
            anyCase_.emplace(std::pair{array.type, lowerCase(array.name)}, &array);
        }
    }

    const Array* takeNamesake(const Array& array) {
        const auto [begin, end] = exact_.equal_range(array.name);
        if (begin == end)
            return nullptr;
        const auto likeness = [&array](const auto& entry) {
            const Array& other = *entry.second;
            return std::pair{other.type == array.type, other.componentCount == array.componentCount};
        };
        const auto best = std::max_element(
            begin, end, [&](const auto& one, const auto& other) { return likeness(one) < likeness(other); });
        taken_.insert(best->second);
        return exact_.extract(best).mapped();
    }

    const Array* takeAnyCase(const Array& array) {
        for (auto [entry, end] = anyCase_.equal_range({array.type, lowerCase(array.name)}); entry != end;
             entry = anyCase_.erase(entry))
            if (taken_.insert(entry->second).second)
                return entry->second;
        return nullptr;
    }

private:
    std::multimap<std::string, const Array*> exact_;
    std::multimap<std::pair<std::optional<ElementType>, std::string>, const Array*> anyCase_;
    std::set<const Array*> taken_;
};

using List = std::vector<Array> Piece::*;

/// The arrays of all pieces that are found in each by `find`; none if the first piece has none.
template <class Find>
void addOne(const Document& document, const Find& find, std::vector<PiecewiseArray>& arrays) {
    PiecewiseArray array;
    for (const Piece& piece : document.pieces)
        if (const Array* part = find(piece); part || array.parts.empty())
            array.parts.push_back(part);
    if (array.parts.front())
        arrays.push_back(std::move(array));
}

void addList(const Document& document, List list, std::vector<PiecewiseArray>& arrays) {
    const std::vector<Array>& first = document.pieces.front().*list;
    const std::size_t begin = arrays.size();
    for (const Array& array : first)
        arrays.push_back({{&array}});
    for (std::size_t index = 1; index < document.pieces.size(); ++index) {
        const std::vector<const Array*> parts = continuations(first, document.pieces[index].*list);
        for (std::size_t place = 0; place < parts.size(); ++place)
            if (parts[place])
                arrays[begin + place].parts.push_back(parts[place]);
    }
}

} // namespace

bool PiecewiseArray::isConnectivity() const {
    return first().association == Association::cells;
}

std::vector<PiecewiseArray> piecewiseArrays(const Document& document) {
    std::vector<PiecewiseArray> arrays;
    if (document.pieces.empty())
        return arrays;
    addOne(
        document, [](const Piece& piece) { return piece.points.empty() ? nullptr : &piece.points.front(); }, arrays);
    addOne(
        document, [](const Piece& piece) { return piece.cellArray("connectivity"); }, arrays);
    addList(document, &Piece::pointData, arrays);
    addList(document, &Piece::cellData, arrays);
    return arrays;
}

std::vector<const Array*> continuations(const std::vector<Array>& first, const std::vector<Array>& later) {
    ArrayIndex index{later};
    std::vector<const Array*> matches;
    for (const Array& array : first)
        matches.push_back(index.takeNamesake(array));
    for (std::size_t place = 0; place < first.size(); ++place)
        if (!matches[place])
            matches[place] = index.takeAnyCase(first[place]);
    return matches;
}

std::vector<std::string> variableNames(const Array& array) {
    const std::uint64_t count = std::min(array.componentCount.value_or(0), componentLimit);
    std::vector<std::string> names;
    for (std::uint64_t component = 0; component < count; ++component)
        if (array.association == Association::points)
            names.push_back(component < axes.size() ? axes[component] : "");
        else if (count == 1)
            names.push_back(array.name);
        else
            names.push_back(array.name + '_' +
                            (count <= axes.size() ? axes[component] : std::to_string(component + 1)));
    return names;
}

std::optional<std::uint64_t> neededValueCount(const Array& array) {
    const bool isOfCells = array.association == Association::cells;
    if (array.association == Association::fieldData || (isOfCells && equalsIgnoringCase(array.name, "connectivity")))
        return array.tupleCount == 0 ? std::optional<std::uint64_t>{0} : std::nullopt;
    if (isOfCells)
        return array.tupleCount;
    std::uint64_t count = 0;
    const bool isOverflow = array.componentCount.value_or(componentLimit + 1) > componentLimit ||
                            __builtin_mul_overflow(array.tupleCount, *array.componentCount, &count);
    return isOverflow ? std::nullopt : std::optional{count};
}

} // namespace krohost::reader
