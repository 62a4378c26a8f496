/// Values that a host does not hold as a file has them: its integers have 8, 16 or 32 bits.
#pragma once

#include "krohost/reader/pieceArrays.h"

#include <cstdint>
#include <functional>
#include <string>

namespace krohost::reader {

/// In which type a host holds values of a variable: 8-bit integers without a sign, 16-bit and wider ones with a sign.
ElementType hostType(ElementType type);

/// A value that becomes another one. Both are exact: a long double holds every 64-bit integer.
struct NarrowedValue {
    std::uint64_t tuple = 0; ///< from 0, over all pieces of the file
    std::uint64_t component = 0;
    long double value = 0;
    long double held = 0;
};

/// Hands out the values that a host holds otherwise, node numbers as those of 32 bits. All pieces' values are held in
/// the type that the first piece's have. Decodes only arrays of other types than that. What cannot be decoded gives
/// nothing more. [any thread]
void forEachNarrowedValue(const Document& document, const PiecewiseArray& array,
                          const std::function<void(const NarrowedValue&)>& use, const Poll& poll);

/// What of an array is held otherwise.
struct Narrowing {
    std::uint64_t valueCount = 0; ///< that the array has, as its tags say; of connectivity, that were decoded
    std::uint64_t narrowedCount = 0;
    NarrowedValue first = {};
};
Narrowing narrowingOf(const Document& document, const PiecewiseArray& array, const Poll& poll);

/// All digits of a whole number; of others, the fewest that tell them apart.
std::string inDigits(long double value);

/// `14950000000 at 3 becomes 2065098112`, with the component where there are several.
std::string inWords(const NarrowedValue& value, const Array& array);

} // namespace krohost::reader
