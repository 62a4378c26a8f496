#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

/// A document with one to four changes that a fuzzer of bytes seldom finds: attributes get values that count, those of
/// other elements or none; names come twice or differ in case only; elements are doubled, taken out, exchanged or
/// nested; header words and block tables say something else, in base64 text and in raw data; numbers in text are
/// replaced. A well-formed document stays so. Several documents may be in the text one after the other. The same
/// text and seed give the same. [any thread]
std::string mutated(std::string_view document, std::uint32_t seed);

/// A document with an element of another one, after or in the place of one of its own.
std::string crossed(std::string_view document, std::string_view other, std::uint32_t seed);

} // namespace fuzz
