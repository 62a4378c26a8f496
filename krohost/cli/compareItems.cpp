#include "krohost/cli/compareItems.h"

#include "krohost/itemType.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>

namespace krohost::cli {

namespace {

/// Of numbers that are not close: NaN and infinities are infinitely far from others.
double distance(double left, double right) {
    const double difference = std::abs(left - right);
    return std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference;
}

double greaterMagnitude(double left, double right) {
    return std::max(std::abs(left), std::abs(right));
}

void raise(Extreme& extreme, double difference, std::int64_t index, double left, double right) {
    if (difference > extreme.difference)
        extreme = {difference, index, left, right};
}

void note(Comparison& comparison, std::int64_t index, double left, double right) {
    const double difference = distance(left, right);
    if (comparison.differingCount++ == 0 || index < comparison.firstIndex)
        comparison.firstIndex = index;
    raise(comparison.absolute, difference, index, left, right);
    raise(comparison.relative, std::isinf(difference) ? difference : difference / greaterMagnitude(left, right), index,
          left, right);
}

template <class Left, class Right>
bool haveSameBytes(std::span<const Left> left, std::span<const Right> right) {
    return std::is_same_v<Left, Right> && std::memcmp(left.data(), right.data(), left.size_bytes()) == 0;
}

/// Of integers that a double cannot tell apart.
template <class Left, class Right>
bool areUnequalIntegers(Left left, Right right) {
    if constexpr (std::is_integral_v<Left> && std::is_integral_v<Right>)
        return std::cmp_not_equal(left, right);
    else
        return false;
}

/// Equal bytes are equal values, NaN too; most blocks of most files are.
template <class Left, class Right>
Comparison compare(std::span<const Left> left, std::span<const Right> right, const Tolerance& tolerance) {
    constexpr std::size_t blockLength = 4096;
    Comparison comparison;
    comparison.count = static_cast<std::int64_t>(left.size());
    for (std::size_t begin = 0; begin < left.size(); begin += blockLength) {
        const std::size_t end = std::min(begin + blockLength, left.size());
        if (haveSameBytes(left.subspan(begin, end - begin), right.subspan(begin, end - begin)))
            continue;
        for (std::size_t index = begin; index < end; ++index) {
            const auto a = static_cast<double>(left[index]), b = static_cast<double>(right[index]);
            if (!areClose(a, b, tolerance) || (tolerance.isZero() && areUnequalIntegers(left[index], right[index])))
                note(comparison, static_cast<std::int64_t>(index), a, b);
        }
    }
    return comparison;
}

long double held(const Deferred& data, std::uint64_t index) {
    return withItemType(data, [&]<class Item>(ItemTag<Item>) {
        return static_cast<long double>(data.parts().front().items<Item>()[static_cast<std::size_t>(index)]);
    });
}

bool differ(long double left, long double right, const Tolerance& tolerance) {
    return tolerance.isZero() ? left != right
                              : !areClose(static_cast<double>(left), static_cast<double>(right), tolerance);
}

/// The next of the originals if it is that of the item, else what the host holds.
long double original(std::span<const vtu::NarrowedValue>& originals, std::uint64_t index, const Deferred& data) {
    if (originals.empty() || originals.front().tuple != index)
        return held(data, index);
    const long double value = originals.front().value;
    originals = originals.subspan(1);
    return value;
}

} // namespace

void addHiddenDifferences(Comparison& comparison, const Deferred& left, const Deferred& right,
                          std::span<const vtu::NarrowedValue> leftOriginals,
                          std::span<const vtu::NarrowedValue> rightOriginals, const Tolerance& tolerance) {
    while (!leftOriginals.empty() || !rightOriginals.empty()) {
        const std::uint64_t index = std::min(leftOriginals.empty() ? UINT64_MAX : leftOriginals.front().tuple,
                                             rightOriginals.empty() ? UINT64_MAX : rightOriginals.front().tuple);
        if (index >= static_cast<std::uint64_t>(comparison.count))
            return; // the file has changed since it was loaded
        const bool isHidden = !differ(held(left, index), held(right, index), tolerance);
        const long double a = original(leftOriginals, index, left), b = original(rightOriginals, index, right);
        if (isHidden && differ(a, b, tolerance))
            note(comparison, static_cast<std::int64_t>(index), static_cast<double>(a), static_cast<double>(b));
    }
}

bool areClose(double left, double right, const Tolerance& tolerance) {
    if (left == right || (std::isnan(left) && std::isnan(right)))
        return true;
    const double difference = distance(left, right);
    return !std::isinf(difference) &&
           difference <= std::max(tolerance.absolute, tolerance.relative * greaterMagnitude(left, right));
}

Comparison compareItems(const Deferred& left, const Deferred& right, std::size_t partIndex,
                        const Tolerance& tolerance) {
    return withItemType(left, [&]<class Left>(ItemTag<Left>) {
        return withItemType(right, [&]<class Right>(ItemTag<Right>) {
            return compare(left.parts()[partIndex].items<Left>(), right.parts()[partIndex].items<Right>(), tolerance);
        });
    });
}

} // namespace krohost::cli
