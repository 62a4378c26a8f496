#pragma once

#include "loader/sdk/InputStreamInterface.h"

#include <cstdint>
#include <memory>

namespace veltra::vtkfile {

/// One header word of a binary array: an unsigned integer of 4 or 8 bytes in the file's byte order.
class VtkXMLDataHeader {
public:
    virtual ~VtkXMLDataHeader() = default;
    virtual std::uint64_t value() const = 0;
    virtual std::uint8_t wordSize() const = 0;
};

template <class Word>
class VtkXMLDataHeaderImpl final : public VtkXMLDataHeader {
public:
    explicit VtkXMLDataHeaderImpl(Word word) : word_(word) {}
    std::uint64_t value() const override { return word_; }
    std::uint8_t wordSize() const override { return sizeof(Word); }

private:
    Word word_;
};

/// Reads the next header word; a size other than 4 means 8. Lets the stream's exceptions pass.
std::unique_ptr<VtkXMLDataHeader> readDataHeader(dataio::InputStreamInterface& stream, bool swapBytes,
                                                 std::uint8_t headerSize);

} // namespace veltra::vtkfile
