#include "fuzz/fuzz.h"

/// What libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t byteCount) {
    fuzz::limitedOutcome({data, byteCount});
    return 0;
}
