#pragma once

#include "fuzz/fuzz.h"

#include "tests/support/encoding.h"

namespace fuzz {

/// One of the ways to write an array.
inline test::Encoding takeEncoding(Input& input) {
    static const std::vector<test::Encoding> encodings = test::allEncodings();
    test::Encoding encoding = encodings[input.byte() % encodings.size()];
    encoding.blockByteCount = 1 + input.byte() * 8u;
    return encoding;
}

} // namespace fuzz
