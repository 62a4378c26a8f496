#pragma once

#include <cstddef>
#include <ctime>

namespace test {

/// Fails the test if what is done with a file takes more than a second of processor time, or more memory than 64 MB or
/// 1100 times the file, whichever is more, on top of what the process has at its begin. Builds with sanitizers, which
/// keep what is freed for a while, have ten seconds and a gigabyte more.
class Limits {
public:
    explicit Limits(std::size_t fileByteCount);
    /// Call it after each load.
    void check();

    std::size_t peakByteCount() const; // on top of that at the begin
private:
    std::size_t byteCountAtBegin_;
    std::size_t mostByteCount_;
    std::clock_t begin_ = std::clock();
};

} // namespace test
