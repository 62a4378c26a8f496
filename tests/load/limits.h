#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace test {

/// Fails the test if what is done with a file takes more memory than 64 MB or 1100 times the file, whichever is more,
/// on top of what the process has at its begin. Builds with sanitizers, which keep what is freed for a while, have a
/// gigabyte more.
class Limits {
public:
    explicit Limits(std::size_t fileByteCount);
    /// Call it after each load.
    void check() const;

private:
    std::size_t byteCountAtBegin_;
    std::size_t mostByteCount_;
};

/// Fails the test unless twice as much of a thing takes at most 2.3 times the processor's time. `timed` does a thing of
/// so many parts. What else the machine does disturbs some tries, but what grows with the square takes four times as
/// long in each of them.
void expectLinear(std::size_t partCount, const std::function<void(std::size_t partCount)>& timed);

} // namespace test
