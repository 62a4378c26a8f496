// Blocks of compressed bytes, sound or not, read in chunks, against zlib block by block.

#include "fuzz/fuzz.h"

#include "streams/VtkZLibDataInputStream.h"

#include "host/ByteInputStream.h"
#include "host/exceptions.h"

#include <zlib.h>

#include <vector>

namespace {

using namespace veltra::vtkfile;
using Data = std::vector<std::uint8_t>;

Data deflated(fuzz::Bytes bytes) {
    uLongf byteCount = compressBound(bytes.size());
    Data data(byteCount);
    compress(data.data(), &byteCount, bytes.data(), bytes.size());
    data.resize(byteCount);
    return data;
}

/// What zlib makes of a block, which holds no more than `room` bytes.
Data inflated(const Data& block, std::size_t room) {
    uLongf byteCount = room;
    Data data(room + 1);
    if (block.empty() || room == 0)
        return {};
    uncompress(data.data(), &byteCount, block.data(), block.size());
    data.resize(byteCount);
    return data;
}

void appendWord(Data& data, std::size_t word) {
    for (int shift = 0; shift < 32; shift += 8)
        data.push_back(static_cast<std::uint8_t>(word >> shift));
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    const std::size_t chunk = 1 + input.byte() * 5u;
    const std::size_t blockByteCount = input.take<std::uint16_t>();
    const std::size_t lastByteCount = input.take<std::uint16_t>();
    std::vector<Data> blocks(1 + input.byte() % 5);
    for (Data& block : blocks) {
        const bool isSound = input.flag();
        const Bytes taken = input.bytes(input.take<std::uint16_t>() % 2000);
        block = isSound ? deflated(taken) : Data(taken.begin(), taken.end());
    }

    const auto stored = std::make_shared<Data>();
    for (const std::size_t word : {blocks.size(), blockByteCount, lastByteCount})
        appendWord(*stored, word);
    for (const Data& block : blocks)
        appendWord(*stored, block.size());
    Data expected;
    for (const Data& block : blocks) {
        stored->insert(stored->end(), block.begin(), block.end());
        const bool isLast = &block == &blocks.back() && lastByteCount != 0;
        const Data part = inflated(block, isLast ? lastByteCount : blockByteCount);
        expected.insert(expected.end(), part.begin(), part.end());
    }
    const std::size_t heldCount = expected.size();
    expected.resize((blocks.size() - 1) * blockByteCount + (lastByteCount == 0 ? blockByteCount : lastByteCount));

    DataArray array;
    array.name = std::make_shared<const std::string>("a");
    array.format = DataArrayFormat::Appended;
    array.type = DataArrayType::UInt8;
    array.headerSize = 4;
    std::uint64_t valueCount = 0;
    try {
        VtkZLibDataInputStream stream(std::make_shared<veltra::dataio::ByteInputStream>(stored), array, valueCount);
        require(valueCount == expected.size(), "the values are those announced");
        Data read(expected.size());
        for (std::size_t begin = 0; begin < read.size(); begin += chunk)
            stream.read(read.data() + begin, std::min(chunk, read.size() - begin));
        require(read == expected, "blocks inflate to what zlib leaves behind");
        require(stream.available() == 0, "nothing is left");
    } catch (const veltra::IOException& failure) {
        return sentence(failure.what());
    }
    return heldCount == expected.size() ? "sound" : "damaged";
}
