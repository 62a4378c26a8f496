/// The sentences that a user reads about an array whose data cannot be what they claim.
#pragma once

#include "loader/xml/DataArray.h"

#include <cstdint>
#include <string>

namespace veltra::vtkfile {

/// How messages refer to an array.
std::string quotedName(const DataArray& array);

std::string dataBeyondFile(const DataArray& array, std::uint64_t claimedByteCount, std::uint64_t byteCount);
std::string blockTableBeyondFile(const DataArray& array, std::uint64_t blockCount, std::uint64_t byteCount);
std::string compressedBlocksBeyondFile(const DataArray& array, std::uint64_t byteCount);
std::string blocksWithoutBytes(const DataArray& array, std::uint64_t blockCount);
std::string inflatedSizeOverflow(const DataArray& array, std::uint64_t blockCount, std::uint64_t blockByteCount);
std::string inflatedSizeImplausible(const DataArray& array, std::uint64_t claimedByteCount,
                                    std::uint64_t compressedByteCount);
std::string arrayOutsideFile(const DataArray& array, std::uint64_t byteCount);
std::string tooManyComponents(const DataArray& array);
std::string valueCountOverflow(const DataArray& array);
std::string valueCountMismatch(const DataArray& array, std::uint64_t neededCount, std::uint64_t heldCount);
std::string textTooShort(const DataArray& array, std::uint64_t neededCount);
std::string notAnIntegerArray(const DataArray& array);

inline constexpr const char* endOfCompressedData = "Unexpected end of compressed data";
inline constexpr const char* blockIsDamaged = "A compressed block is damaged";

} // namespace veltra::vtkfile
