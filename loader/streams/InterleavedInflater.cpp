// How several streams are inflated by turns
// ------------------------------------------
// To inflate is to repeat three steps: look up the next bits in a table, use up as many of them as the table says,
// write what it says. Each step waits for the one before, and a processor that could do four things at once does one.
// So four streams, each in a lane of its own, are inflated in the same loop: the steps of one fill the pauses of the
// others.
//
// A round of that loop does for every lane:
//  1. Refill: at least 56 bits are ready. There is no test for the end of the stream; how far a lane may read and write
//     is settled for many rounds beforehand, by what is left of its stream and its room.
//  2. Five times: if the next ten bits begin with the code of a literal, write it. If not, nothing changes: the entry
//     says "0 bits used, 0 bytes written". No branch depends on the data.
//  3. If in some lane something else than a literal is next, each lane takes the match that it has next, again without
//     asking whether it has one: where a literal is next, it takes a match of no length. The copy of a short match from
//     eight bytes back or further is two words; others take a loop.
// What is rare leaves that path for one symbol (takeRareSymbol): codes of more than ten or, for distances, eight bits,
// a distance that goes too far back, the end of a block, and a look-up that was made with too few bits.
//
// A lane whose block has ended leaves the loop, its next header is read, and all go on. A lane that has nothing more to
// do is parked: a table entry that is a literal of no bits lets it go round without effect.
//
// What a lane takes: a zlib stream with a window of 32 KiB and without a dictionary; stored blocks, fixed codes, and
// codes of the block's own that are complete; up to 64 blocks; data that fill the room to the byte. The checksum is not
// looked at, because zlib too has written all bytes by then. Everything else fails in the lane and is left to Inflater,
// which decides what a damaged or uncommon stream gives. So are streams that begin with more matches than literals: a
// match copies many bytes at once, and libdeflate does that faster.

#include "loader/streams/InterleavedInflater.h"

#include "loader/streams/BitReader.h"
#include "loader/streams/HuffmanCode.h"
#include "loader/streams/codeLengths.h"
#include "loader/streams/copyMatch.h"
#include "loader/streams/symbolEntries.h"

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

/// A stream being inflated.
struct InterleavedInflater::Lane {
    enum class State { BeforeBlock, InBlock, Done, Failed };

    /// Of a match of no length, which takes the place of one where a literal comes next.
    static constexpr DistanceEntry plainDistance = DistanceEntry::without(shortestPlainDistance);
    static constexpr int mostBlocks = 64; // more are empty ones, each of which would take the making of its tables

    BitReader reader;
    std::uint8_t* out;
    const std::uint8_t* inEnd;
    std::uint8_t* outBegin;
    std::uint8_t* outEnd;
    State state;
    bool isLastBlock;
    int blocksLeft;
    HuffmanCode literals;
    HuffmanCode distances;
    std::array<LiteralEntry, 1 << LiteralEntry::tableBits> literalTable{};
    std::array<DistanceEntry, 1 << DistanceEntry::tableBits> distanceTable{};
    std::array<std::uint8_t, 2048> parking; // where the literals of a parked lane go

    void begin(const Stream& stream);
    State readBlockHeader();
    bool copyStored();
    bool useCodes(const CodeLengths& lengths);
    bool takeRareSymbol();
    void park();
    std::uint8_t* parkedOut() { return parking.data() + shortestPlainDistance; }

    /// The position is in variables of the caller's, which can be kept in registers.
    void takeLiteral(std::uint64_t& bits, std::uint8_t*& to) const;
    bool takeMatch(LiteralEntry next, std::uint64_t& bits, const std::uint8_t*& in, std::uint8_t*& to);

    LiteralEntry literalEntry(std::uint64_t bits) const { return literalTable[bits % literalTable.size()]; }
    DistanceEntry distanceEntry(std::uint64_t bits) const { return distanceTable[bits % distanceTable.size()]; }
};

void InterleavedInflater::Lane::begin(const Stream& stream) {
    constexpr std::size_t headerSize = 2;
    const std::span<const std::uint8_t> data = stream.compressed;
    // Deflate with the whole window of 32 KiB and no dictionary.
    const bool isKnown =
        data.size() > headerSize && data[0] == 0x78 && (data[1] & 0x20) == 0 && (data[0] * 256 + data[1]) % 31 == 0;
    state = isKnown ? State::BeforeBlock : State::Failed;
    reader = {BitReader::marker, data.data() + std::min(data.size(), headerSize)};
    inEnd = data.data() + data.size();
    out = outBegin = stream.room.data();
    outEnd = outBegin + stream.room.size();
    isLastBlock = false;
    blocksLeft = mostBlocks;
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
    const unsigned kind = reader.take(2);
    if (kind == 0)
        return copyStored() ? State::BeforeBlock : State::Failed;
    CodeLengths lengths = fixedCodeLengths;
    const bool isSound = kind == 1 || (kind == 2 && readCodeLengths(reader, inEnd, lengths));
    return isSound && useCodes(lengths) ? State::InBlock : State::Failed;
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
    reader = {BitReader::marker, from + headerSize + count};
    return true;
}

