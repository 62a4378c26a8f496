// Blocks of compressed bytes, sound or not, read in chunks, against zlib block by block.

#include "fuzz/fuzz.h"

#include "loader/streams/VtkZLibDataInputStream.h"

#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/exceptions.h"
#include "tests/support/deflate.h"

#include <zlib.h>

#include <utility>
#include <vector>

namespace {

using namespace veltra::vtkfile;
using Data = std::vector<std::uint8_t>;

constexpr std::size_t endOfBlock = 256;

/// Writes a sequence of bits, the least significant first.
struct BitWriter {
    Data bytes;
    unsigned bitCount = 0;

    void put(std::size_t bits, unsigned count) {
        for (; count > 0; --count, bits >>= 1, ++bitCount) {
            if (bitCount % 8 == 0)
                bytes.push_back(0);
            bytes.back() |= static_cast<std::uint8_t>((bits & 1) << bitCount % 8);
        }
    }
};

/// A code for some of the symbols below `limit`, `first` and others as the input wants.
struct Code {
    std::vector<std::size_t> symbols;
    std::vector<unsigned> lengths; // by symbol; 0 for none

    Code(fuzz::Input& input, std::size_t first, std::size_t limit) : symbols{first}, lengths(limit) {
        const std::size_t count = 2 + input.byte() % (limit - 2), step = input.byte();
        for (std::size_t symbol = step % limit; symbols.size() < count; symbol = (symbol + 1) % limit)
            if (symbol != first)
                symbols.push_back(symbol);
        std::vector<unsigned> leaves{0};
        while (leaves.size() < count) {
            unsigned& chosen = leaves[input.byte() % leaves.size()];
            unsigned& leaf = chosen < 15 ? chosen : *std::ranges::min_element(leaves);
            const unsigned length = ++leaf;
            leaves.push_back(length);
        }
        for (std::size_t index = 0; index < count; ++index)
            lengths[symbols[index]] = leaves[index];
    }

    void write(BitWriter& writer, std::size_t symbol) const {
        std::size_t code = 0; // as many as there are before it, in units of the longest code
        for (std::size_t other = 0; other < lengths.size(); ++other)
            if (lengths[other] != 0 && std::pair(lengths[other], other) < std::pair(lengths[symbol], symbol))
                code += 0x8000u >> lengths[other];
        for (unsigned bit = 0; bit < lengths[symbol]; ++bit)
            writer.put(code >> (14 - bit), 1);
    }
};

/// What the symbols after the end of a block stand for, and those of distances: the least, and the bits that add to
/// it.
struct Range {
    std::size_t least;
    unsigned bitCount;
};

Range lengthRange(std::size_t index) {
    if (index < 8 || index == 28)
        return {index == 28 ? 258 : index + 3, 0};
    const std::size_t bitCount = index / 4 - 1;
    return {((4 + index % 4) << bitCount) + 3, static_cast<unsigned>(bitCount)};
}

Range distanceRange(std::size_t index) {
    if (index < 4)
        return {index + 1, 0};
    const std::size_t bitCount = index / 2 - 1;
    return {((2 + index % 2) << bitCount) + 1, static_cast<unsigned>(bitCount)};
}

/// Writes a block of two codes up to its end, with symbols as the input wants them. Returns the bytes it stands for:
/// `byteCount`, or none where no literal has a code.
Data writeBlock(BitWriter& writer, fuzz::Input& input, const Code& literals, const Code& distances,
                std::size_t byteCount) {
    Data bytes;
    const auto literal = std::ranges::find_if(literals.symbols, [](std::size_t symbol) { return symbol < endOfBlock; });
    while (bytes.size() < byteCount && literal != literals.symbols.end()) {
        const std::size_t symbol = literals.symbols[input.byte() % literals.symbols.size()];
        if (symbol > endOfBlock) {
            const std::size_t place = distances.symbols[input.byte() % distances.symbols.size()];
            const Range lengths = lengthRange(symbol - endOfBlock - 1), distant = distanceRange(place);
            const std::size_t extraLength = input.byte() % (1u << lengths.bitCount);
            const std::size_t extraDistance = input.take<std::uint16_t>() % (1u << distant.bitCount);
            const std::size_t length = lengths.least + extraLength, distance = distant.least + extraDistance;
            if (distance <= bytes.size() && length <= byteCount - bytes.size()) {
                literals.write(writer, symbol);
                writer.put(extraLength, lengths.bitCount);
                distances.write(writer, place);
                writer.put(extraDistance, distant.bitCount);
                for (std::size_t copied = 0; copied < length; ++copied)
                    bytes.push_back(bytes[bytes.size() - distance]);
                continue;
            }
        }
        const std::size_t byte = symbol < endOfBlock ? symbol : *literal;
        literals.write(writer, byte);
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    literals.write(writer, endOfBlock);
    return bytes;
}

/// A sound stream of one block, with codes as the input wants them, which zlib would not have written.
Data written(fuzz::Input& input, std::size_t byteCount) {
    BitWriter writer{{0x78, 0x9C}, 16};
    writer.put(0b101, 3); // the last block, codes of its own
    const Code literals(input, endOfBlock, 286);
    const Code distances(input, 0, 30);
    writer.put(286 - 257, 5);
    writer.put(30 - 1, 5);
    writer.put(19 - 4, 4);
    for (unsigned index = 0; index < 19; ++index)
        writer.put(index < 3 ? 0 : 4, 3); // four bits for each length, none for repeats
    for (const Code* code : {&literals, &distances})
        for (const unsigned length : code->lengths)
            for (unsigned bit = 4; bit-- > 0;)
                writer.put(length >> bit, 1);
    const Data bytes = writeBlock(writer, input, literals, distances, std::min<std::size_t>(byteCount, 4000));
    const uLong checksum = adler32(adler32(0, nullptr, 0), bytes.data(), static_cast<uInt>(bytes.size()));
    for (int shift = 24; shift >= 0; shift -= 8)
        writer.bytes.push_back(static_cast<std::uint8_t>(checksum >> shift));
    fuzz::require(test::inflatedByZlib(writer.bytes, bytes.size()) == bytes, "what was written is sound");
    return writer.bytes;
}

/// Bytes taken as a block, or deflated by one of zlib's five strategies, or written as above, and perhaps damaged in
/// one place.
Data takeBlock(fuzz::Input& input, std::size_t byteCount) {
    const std::uint8_t kind = input.byte();
    const bool isDamaged = kind >= 0x80;
    const auto place = isDamaged ? input.take<std::uint16_t>() : std::uint16_t{0};
    const int strategy = kind / 2 % 6;
    Data block;
    if (kind % 2 == 1 && strategy == 5) {
        block = written(input, byteCount);
    } else {
        const fuzz::Bytes bytes = input.bytes(input.take<std::uint16_t>() % 2000);
        block =
            kind % 2 == 0 ? Data(bytes.begin(), bytes.end()) : test::deflated(bytes, Z_DEFAULT_COMPRESSION, strategy);
    }
    if (isDamaged && !block.empty())
        block[place / 8 % block.size()] ^= static_cast<std::uint8_t>(1u << place % 8);
    return block;
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
    const Data zlibs = test::inflatedByZlib(blocks.front(), most);
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
    std::ranges::generate(blocks, [&] { return takeBlock(input, blockByteCount); });

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
            return test::inflatedByZlib(block, room).size() == room;
        };
        return std::ranges::all_of(blocks, fillsRoom) ? "sound" : "damaged";
    } catch (const veltra::IOException& failure) {
        return sentence(failure.what());
    }
}
