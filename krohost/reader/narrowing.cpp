#include "krohost/reader/narrowing.h"

#include "krohost/reader/decode.h"
#include "krohost/reader/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

namespace krohost::reader {

namespace {

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

void forEachNarrowedValue(const Document& document, const PiecewiseArray& array,
                          const std::function<void(const NarrowedValue&)>& use, const Poll& poll) {
    std::uint64_t firstTuple = 0;
    const ElementType held =
        array.isConnectivity() ? ElementType::Int32 : hostType(array.first().type.value_or(ElementType::Float32));
    for (const Array* part : array.parts) {
        const std::uint64_t componentCount = part->componentCount.value_or(0);
        if (componentCount == 0 || !part->type)
            continue;
        const std::uint64_t needed = held == *part->type ? 0 : neededValueCount(*part).value_or(UINT64_MAX);
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
            narrowing.valueCount += neededValueCount(*part).value_or(UINT64_MAX);
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

} // namespace krohost::reader
