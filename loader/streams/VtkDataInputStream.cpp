#include "loader/streams/VtkDataInputStream.h"

#include "loader/streams/VtkXMLDataHeader.h"
#include "loader/streams/byteOrder.h"
#include "loader/streams/messages.h"

#include "loader/sdk/exceptions.h"

namespace veltra::vtkfile {

namespace {

std::uint64_t sectionLength(dataio::InputStreamInterface& stream, const DataArray& array) {
    const std::uint64_t byteCount = array.format == DataArrayFormat::Ascii
                                        ? array.length
                                        : readDataHeader(stream, needsSwap(array.bigEndian), array.headerSize)->value();
    const auto available = static_cast<std::uint64_t>(stream.available());
    if (byteCount > available)
        throw IOException(dataBeyondFile(array, byteCount, available));
    return byteCount;
}

} // namespace

VtkDataInputStream::VtkDataInputStream(dataio::InputStreamPtr stream, const DataArray& array, std::uint64_t& valueCount)
    : RestrictedSectionInputStream(stream, sectionLength(*stream, array)) {
    valueCount = array.format == DataArrayFormat::Ascii
                     ? 0
                     : static_cast<std::uint64_t>(available()) / elementByteCount(array.type);
}

} // namespace veltra::vtkfile
