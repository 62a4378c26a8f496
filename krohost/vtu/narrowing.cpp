#include "krohost/vtu/narrowing.h"

#include "krohost/vtu/decode.h"
#include "krohost/vtu/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <type_traits>
#include <utility>

namespace krohost::vtu {

namespace {

constexpr std::array<const char*, 3> axes{"X", "Y", "Z"};

/// A real number as the integer that a host stores: by way of 32 bits, of which the least number stands for all that do
/// not fit.
template <class Value>
std::int32_t truncated(Value value) {
    constexpr Value limit = 2147483648.0;
    return value >= -limit && value < limit ? static_cast<std::int32_t>(value)
                                            : std::numeric_limits<std::int32_t>::min();
}

/// The value as a host stores it; integers keep their low-order bits.
template <class Held, class Value>
Held stored(Value value) {
    if constexpr (std::is_integral_v<Held> && std::is_floating_point_v<Value>)
        return static_cast<Held>(truncated(value));
    else if constexpr (std::is_same_v<Held, float> && std::is_same_v<Value, double>)
        return std::abs(value) <= std::numeric_limits<float>::max()
                   ? static_cast<float>(value)
                   : std::copysign(std::numeric_limits<float>::infinity(),
                                   static_cast<float>(std::signbit(value) ? -1 : 1));
    else
        return static_cast<Held>(value);
}

/// Whether all values stay the same; of whole numbers only, whose comparison is cheap enough to make it twice.
template <class Held, class Value>
bool staySame(std::span<const std::byte> bytes) {
    if constexpr (std::is_integral_v<Held> && std::is_integral_v<Value>) {
        bool isOther = false;
        forEachOf<Value>(bytes,
                         [&isOther](Value value) { isOther |= std::cmp_not_equal(static_cast<Held>(value), value); });
        return !isOther;
    }
    return false;
}

template <class Held, class Value>
void compare(Value value, NarrowedValue place, const std::function<void(const NarrowedValue&)>& use) {
    const Held held = stored<Held>(value);
    place.value = static_cast<long double>(value);
    place.held = static_cast<long double>(held);
    const bool isSameNaN = std::is_floating_point_v<Held> && std::isnan(place.value);
    if (place.held != place.value && !isSameNaN)
        use(place);
}

/// Calls `use` with a value of the type in which the host holds values.
template <class Use>
auto withHeldType(ElementType held, const Use& use) {
    switch (held) {
    case ElementType::UInt8:
        return use(std::uint8_t{});
    case ElementType::Int16:
        return use(std::int16_t{});
    case ElementType::Int32:
        return use(std::int32_t{});
    case ElementType::Float32:
        return use(float{});
    default:
        return use(double{});
    }
}

/// A run of values of an array's part, all of which count; `index` is that of the first one.
struct Run {
    std::span<const std::byte> bytes;
    std::uint64_t index;
    std::uint64_t firstTuple; ///< of the part
    std::uint64_t componentCount;
};

template <class Held, class Value>
void compareAll(const Run& run, const std::function<void(const NarrowedValue&)>& use) {
    if (staySame<Held, Value>(run.bytes))
        return;
    std::uint64_t index = run.index;
    forEachOf<Value>(run.bytes, [&](Value value) {
        compare<Held>(value, {run.firstTuple + index / run.componentCount, index % run.componentCount}, use);
        ++index;
    });
}

using Arrays = std::vector<Array> Piece::*;

std::string lowerCase(std::string text) {
    for (char& letter : text)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return text;
}

/// Finds the arrays of a list's first piece for those of later pieces. Looks at each array of these twice.
class Matcher {
public:
    Matcher(std::vector<PiecewiseArray>& arrays, std::size_t firstIndex) : arrays_{arrays} {
        for (std::size_t index = firstIndex; index < arrays.size(); ++index) {
            byName_.emplace(arrays[index].first().name, index);
            byLowerCase_.emplace(lowerCase(arrays[index].first().name), index);
        }
    }

    void add(const std::vector<Array>& ofPiece) {
        std::set<std::size_t> taken;
        std::vector<const Array*> others;
        for (const Array& array : ofPiece)
            if (!take(byName_.equal_range(array.name), array, taken))
                others.push_back(&array);
        for (const Array* array : others)
            take(byLowerCase_.equal_range(lowerCase(array->name)), *array, taken);
    }

private:
    using Indices = std::multimap<std::string, std::size_t>;

    bool take(std::pair<Indices::const_iterator, Indices::const_iterator> range, const Array& array,
              std::set<std::size_t>& taken) {
        const auto free =
            std::find_if(range.first, range.second, [&](const auto& entry) { return !taken.contains(entry.second); });
        if (free == range.second)
            return false;
        taken.insert(free->second);
        arrays_[free->second].parts.push_back(&array);
        return true;
    }

