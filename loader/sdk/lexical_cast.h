#pragma once

#include <string_view>

namespace veltra {

/// Converts the whole text to a number of type T, one of the eight integer types of one to eight bytes (a one-byte
/// type is a number too, not a character), float and double. A leading sign is accepted, and for floating point "nan"
/// and "inf" in any letter case as writers produce them; blanks are not.
///
/// Throws bad_lexical_cast for text that is not a number of that type and bad_numeric_cast for a number that does not
/// fit it (a floating-point number too small for the type becomes zero). Both name the text. [any thread]
template <class T>
T lexical_cast(std::string_view text);

} // namespace veltra
