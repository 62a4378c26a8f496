#include "loader/streams/VtkXMLDataHeader.h"

#include "loader/streams/byteOrder.h"

#include <array>
#include <bit>

namespace veltra::vtkfile {

namespace {

template <class Word>
std::unique_ptr<VtkXMLDataHeader> readWord(dataio::InputStreamInterface& stream, bool swapBytes) {
    std::array<std::uint8_t, sizeof(Word)> bytes;
    stream.read(bytes.data(), bytes.size());
    const Word word = std::bit_cast<Word>(bytes);
    return std::make_unique<VtkXMLDataHeaderImpl<Word>>(swapBytes ? reverseBytes(word) : word);
}

} // namespace

std::unique_ptr<VtkXMLDataHeader> readDataHeader(dataio::InputStreamInterface& stream, bool swapBytes,
                                                 std::uint8_t headerSize) {
    return headerSize == sizeof(std::uint32_t) ? readWord<std::uint32_t>(stream, swapBytes)
                                               : readWord<std::uint64_t>(stream, swapBytes);
}

} // namespace veltra::vtkfile
