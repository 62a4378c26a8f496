#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace veltra::vtkfile {

/// Inflates several zlib streams by turns, a symbol of each: while the processor waits to learn where the next symbol
/// of one begins, it works on the others. It takes streams with a window of 32 KiB, no dictionary, complete codes and
/// up to 64 blocks; what is damaged or otherwise out of the ordinary is left to Inflater. Checksums are not looked at,
/// since zlib too gives the bytes before it finds a wrong one.
///
/// Not for use by two threads at once.
class InterleavedInflater {
public:
    static constexpr std::size_t laneCount = 4;

    /// Bytes that must be readable after a stream, whatever they hold, and writable after its room.
    static constexpr std::size_t readSlack = 32;
    static constexpr std::size_t writeSlack = 320;

    struct Stream {
        std::span<const std::uint8_t> compressed;
        std::span<std::uint8_t> room;
    };

    /// Whether this processor has the instructions that make it worth while.
    static bool isSupported();

    /// Throws std::bad_alloc.
    InterleavedInflater();
    ~InterleavedInflater();

    /// Inflates up to laneCount streams and returns how many of them, from the first on, have filled their room to the
    /// byte, with what zlib would have put there. The next one is damaged, gives another number of bytes, or is better
    /// inflated by itself because most of its symbols are matches. Its room and those after it hold anything.
    std::size_t inflate(std::span<const Stream> streams);

private:
    struct Lane;

    void run();

    std::unique_ptr<Lane[]> lanes_;
};

} // namespace veltra::vtkfile
