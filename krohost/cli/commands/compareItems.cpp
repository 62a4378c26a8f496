#include "krohost/cli/commands/compareItems.h"

#include "krohost/host/model/itemType.h"

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
template <class Real>
Real distance(Real left, Real right) {
    const Real difference = std::abs(left - right);
    return std::isnan(difference) ? std::numeric_limits<Real>::infinity() : difference;
}

template <class Real>
Real greaterMagnitude(Real left, Real right) {
    return std::max(std::abs(left), std::abs(right));
}

template <class Real>
bool isWithin(Real left, Real right, const Tolerance& tolerance) {
    if (left == right || (std::isnan(left) && std::isnan(right)))
        return true;
    const Real difference = distance(left, right);
    return !std::isinf(difference) &&
           difference <= std::max(Real{tolerance.absolute}, Real{tolerance.relative} * greaterMagnitude(left, right));
}

void raise(Extreme& extreme, double difference, std::int64_t index, long double left, long double right) {
    if (difference > extreme.difference)
        extreme = {difference, index, left, right};
}

template <class Real>
void note(Comparison& comparison, std::size_t place, Real left, Real right) {
    const Real difference = distance(left, right);
    const auto index = static_cast<std::int64_t>(place);
    if (comparison.differingCount++ == 0)
        comparison.firstIndex = index;
    const Real relative = std::isinf(difference) ? difference : difference / greaterMagnitude(left, right);
    raise(comparison.absolute, static_cast<double>(difference), index, left, right);
    raise(comparison.relative, static_cast<double>(relative), index, left, right);
}

/// The place of the next original; beyond all places when there is none.
std::size_t nextPlace(const Originals& originals) {
    std::uint64_t place = SIZE_MAX;
    for (const auto& side : {originals.left, originals.right})
        if (!side.empty())
            place = std::min(place, side.front().tuple);
    return static_cast<std::size_t>(place);
}

/// The next of the originals if it is that of the place, else what the host holds.
long double takeOriginal(std::span<const reader::NarrowedValue>& originals, std::size_t place, long double held) {
    if (originals.empty() || originals.front().tuple != place)
        return held;
    const long double value = originals.front().value;
    originals = originals.subspan(1);
    return value;
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
Comparison compare(std::span<const Left> left, std::span<const Right> right, const Tolerance& tolerance,
                   Originals originals) {
    constexpr std::size_t blockLength = 4096;
    Comparison comparison;
    comparison.count = static_cast<std::int64_t>(left.size());
    std::size_t next = nextPlace(originals);
    for (std::size_t begin = 0; begin < left.size(); begin += blockLength) {
        const std::size_t end = std::min(begin + blockLength, left.size());
        if (next >= end && haveSameBytes(left.subspan(begin, end - begin), right.subspan(begin, end - begin)))
            continue;
        for (std::size_t place = begin; place < end; ++place) {
            const auto a = static_cast<double>(left[place]), b = static_cast<double>(right[place]);
            if (place == next) {
                const long double x = takeOriginal(originals.left, place, a),
                                  y = takeOriginal(originals.right, place, b);
                if (!isWithin(x, y, tolerance))
                    note(comparison, place, x, y);
                next = nextPlace(originals);
            } else if (!areClose(a, b, tolerance) ||
                       (tolerance.isZero() && areUnequalIntegers(left[place], right[place])))
                note(comparison, place, a, b);
        }
    }
    return comparison;
}

} // namespace

bool areClose(double left, double right, const Tolerance& tolerance) {
    return isWithin(left, right, tolerance);
}

Comparison compareItems(const Deferred& left, const Deferred& right, std::size_t partIndex, const Tolerance& tolerance,
                        Originals originals) {
    return withItemType(left, [&]<class Left>(ItemTag<Left>) {
        return withItemType(right, [&]<class Right>(ItemTag<Right>) {
            return compare(left.parts()[partIndex].items<Left>(), right.parts()[partIndex].items<Right>(), tolerance,
                           originals);
        });
    });
}

} // namespace krohost::cli