/// From the lengths of the codes of all symbols. False when a code is not complete, or when most symbols at the
/// beginning of a stream are expected to be matches: those are inflated faster one stream after the other, unless there
/// are hardly any, as where all values are the same.
bool InterleavedInflater::Lane::useCodes(const CodeLengths& lengths) {
    constexpr unsigned always = 1u << 15;
    unsigned matchShare = 0;
    for (const std::uint8_t length : lengths.literals().subspan(firstLength))
        matchShare += length == 0 ? 0 : always >> length; // a frequent symbol has a short code
    const bool hasFewSymbols = (outEnd - outBegin) / 128 > inEnd - reader.in;
    if (out == outBegin && matchShare > always / 8 * 3 && !hasFewSymbols)
        return false;
    if (!literals.assign(lengths.literals()) || !distances.assign(lengths.distances()))
        return false;
    literals.tabulate(literalTable, LiteralEntry::rare(), LiteralEntry::of);
    distances.tabulate(distanceTable, DistanceEntry::rare(), DistanceEntry::of);
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
        if (index >= leastLengths.size())
            return false;
        const std::size_t length = leastLengths[index] + reader.take(lengthExtraBits[index]);
        const auto [distanceIndex, distanceBitCount] = distances.find(reader.bits);
        reader.bits >>= distanceBitCount;
        if (distanceIndex >= leastDistances.size())
            return false;
        const std::size_t distance = leastDistances[distanceIndex] + reader.take(distanceExtraBits[distanceIndex]);
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
    const LiteralEntry entry = literalEntry(bits);
    *to = entry.byte();
    to += entry.literalCount();
    asm("" : "+r"(to)); // no instruction: the compiler is to add here, not to keep what it has to add for later
    bits >>= entry.literalCodeBits();
}

/// Takes the match that comes next, or one of no length where that is a literal. `next` is its entry, unless there were
/// too few bits left to look it up. False when the lane has come to the end of a block or has failed.
[[gnu::always_inline]] inline bool InterleavedInflater::Lane::takeMatch(LiteralEntry next, std::uint64_t& bits,
                                                                        const std::uint8_t*& in, std::uint8_t*& to) {
    BitReader::refill(bits, in);
    // All of it without a branch: which of the lanes have a match is anyone's guess.
    const std::uint32_t noMatch = next.literalMask();
    const LiteralEntry entry{next.word & ~noMatch};
    const std::uint8_t lengthBits = entry.matchBits();
    const std::size_t length = entry.leastLength() + (lowBits(bits, lengthBits) >> entry.matchCodeBits());
    const std::uint64_t rest = bits >> lengthBits % 64;
    const DistanceEntry distant{(distanceEntry(rest).word & ~noMatch) | (plainDistance.word & noMatch)};
    const std::uint8_t distanceBits = distant.allBits();
    const std::size_t distance = distant.leastDistance() + (lowBits(rest, distanceBits) >> distant.codeBits());

    const bool isRareSymbol = entry.isRare() || distant.isRare() || distance > static_cast<std::size_t>(to - outBegin);
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
    reader = {BitReader::marker, nothing.data()};
    literalTable[0] = LiteralEntry::literal(0, 0);
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
    static_assert(literalsPerRound * LiteralEntry::tableBits <= BitReader::readyBitCount);
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
                BitReader::refill(bits[lane], in[lane]);
#pragma GCC unroll 5
            for (std::size_t count = 0; count < literalsPerRound; ++count)
#pragma GCC unroll 4
                for (std::size_t lane = 0; lane < laneCount; ++lane)
                    lanes[lane].takeLiteral(bits[lane], out[lane]);

            // With too few bits left this is a guess, which is looked at again.
            std::array<LiteralEntry, laneCount> next;
            LiteralEntry common{~0u};
#pragma GCC unroll 4
            for (std::size_t lane = 0; lane < laneCount; ++lane) {
                next[lane] = lanes[lane].literalEntry(bits[lane]);
                common.word &= next[lane].word;
            }
            if (common.literalCount() == 0) // some are none
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
