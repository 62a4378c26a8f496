#include "loader/streams/Inflater.h"

#include <libdeflate.h>
#include <zlib.h>

#include <new>

namespace veltra::vtkfile {

void Inflater::Deleter::operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
}

Inflater::Inflater() : decompressor_(libdeflate_alloc_decompressor()) {
    if (!decompressor_)
        throw std::bad_alloc();
}

Inflater::~Inflater() = default;

std::size_t Inflater::inflate(std::span<const std::uint8_t> compressed, std::span<std::uint8_t> room) {
    wasSound_ = false;
    if (compressed.empty() || room.empty())
        return 0;
    std::size_t byteCount = 0;
    wasSound_ = libdeflate_zlib_decompress(decompressor_.get(), compressed.data(), compressed.size(), room.data(),
                                           room.size(), &byteCount) == LIBDEFLATE_SUCCESS;
    if (wasSound_)
        return byteCount;
    // libdeflate says nothing of how far it came. zlib does, and what it leaves behind is the result
    // for a damaged block; its result code therefore tells only of memory.
    uLongf produced = room.size();
    if (uncompress(room.data(), &produced, compressed.data(), compressed.size()) == Z_MEM_ERROR)
        throw std::bad_alloc();
    return produced;
}

// Deflate's best is a 258-byte match from two bits; a block header and the checksum only make it worse.
std::uint64_t Inflater::largestOutput(std::uint64_t compressedByteCount) {
    return compressedByteCount * 1032;
}

} // namespace veltra::vtkfile
