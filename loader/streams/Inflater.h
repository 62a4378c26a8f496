#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct libdeflate_decompressor;

namespace veltra::vtkfile {

/// Inflates zlib streams, one complete stream at a time. Not for use by two threads at once.
class Inflater {
public:
    /// Throws std::bad_alloc.
    Inflater();
    ~Inflater();

    /// Inflates `compressed` into `room` and returns how many bytes that gave. A damaged stream, or one that holds more
    /// than there is room for, gives what zlib's uncompress() leaves behind; it is not reported. Headers of blocks that
    /// zlib refuses although the data and their checksum are right may be accepted.
    std::size_t inflate(std::span<const std::uint8_t> compressed, std::span<std::uint8_t> room);

    /// Whether the last stream was neither damaged nor longer than the room for it.
    bool wasSound() const { return wasSound_; }

    /// The most that a zlib stream of this many bytes can inflate to.
    static std::uint64_t largestOutput(std::uint64_t compressedByteCount);

private:
    struct Deleter {
        void operator()(libdeflate_decompressor* decompressor) const;
    };
    std::unique_ptr<libdeflate_decompressor, Deleter> decompressor_;
    bool wasSound_ = false;
};

} // namespace veltra::vtkfile
