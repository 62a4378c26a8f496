#pragma once

#include "loader/streams/dataArrayReader.h"

#include <cstdint>

namespace veltra::vtkfile {

/// The values that a binary array has by the first words of its header, 0 where these make no sense. Reads no table of
/// blocks, however long the header says that it is. Throws IOException where the file ends before. [any thread]
std::uint64_t heldValueCount(const FilePtr& file, const DataArray& array);

} // namespace veltra::vtkfile
