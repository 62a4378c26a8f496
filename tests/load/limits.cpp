#include "tests/load/limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include <malloc.h>
#include <sys/resource.h>

namespace test {

namespace {

#if defined(KRO_SANITIZED) || !defined(__OPTIMIZE__) // not the code that users run
constexpr std::clock_t mostTime = 10 * CLOCKS_PER_SEC;
constexpr std::size_t allowance = std::size_t{1} << 30;
#else
constexpr std::clock_t mostTime = CLOCKS_PER_SEC;
constexpr std::size_t allowance = 0;
#endif

std::size_t residentPeak() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

/// The peak begins anew, without what the C library has kept of memory that was freed.
std::size_t resetPeak() {
    malloc_trim(0);
    EXPECT_TRUE((std::ofstream("/proc/self/clear_refs") << "5").flush()) << "the peak of memory cannot be reset";
    return residentPeak();
}

} // namespace

Limits::Limits(std::size_t fileByteCount)
    : byteCountAtBegin_{resetPeak()}, mostByteCount_{allowance +
                                                     std::max(std::size_t{64} << 20, 1100 * fileByteCount)} {}

void Limits::check() {
    const std::clock_t now = std::clock();
    EXPECT_LE(now - begin_, mostTime) << "ticks of the processor's time";
    EXPECT_LE(peakByteCount(), mostByteCount_);
    begin_ = now;
}

std::size_t Limits::peakByteCount() const {
    return residentPeak() - byteCountAtBegin_;
}

} // namespace test