    std::vector<PiecewiseArray>& arrays_;
    Indices byName_, byLowerCase_;
};

void addList(const Document& document, Arrays list, std::vector<PiecewiseArray>& arrays) {
    const std::size_t firstIndex = arrays.size();
    for (const Array& array : document.pieces.front().*list)
        if (array.section != Section::cells || equalsIgnoringCase(array.name, "connectivity"))
            arrays.push_back({{&array}});
    Matcher matcher{arrays, firstIndex};
    for (std::size_t index = 1; index < document.pieces.size(); ++index)
        matcher.add(document.pieces[index].*list);
}

/// The values that count; those beyond are passed over.
std::uint64_t neededCount(const Array& array) {
    std::uint64_t count = 0;
    const bool isOverflow = __builtin_mul_overflow(array.tupleCount, array.componentCount.value_or(0), &count);
    return isOverflow || array.section == Section::cells ? UINT64_MAX : count;
}

} // namespace

ElementType hostType(ElementType type) {
    switch (type) {
    case ElementType::Int8:
    case ElementType::UInt8:
        return ElementType::UInt8;
    case ElementType::Int16:
    case ElementType::UInt16:
        return ElementType::Int16;
    case ElementType::Float32:
    case ElementType::Float64:
        return type;
    default:
        return ElementType::Int32;
    }
}

bool PiecewiseArray::isConnectivity() const {
    return first().section == Section::cells;
}

std::vector<PiecewiseArray> piecewiseArrays(const Document& document) {
    std::vector<PiecewiseArray> arrays;
    if (!document.pieces.empty())
        for (const Arrays list : {&Piece::points, &Piece::cells, &Piece::pointData, &Piece::cellData})
            addList(document, list, arrays);
    return arrays;
}

std::vector<std::string> variableNames(const Array& array) {
    const std::uint64_t count = std::min<std::uint64_t>(array.componentCount.value_or(0), INT16_MAX);
    std::vector<std::string> names;
    for (std::uint64_t component = 0; component < count; ++component)
        if (array.section == Section::points)
            names.push_back(component < axes.size() ? axes[component] : "");
        else if (count == 1)
            names.push_back(array.name);
        else
            names.push_back(array.name + '_' +
                            (count <= axes.size() ? axes[component] : std::to_string(component + 1)));
    return names;
}

void forEachNarrowedValue(const Document& document, const PiecewiseArray& array,
                          const std::function<void(const NarrowedValue&)>& use, const Poll& poll) {
    std::uint64_t firstTuple = 0;
    const ElementType held =
        array.isConnectivity() ? ElementType::Int32 : hostType(array.first().type.value_or(ElementType::Float32));
    for (const Array* part : array.parts) {
        const std::uint64_t componentCount = part->componentCount.value_or(0);
        if (componentCount == 0 || !part->type)
            continue;
        const std::uint64_t needed = held == *part->type ? 0 : neededCount(*part);
        const std::size_t byteCountOfOne = byteCount(*part->type);
        std::uint64_t index = 0;
        const auto compareBlock = [&](std::span<const std::byte> bytes) {
            poll();
            const std::uint64_t count = std::min<std::uint64_t>(bytes.size() / byteCountOfOne, needed - index);
            const Run run{bytes.first(static_cast<std::size_t>(count) * byteCountOfOne), index, firstTuple,
                          componentCount};
            withValueType(*part->type, [&]<class Value>(Value) {
                withHeldType(held, [&]<class Held>(Held) { compareAll<Held, Value>(run, use); });
            });
            index += count;
        };
        if (needed > 0)
            decode(document, *part, compareBlock);
        firstTuple += array.isConnectivity() ? index : part->tupleCount;
    }
}

Narrowing narrowingOf(const Document& document, const PiecewiseArray& array, const Poll& poll) {
    Narrowing narrowing;
    for (const Array* part : array.parts)
        if (!array.isConnectivity())
            narrowing.valueCount += neededCount(*part);
    forEachNarrowedValue(
        document, array,
        [&](const NarrowedValue& value) {
            if (narrowing.narrowedCount++ == 0)
                narrowing.first = value;
        },
        poll);
    return narrowing;
}

std::string inDigits(long double value) {
    return std::trunc(value) == value ? fmt::format("{:.0f}", value) : fmt::format("{}", static_cast<double>(value));
}

std::string inWords(const NarrowedValue& value, const Array& array) {
    const bool isVector = array.componentCount.value_or(1) > 1;
    return fmt::format("{} at {}{} becomes {}", inDigits(value.value), value.tuple,
                       isVector ? fmt::format(", component {},", value.component) : "", inDigits(value.held));
}

} // namespace krohost::vtu
