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

Data deflated(fuzz::Bytes bytes, int strategy) {
    z_stream deflater{};
    deflateInit2(&deflater, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS, MAX_MEM_LEVEL, strategy);
    Data data(deflateBound(&deflater, bytes.size()));
    deflater.next_in = const_cast<Bytef*>(bytes.data());
    deflater.avail_in = static_cast<uInt>(bytes.size());
    deflater.next_out = data.data();
    deflater.avail_out = static_cast<uInt>(data.size());
    deflate(&deflater, Z_FINISH);
    data.resize(deflater.total_out);
    deflateEnd(&deflater);
    return data;
}

/// Bytes taken as a block, or deflated by one of zlib's five strategies and perhaps damaged in one place.
Data takeBlock(fuzz::Input& input) {
    const std::uint8_t kind = input.byte();
    const bool isDamaged = kind >= 0x80;
    const auto place = isDamaged ? input.take<std::uint16_t>() : std::uint16_t{0};
    const fuzz::Bytes bytes = input.bytes(input.take<std::uint16_t>() % 2000);
    Data block = kind % 2 == 0 ? Data(bytes.begin(), bytes.end()) : deflated(bytes, kind / 2 % 5);
    if (isDamaged && !block.empty())
        block[place / 8 % block.size()] ^= static_cast<std::uint8_t>(1u << place % 8);
    return block;
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

/// How many bytes the block's checksum vouches for, more than `least`, among those that were read; 0 for none.
std::size_t vouchedCount(const Data& block, std::size_t least, fuzz::Bytes read) {
    uLong stored = 0;
    for (const std::uint8_t byte : fuzz::Bytes(block).last(std::min<std::size_t>(block.size(), 4)))
        stored = stored << 8 | byte;
    uLong checksum = adler32(0, nullptr, 0);
    for (std::size_t count = 1; count <= read.size(); ++count) {
        checksum = adler32(checksum, &read[count - 1], 1);
        if (count > least && checksum == stored)
            return count;
    }
    return 0;
}

/// Whether the bytes that were read are those that zlib leaves behind of each block, followed by zeros. Of a block
/// whose header zlib refuses, they may be those that its checksum vouches for: libdeflate takes some of these.
bool areInflated(fuzz::Bytes read, std::span<const Data> blocks, std::size_t room, std::size_t lastRoom) {
    if (blocks.empty())
        return std::ranges::count(read, 0) == std::ssize(read);
    const std::size_t most = std::min(blocks.size() == 1 ? lastRoom : room, read.size());
    const Data zlibs = inflated(blocks.front(), most);
    if (std::ranges::equal(zlibs, read.first(zlibs.size())) &&
        areInflated(read.subspan(zlibs.size()), blocks.subspan(1), room, lastRoom))
        return true;
    const std::size_t vouched = zlibs.size() < most ? vouchedCount(blocks.front(), zlibs.size(), read.first(most)) : 0;
    return vouched > 0 && areInflated(read.subspan(vouched), blocks.subspan(1), room, lastRoom);
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
    std::vector<Data> blocks(1 + input.byte() % 9);
    std::ranges::generate(blocks, [&] { return takeBlock(input); });

    const auto stored = std::make_shared<Data>();
    for (const std::size_t word : {blocks.size(), blockByteCount, lastByteCount})
        appendWord(*stored, word);
    for (const Data& block : blocks)
        appendWord(*stored, block.size());
    for (const Data& block : blocks)
        stored->insert(stored->end(), block.begin(), block.end());
    const std::size_t lastRoom = lastByteCount == 0 ? blockByteCount : lastByteCount;

    DataArray array;
    array.name = std::make_shared<const std::string>("a");
    array.format = DataArrayFormat::Appended;
    array.type = DataArrayType::UInt8;
    array.headerSize = 4;
    std::uint64_t valueCount = 0;
    try {
        VtkZLibDataInputStream stream(std::make_shared<veltra::dataio::ByteInputStream>(stored), array, valueCount);
        require(valueCount == (blocks.size() - 1) * blockByteCount + lastRoom, "the values are those announced");
        Data read(valueCount);
        for (std::size_t begin = 0; begin < read.size(); begin += chunk)
            stream.read(read.data() + begin, std::min(chunk, read.size() - begin));
        require(stream.available() == 0, "nothing is left");
        require(areInflated(read, blocks, blockByteCount, lastRoom), "blocks inflate to what zlib leaves behind");
        const auto fillsRoom = [&](const Data& block) {
            const std::size_t room = &block == &blocks.back() ? lastRoom : blockByteCount;
            return inflated(block, room).size() == room;
        };
        return std::ranges::all_of(blocks, fillsRoom) ? "sound" : "damaged";
    } catch (const veltra::IOException& failure) {
        return sentence(failure.what());
    }
}
