#include "streams/InterleavedInflater.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <cpuid.h>
#define KRO_WITH_BIT_INSTRUCTIONS [[gnu::target("bmi,bmi2,lzcnt")]]
#else
#define KRO_WITH_BIT_INSTRUCTIONS
#endif

namespace veltra::vtkfile {

namespace {

/// Of the lengths that symbols 257 and on stand for, and of the distances: the least, and the bits that add to it.
constexpr std::array<std::uint16_t, 29> leastLength{3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                                    31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<std::uint8_t, 29> lengthExtraBits{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                       2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<std::uint16_t, 30> leastDistance{1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                                      33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                                      1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<std::uint8_t, 30> distanceExtraBits{0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                                         6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
constexpr unsigned endOfBlock = 256;
constexpr unsigned firstLength = 257;

/// What the next ten bits say, in a table of literals and lengths:
/// - a literal: isLiteral, in bits 8 to 15 the byte, in bits 0 to 7 how many bits its code has;
/// - a length: from bit 16 on the least it can be, from bit 25 on how many bits its code has, in bits 8 to 15 how many
///   with the extra ones. Bits 0 to 7 are zero, so that taking it for a literal changes nothing;
/// - isRare: what has to be looked up in the code itself, a longer code or the end of the block.
constexpr unsigned literalTableBits = 10;
constexpr std::uint32_t isLiteral = 1u << 31;
constexpr std::uint32_t isRare = 1u << 30;

std::uint32_t makeLiteralEntry(unsigned symbol, unsigned bitCount) {
    if (symbol < endOfBlock)
        return isLiteral | symbol << 8 | bitCount;
    if (symbol == endOfBlock || symbol - firstLength >= leastLength.size())
        return isRare;
    const unsigned index = symbol - firstLength;
    return bitCount << 25 | leastLength[index] * 0x10000u | (bitCount + lengthExtraBits[index]) << 8;
}

/// What the next eight bits say, in a table of distances: from bit 16 on the least it can be, in bits 8 to 15 how many
/// bits its code has, in bits 0 to 7 how many with the extra ones. 0 has to be looked up in the code itself.
constexpr unsigned distanceTableBits = 8;

std::uint32_t makeDistanceEntry(unsigned symbol, unsigned bitCount) {
    if (symbol >= leastDistance.size())
        return 0;
    return leastDistance[symbol] * 0x10000u | bitCount << 8 | (bitCount + distanceExtraBits[symbol]);
}

/// Matches that two words copied one after the other are enough for.
constexpr std::size_t shortestPlainDistance = sizeof(std::uint64_t);
constexpr std::size_t longestPlainLength = 2 * sizeof(std::uint64_t);
/// An entry of a distance without bits.
constexpr std::uint32_t plainDistance = shortestPlainDistance << 16;

std::uint64_t loadWord(const std::uint8_t* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

std::uint64_t lowBits(std::uint64_t bits, std::uint8_t count) {
    return bits & ((std::uint64_t{1} << count) - 1);
}

constexpr std::uint64_t marker = std::uint64_t{1} << 63;

/// Makes at least 56 bits ready. The highest of `bits` is a marker that moves down with them: how far tells how many
/// bits from `in` on have been used.
void refill(std::uint64_t& bits, const std::uint8_t*& in) {
    const auto used = static_cast<unsigned>(std::countl_zero(bits));
    in += used / 8;
    bits = (loadWord(in) | marker) >> used % 8;
}

/// The bits of a stream that come next, least significant first.
struct BitReader {
    std::uint64_t bits;
    const std::uint8_t* in;

    void refill() { vtkfile::refill(bits, in); }

    unsigned take(unsigned count) {
        const auto taken = static_cast<unsigned>(lowBits(bits, static_cast<std::uint8_t>(count)));
        bits >>= count;
        return taken;
    }

    /// One behind the last byte of which a bit has been used.
    const std::uint8_t* end() const { return in + (std::countl_zero(bits) + 7) / 8; }
};

/// A canonical Huffman code that uses every sequence of bits.
class HuffmanCode {
public:
    struct Found {
        unsigned symbol;
        unsigned bitCount;
    };

    /// From the length of each symbol's code; 0 is for symbols without one. False when this is no complete code.
    bool assign(std::span<const std::uint8_t> lengths) {
        counts_.fill(0);
        for (const std::uint8_t length : lengths)
            ++counts_[length];
        counts_[0] = 0;
        std::array<std::uint16_t, longest + 1> next;
        unsigned symbolCount = 0;
        unsigned used = 0;
        for (unsigned length = 1; length <= longest; ++length) {
            next[length] = static_cast<std::uint16_t>(symbolCount);
            symbolCount += counts_[length];
            used += static_cast<unsigned>(counts_[length]) << (longest - length);
        }
        if (used != 1u << longest)
            return false;
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
            if (lengths[symbol] != 0)
                symbols_[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
        return true;
    }

    /// Writes the entry of the code that they begin with for all values of as many bits as `table` has room for;
    /// `longer` where the code has more bits than that.
    template <class EntryOf>
    void tabulate(std::span<std::uint32_t> table, std::uint32_t longer, EntryOf entryOf) const {
        // Codes come in order of their lengths. The table holds those of up to `length` bits, once for each value of
        // these bits, and doubles for the next.
        std::size_t size = 1;
        std::size_t index = 0;
        const std::uint16_t* symbol = symbols_.data();
        for (unsigned length = 1; size < table.size(); ++length) {
            std::copy_n(table.begin(), size, table.begin() + static_cast<std::ptrdiff_t>(size));
            size *= 2;
            for (unsigned count = counts_[length]; count > 0; --count) {
                table[index] = entryOf(*symbol++, length);
                index = following(index, size);
            }
        }
        for (; index != 0; index = following(index, size))
            table[index] = longer;
    }

    /// The symbol whose code comes next.
    Found find(std::uint64_t bits) const {
        unsigned code = 0;
        unsigned first = 0; // code of this length
        const std::uint16_t* symbol = symbols_.data();
        for (unsigned length = 1;; ++length) {
            code += bits & 1;
            if (code < first + counts_[length])
                return {symbol[code - first], length};
            symbol += counts_[length];
            first = (first + counts_[length]) * 2;
            code *= 2;
            bits >>= 1;
        }
    }

private:
    static constexpr unsigned longest = 15;

    /// The next code of as many bits as `size` has values, first bit least significant; 0 behind the last.
    static std::size_t following(std::size_t code, std::size_t size) {
        const std::size_t highestZero = std::bit_floor(~code & (size - 1));
        return highestZero == 0 ? 0 : (code & (highestZero - 1)) | highestZero;
    }

    std::array<std::uint16_t, longest + 1> counts_; // codes of each length
    std::array<std::uint16_t, 288> symbols_;        // in the order of their codes
};

/// Copies a match, and up to seven bytes more than that.
void copyMatch(std::uint8_t* out, std::size_t distance, std::size_t length) {
    const std::uint8_t* from = out - distance;
    std::uint8_t* const end = out + length;
    const auto copyWord = [&] {
        const std::uint64_t word = loadWord(from);
        std::memcpy(out, &word, sizeof word);
    };
    for (; distance < shortestPlainDistance && out < end; distance *= 2) { // what repeats does so twice as far away
        copyWord();
        out += distance;
    }
    for (; out < end; out += 8, from += 8)
        copyWord();
}

} // namespace

/// A stream being inflated.
struct InterleavedInflater::Lane {
    enum class State { BeforeBlock, InBlock, Done, Failed };

    BitReader reader;
    std::uint8_t* out;
    const std::uint8_t* inEnd;
    std::uint8_t* outBegin;
    std::uint8_t* outEnd;
    State state;
    bool isLastBlock;
    int blocksLeft; // a stream may consist of empty blocks, each with tables to make
    HuffmanCode literals;
    HuffmanCode distances;
    std::array<std::uint32_t, 1 << literalTableBits> literalTable{};
    std::array<std::uint32_t, 1 << distanceTableBits> distanceTable{};
    std::array<std::uint8_t, 2048> parking; // where the literals of a parked lane go

    void begin(const Stream& stream);
    State readBlockHeader();
    bool copyStored();
    bool useFixedCodes();
    bool readCodes();
    bool useCodes(std::span<const std::uint8_t> literalLengths, std::span<const std::uint8_t> distanceLengths);
    bool takeRareSymbol();
    void park();
    std::uint8_t* parkedOut() { return parking.data() + shortestPlainDistance; }

    /// The position stands in variables of the caller's, which can be kept in registers.
    void takeLiteral(std::uint64_t& bits, std::uint8_t*& to) const;
    bool takeMatch(std::uint32_t next, std::uint64_t& bits, const std::uint8_t*& in, std::uint8_t*& to);

    std::uint32_t literalEntry(std::uint64_t bits) const { return literalTable[bits % (1 << literalTableBits)]; }
    std::uint32_t distanceEntry(std::uint64_t bits) const { return distanceTable[bits % (1 << distanceTableBits)]; }
};

void InterleavedInflater::Lane::begin(const Stream& stream) {
    constexpr std::size_t headerSize = 2;
    const std::span<const std::uint8_t> data = stream.compressed;
    // Deflate with the whole window of 32 KiB and no dictionary.
    const bool isKnown =
        data.size() > headerSize && data[0] == 0x78 && (data[1] & 0x20) == 0 && (data[0] * 256 + data[1]) % 31 == 0;
    state = isKnown ? State::BeforeBlock : State::Failed;
    reader = {marker, data.data() + std::min(data.size(), headerSize)};
    inEnd = data.data() + data.size();
    out = outBegin = stream.room.data();
    outEnd = outBegin + stream.room.size();
    isLastBlock = false;
    blocksLeft = 64;
}

/// From the end of one block to the first symbol of the next.
InterleavedInflater::Lane::State InterleavedInflater::Lane::readBlockHeader() {
    if (isLastBlock)
        return out == outEnd && reader.end() <= inEnd ? State::Done : State::Failed;
    reader.refill();
    if (reader.in > inEnd || blocksLeft == 0)
        return State::Failed;
    --blocksLeft;
    isLastBlock = reader.take(1) != 0;
    switch (reader.take(2)) {
    case 0:
        return copyStored() ? State::BeforeBlock : State::Failed;
    case 1:
        return useFixedCodes() ? State::InBlock : State::Failed;
    case 2:
        return readCodes() ? State::InBlock : State::Failed;
    }
    return State::Failed;
}

bool InterleavedInflater::Lane::copyStored() {
    const std::uint8_t* from = reader.end();
    constexpr std::ptrdiff_t headerSize = 4; // the number of bytes and its complement
    if (inEnd - from < headerSize)
        return false;
    const std::ptrdiff_t count = from[0] + from[1] * 0x100;
    if (count != 0xFFFF - (from[2] + from[3] * 0x100) || count > inEnd - from - headerSize || count > outEnd - out)
        return false;
    out = std::copy_n(from + headerSize, count, out);
    reader = {marker, from + headerSize + count};
    return true;
}

bool InterleavedInflater::Lane::useFixedCodes() {
    static constexpr std::array<std::uint8_t, 288> literalLengths = [] {
        std::array<std::uint8_t, 288> lengths{};
        std::fill_n(lengths.begin(), 144, 8);
        std::fill_n(lengths.begin() + 144, 112, 9);
        std::fill_n(lengths.begin() + 256, 24, 7);
        std::fill_n(lengths.begin() + 280, 8, 8);
        return lengths;
    }();
    std::array<std::uint8_t, 32> distanceLengths;
    distanceLengths.fill(5);
    return useCodes(literalLengths, distanceLengths);
}

bool InterleavedInflater::Lane::readCodes() {
    const unsigned literalCount = reader.take(5) + 257;
    const unsigned distanceCount = reader.take(5) + 1;
    const unsigned lengthCodeCount = reader.take(4) + 4;
    if (literalCount > 286 || distanceCount > 30)
        return false;

    // The code of the lengths of the codes, whose own lengths come in this order.
    static constexpr std::array<std::uint8_t, 19> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                        11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::array<std::uint8_t, order.size()> lengthLengths{};
    for (unsigned index = 0; index < lengthCodeCount; ++index) {
        if (index % 8 == 0)
            reader.refill();
        lengthLengths[order[index]] = static_cast<std::uint8_t>(reader.take(3));
    }
    constexpr unsigned longestLengthCode = 7;
    HuffmanCode lengthCode;
    std::array<std::uint32_t, 1 << longestLengthCode> lengthTable{};
    if (!lengthCode.assign(lengthLengths))
        return false;
    lengthCode.tabulate(lengthTable, 0, [](unsigned symbol, unsigned bitCount) { return symbol << 8 | bitCount; });

    std::array<std::uint8_t, 286 + 30> lengths;
    const std::size_t lengthCount = literalCount + distanceCount;
    for (std::size_t index = 0; index < lengthCount;) {
        reader.refill();
        if (reader.in > inEnd)
            return false;
        for (int turn = 0; turn < 4 && index < lengthCount; ++turn) { // of 14 bits at most
            const std::uint32_t entry = lengthTable[reader.bits % lengthTable.size()];
            reader.bits >>= entry % 256;
            const std::uint32_t symbol = entry / 256;
            if (symbol < 16) {
                lengths[index++] = static_cast<std::uint8_t>(symbol);
                continue;
            }
            const std::size_t count = symbol == 16   ? reader.take(2) + 3
                                      : symbol == 17 ? reader.take(3) + 3
                                                     : reader.take(7) + 11;
            if (count > lengthCount - index || (symbol == 16 && index == 0))
                return false;
            std::fill_n(&lengths[index], count, symbol == 16 ? lengths[index - 1] : std::uint8_t{0});
            index += count;
        }
    }
    return useCodes(std::span(lengths).first(literalCount), std::span(lengths).subspan(literalCount, distanceCount));
}

/// From the lengths of the codes of all symbols. False when a code is not complete, or when most symbols at the
/// beginning of a stream are expected to be matches: those are inflated faster one stream after the other, unless there
/// are hardly any, as where all values are the same.
bool InterleavedInflater::Lane::useCodes(std::span<const std::uint8_t> literalLengths,
                                         std::span<const std::uint8_t> distanceLengths) {
    constexpr unsigned always = 1u << 15;
    unsigned matchShare = 0;
    for (const std::uint8_t length : literalLengths.subspan(firstLength))
        matchShare += length == 0 ? 0 : always >> length; // a frequent symbol has a short code
    const bool hasFewSymbols = (outEnd - outBegin) / 128 > inEnd - reader.in;
    if (out == outBegin && matchShare > always / 8 * 3 && !hasFewSymbols)
        return false;
    if (!literals.assign(literalLengths) || !distances.assign(distanceLengths))
        return false;
    literals.tabulate(literalTable, isRare, makeLiteralEntry);
    distances.tabulate(distanceTable, 0, makeDistanceEntry);
    return true;
}

/// Takes the next symbol, whatever it is. At the end of a block and where the data are damaged, that is the new state,
/// and the result is false.
bool InterleavedInflater::Lane::takeRareSymbol() {
    reader.refill();
    state = State::Failed;
    const auto [symbol, bitCount] = literals.find(reader.bits);
    reader.bits >>= bitCount;
    if (symbol < endOfBlock) {
        *out++ = static_cast<std::uint8_t>(symbol);
    } else if (symbol == endOfBlock) {
        state = State::BeforeBlock;
        return false;
    } else {
        const unsigned index = symbol - firstLength;
        if (index >= leastLength.size())
            return false;
        const std::size_t length = leastLength[index] + reader.take(lengthExtraBits[index]);
        const auto [distanceIndex, distanceBitCount] = distances.find(reader.bits);
        reader.bits >>= distanceBitCount;
        if (distanceIndex >= leastDistance.size())
            return false;
        const std::size_t distance = leastDistance[distanceIndex] + reader.take(distanceExtraBits[distanceIndex]);
        if (distance > static_cast<std::size_t>(out - outBegin))
            return false;
        copyMatch(out, distance, length);
        out += length;
    }
    state = State::InBlock;
    return true;
}

/// Takes the next symbol if it is a literal of the table.
[[gnu::always_inline]] inline void InterleavedInflater::Lane::takeLiteral(std::uint64_t& bits,
                                                                          std::uint8_t*& to) const {
    const std::uint32_t entry = literalEntry(bits);
    *to = static_cast<std::uint8_t>(entry >> 8);
    to += entry >> 31;
    asm("" : "+r"(to)); // no instruction: the compiler is to add here, not to keep what it has to add for later
    bits >>= entry % 64;
}

/// Takes the match that comes next, or one of no length where that is a literal. `next` is its entry, unless there were
/// too few bits left to look it up. False when the lane has come to the end of a block or has failed.
[[gnu::always_inline]] inline bool InterleavedInflater::Lane::takeMatch(std::uint32_t next, std::uint64_t& bits,
                                                                        const std::uint8_t*& in, std::uint8_t*& to) {
    refill(bits, in);
    // All of it without a branch: which of the lanes have a match is anyone's guess.
    const auto noMatch = static_cast<std::uint32_t>(static_cast<std::int32_t>(next) >> 31);
    const std::uint32_t entry = next & ~noMatch;
    const auto lengthBits = static_cast<std::uint8_t>(entry >> 8);
    const std::size_t length = (entry >> 16) % 512 + (lowBits(bits, lengthBits) >> (entry >> 25) % 64);
    const std::uint64_t rest = bits >> lengthBits % 64;
    const std::uint32_t found = distanceEntry(rest);
    const std::uint32_t distant = (found & ~noMatch) | (plainDistance & noMatch);
    const auto distanceBits = static_cast<std::uint8_t>(distant);
    const std::size_t distance = (distant >> 16) + (lowBits(rest, distanceBits) >> (distant >> 8) % 64);

    const bool isRareSymbol = entry >= isRare || distant == 0 || distance > static_cast<std::size_t>(to - outBegin);
    if (next != literalEntry(bits) || isRareSymbol) {
        reader = {bits, in};
        out = to;
        const bool goesOn = takeRareSymbol();
        bits = reader.bits;
        in = reader.in;
        to = out;
        return goesOn;
    }
    if (length <= longestPlainLength && distance >= shortestPlainDistance) {
        std::memcpy(to, to - distance, sizeof(std::uint64_t));
        std::memcpy(to + sizeof(std::uint64_t), to + sizeof(std::uint64_t) - distance, sizeof(std::uint64_t));
    } else {
        copyMatch(to, distance, length);
    }
    to += length;
    bits = rest >> distanceBits % 64;
    return true;
}

/// Lets the lane go round with the others in no state of its own: a literal without bits comes next for ever.
void InterleavedInflater::Lane::park() {
    static constexpr std::array<std::uint8_t, sizeof(std::uint64_t)> nothing{};
    reader = {marker, nothing.data()};
    literalTable[0] = isLiteral;
    outBegin = parking.data();
    out = parkedOut();
}

/// Inflates in all lanes until one of them comes to the end of a block or fails.
KRO_WITH_BIT_INSTRUCTIONS void InterleavedInflater::run() {
    // A round takes and gives no more than this. A lane may begin one as long as it has not passed an end.
    constexpr std::size_t literalsPerRound = 5;
    constexpr std::size_t roundInput = 14;
    constexpr std::size_t roundOutput = literalsPerRound + 258;
    constexpr std::size_t mostRounds = 256;
    static_assert(literalsPerRound * literalTableBits <= 56);
    static_assert(roundInput + 2 * sizeof(std::uint64_t) <= readSlack);
    static_assert(roundOutput + longestPlainLength <= writeSlack);
    static_assert(shortestPlainDistance + (mostRounds + 1) * literalsPerRound + longestPlainLength <=
                  sizeof(Lane::parking));

    Lane* const lanes = lanes_.get();
    std::array<std::uint64_t, laneCount> bits;
    std::array<const std::uint8_t*, laneCount> in;
    std::array<std::uint8_t*, laneCount> out;
    for (std::size_t lane = 0; lane < laneCount; ++lane) {
        bits[lane] = lanes[lane].reader.bits;
        in[lane] = lanes[lane].reader.in;
        out[lane] = lanes[lane].out;
    }

    bool goesOn = true;
    while (goesOn) {
        std::size_t rounds = mostRounds;
        for (std::size_t index = 0; index < laneCount; ++index) {
            Lane& lane = lanes[index];
            if (lane.state != Lane::State::InBlock) {
                out[index] = lane.parkedOut();
            } else if (in[index] > lane.inEnd || out[index] > lane.outEnd) {
                lane.state = Lane::State::Failed;
                goesOn = false;
            } else {
                rounds = std::min(rounds, static_cast<std::size_t>(lane.inEnd - in[index]) / roundInput);
                rounds = std::min(rounds, static_cast<std::size_t>(lane.outEnd - out[index]) / roundOutput);
            }
        }

        for (++rounds; goesOn && rounds > 0; --rounds) {
#pragma GCC unroll 4
            for (std::size_t lane = 0; lane < laneCount; ++lane)
                refill(bits[lane], in[lane]);
#pragma GCC unroll 5
            for (std::size_t count = 0; count < literalsPerRound; ++count)
#pragma GCC unroll 4
                for (std::size_t lane = 0; lane < laneCount; ++lane)
                    lanes[lane].takeLiteral(bits[lane], out[lane]);

            // With too few bits left this is a guess, which is looked at again.
            std::array<std::uint32_t, laneCount> next;
            std::uint32_t common = isLiteral;
#pragma GCC unroll 4
            for (std::size_t lane = 0; lane < laneCount; ++lane) {
                next[lane] = lanes[lane].literalEntry(bits[lane]);
                common &= next[lane];
            }
            if (common == 0)
#pragma GCC unroll 4
                for (std::size_t lane = 0; lane < laneCount; ++lane)
                    goesOn &= lanes[lane].takeMatch(next[lane], bits[lane], in[lane], out[lane]);
        }
    }

    for (std::size_t lane = 0; lane < laneCount; ++lane) {
        lanes[lane].reader = {bits[lane], in[lane]};
        lanes[lane].out = out[lane];
    }
}

std::size_t InterleavedInflater::inflate(std::span<const Stream> streams) {
    for (std::size_t lane = 0; lane < streams.size(); ++lane)
        lanes_[lane].begin(streams[lane]);
    std::size_t wantedCount = streams.size(); // the lanes before the first that failed
    for (bool isBusy = true; isBusy;) {
        isBusy = false;
        for (std::size_t index = 0; index < laneCount; ++index) {
            Lane& lane = lanes_[index];
            while (index < wantedCount && lane.state == Lane::State::BeforeBlock)
                lane.state = lane.readBlockHeader();
            if (lane.state == Lane::State::Failed)
                wantedCount = std::min(wantedCount, index);
            if (index >= wantedCount)
                lane.state = Lane::State::Done;
            if (lane.state == Lane::State::InBlock)
                isBusy = true;
            else
                lane.park();
        }
        if (isBusy)
            run();
    }
    return wantedCount;
}

bool InterleavedInflater::isSupported() {
#if defined(__x86_64__)
    constexpr unsigned lzcnt = 1u << 5;
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __get_cpuid(0x80000001, &a, &b, &c, &d) &&
           (c & lzcnt) != 0;
#else
    return std::endian::native == std::endian::little;
#endif
}

InterleavedInflater::InterleavedInflater() : lanes_(std::make_unique<Lane[]>(laneCount)) {}

InterleavedInflater::~InterleavedInflater() = default;

} // namespace veltra::vtkfile
