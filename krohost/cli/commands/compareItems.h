#pragma once

#include "krohost/host/model/Deferred.h"
#include "krohost/reader/narrowing.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace krohost::cli {

/// Values differ unless they are equal, both NaN, or no further apart than the larger of `absolute` and `relative`
/// times the larger magnitude.
struct Tolerance {
    double relative = 0;
    double absolute = 0;

    bool isZero() const { return relative == 0 && absolute == 0; }
};

/// A difference of two values and where they are, counted from 0. Between what has none, as NaN and 1, it is infinite.
struct Extreme {
    double difference = 0;
    std::int64_t index = 0;
    long double left = 0, right = 0; ///< which holds every 64-bit integer
};

struct Comparison {
    std::int64_t count = 0;
    std::int64_t differingCount = 0;
    std::int64_t firstIndex = 0; ///< of those that differ
    Extreme absolute, relative;  ///< the largest ones of those that differ
};

bool areClose(double left, double right, const Tolerance& tolerance);

/// The values that the files have where hosts hold others, in the order of their places.
struct Originals {
    std::span<const reader::NarrowedValue> left, right;
};

/// Compares one part of two loaded variables or node maps, of whatever storage types. Both must have as many items.
/// Where there is an original, it takes the place of what the host holds. Those of places beyond the items are passed
/// over.
Comparison compareItems(const Deferred& left, const Deferred& right, std::size_t partIndex, const Tolerance& tolerance,
                        Originals originals = {});

} // namespace krohost::cli
