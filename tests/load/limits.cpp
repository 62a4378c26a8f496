#include "tests/load/limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <fstream>

#include <malloc.h>
#include <sys/resource.h>

namespace test {

namespace {

#if defined(KRO_SANITIZED) || !defined(__OPTIMIZE__) // not the code that users run
constexpr std::size_t allowance = std::size_t{1} << 30;
#else
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

void Limits::check() const {
    EXPECT_LE(residentPeak() - byteCountAtBegin_, mostByteCount_);
}

void expectLinear(std::size_t partCount, const std::function<void(std::size_t)>& timed) {
    const auto ticks = [&](std::size_t count) {
        const std::clock_t begin = std::clock();
        timed(count);
        return static_cast<double>(std::clock() - begin);
    };
    double least = 1e9;
    for (int tries = 0; tries < 9 && least > 2.3; ++tries) {
        const double once = ticks(partCount);
        least = std::min(least, ticks(2 * partCount) / std::max(once, 1.0));
    }
    EXPECT_LE(least, 2.3) << "times the work for twice the input";
}

} // namespace test
