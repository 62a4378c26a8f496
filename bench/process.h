/// What a process that measures says of itself.
#pragma once

#include "krohost/cli/Stopwatch.h"

#include <sys/resource.h>

#include <fstream>
#include <string>

namespace bench {

using krohost::cli::Stopwatch;

/// User and system time of the process.
inline double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The most memory that the process has had. Not ru_maxrss, which it takes over from the one that started it.
inline long peakKib() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long figure = 0; word == "VmHWM:" && status >> figure)
            return figure;
    return 0;
}

} // namespace bench
