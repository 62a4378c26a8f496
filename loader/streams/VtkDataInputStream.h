#pragma once

#include "loader/sdk/RestrictedSectionInputStream.h"
#include "loader/xml/DataArray.h"

#include <cstdint>

namespace veltra::vtkfile {

/// The bytes of an array that is not compressed: the text of an ascii array, or the data after the header word of a
/// binary one.
class VtkDataInputStream final : public dataio::RestrictedSectionInputStream {
public:
    /// `stream` is at the array's text or header word. `valueCount` receives the whole values that binary data
    /// hold, 0 for ascii. Throws IOException when the header word claims more than the stream can hold.
    VtkDataInputStream(dataio::InputStreamPtr stream, const DataArray& array, std::uint64_t& valueCount);
};

} // namespace veltra::vtkfile
