#pragma once

#include "loader/streams/StreamReader.h"
#include "loader/streams/VtkZLibDataInputStream.h"

#include "loader/xml/DataArray.h"

#include "loader/sdk/File.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace veltra::vtkfile {

/// An open file, which readers of several of its arrays may share.
using FilePtr = std::shared_ptr<const dataio::File>;

/// Opens the file that holds an array. Throws FileAccessException.
FilePtr openFile(const DataArray& array);

/// Stacks the streams that yield an array's plain values over its file. `valueCount` receives the values that binary
/// data hold, 0 for ascii.
///
/// Throws IOException when the array's header claims what the file cannot hold, and std::bad_alloc. [any thread]
std::unique_ptr<StreamReader> openDataArrayReader(const FilePtr& file, const DataArray& array,
                                                  std::uint64_t& valueCount,
                                                  DamagedBlock damagedBlock = DamagedBlock::passedOver);

/// Opens an array that must hold `valueCount` values; more may follow, which some writers leave there. Throws
/// IOException when binary data hold fewer. [any thread]
std::unique_ptr<StreamReader> openDataArrayOf(const FilePtr& file, const DataArray& array, std::uint64_t valueCount);

/// The values that an array's record announces: tuples times components. Throws IOException when there are more
/// components than readers count or there is no such number.
std::uint64_t announcedValueCount(const DataArray& array);

/// Throws IOException when an array cannot hold the values that its record announces: binary data hold fewer, or ascii
/// text is too short for so many. Reads headers at most. [any thread]
void checkValueCount(const FilePtr& file, const DataArray& array);

/// Reads one component of every tuple of an array into `dst`, which has room for numberOfTuples values. Throws
/// IOException when the array holds fewer values, and what StreamReader::readValues throws. [any thread]
///
/// Dst is std::uint8_t, std::int16_t, std::int32_t, float or double.
template <class Dst>
void readComponent(const FilePtr& file, const DataArray& array, std::uint16_t component, Dst* dst);

/// Reads the next `valueCount` values of an array of integers with one component, with the instance of readValues for
/// its element type. Throws IOException for an array of floating-point numbers.
///
/// Dst is std::int32_t or std::int64_t.
template <class Dst>
void readIntegers(StreamReader& reader, const DataArray& array, Dst* dst, std::size_t valueCount);

} // namespace veltra::vtkfile
