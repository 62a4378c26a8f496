#include "fuzz/inflateSeeds.h"

#include "tests/support/deflate.h"
#include "tests/support/encoding.h"
#include "tests/support/meshes.h"

#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace test;

using Inputs = std::map<std::string, std::string>;

std::string deflated(const std::string& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::vector<std::uint8_t> stream = test::deflated({bytes, text.size()}, Z_DEFAULT_COMPRESSION);
    return {stream.begin(), stream.end()};
}

constexpr int isDeflated = 0x01;
constexpr int hasCodesOnly = isDeflated + 2 * Z_HUFFMAN_ONLY;
constexpr int isWritten = isDeflated + 2 * 5; // symbol by symbol, with codes that zlib would not choose; the last block
constexpr int isDamaged = 0x80;

/// The chunk, the bytes of a block and of the last, then each block: how it is to be made, and what is in it.
std::string blockInput(std::uint16_t blockByteCount, std::uint16_t lastByteCount,
                       const std::vector<std::pair<int, std::string>>& content) {
    std::string bytes = "\x09" + valueBytes(blockByteCount, false) + valueBytes(lastByteCount, false);
    bytes += static_cast<char>(content.size() - 1);
    for (const auto& [kind, text] : content) {
        bytes += static_cast<char>(kind);
        if (kind >= isDamaged)
            bytes += valueBytes(std::uint16_t{0x321}, false);
        bytes += (kind == isWritten ? "" : valueBytes(static_cast<std::uint16_t>(text.size()), false)) + text;
    }
    return bytes;
}

/// A zlib stream of bits as they come, with blanks wherever they help to read them.
std::string zlibStream(const std::string& bits, const std::string& header = "\x78\x9C") {
    std::string stream = header;
    std::size_t count = 0;
    for (const char bit : bits) {
        if (bit == ' ')
            continue;
        if (count % 8 == 0)
            stream += '\0';
        stream.back() = static_cast<char>(stream.back() | (bit - '0') << count++ % 8);
    }
    return stream;
}

std::string repeated(const std::string& text, int count) {
    std::string repetition;
    while (count-- > 0)
        repetition += text;
    return repetition;
}

/// Streams that the inflater of several at once takes or leaves for each of its reasons, each before a common one.
Inputs interleavedStreams() {
    const std::string letter = "00110000 ", end = "0000000 ", fixed = "1 10 ", own = "1 01 ";
    const std::string lengthCode = "0111 000 000 100" + repeated("000", 14) + "100"; // of 1 and of long runs of zeros
    const std::string onlyZeros = "00000 01010" + lengthCode + "1 1111111 1 1110111",
                      noDistance = "00000 01010" + lengthCode + "0 1 1111111 1 0101011 0 1 0000000";
    const std::string text = "zlib" + repeated("ab", 500) + "stream", stored = "\x78\x9C\x01", fiveBytes{5, 0, -6, -1};
    const std::string cutOff = zlibStream("0 10" + repeated(letter, 20) + end + fixed + end);
    std::string numbered; // most of which repeats
    for (char number = 0; number < 100; ++number)
        numbered += std::string{static_cast<char>(number * 7 % 31), 0, 0, 0, 0, 0, 0, 0};
    const std::vector<std::tuple<const char*, std::uint16_t, std::string>> rows{
        {"window", 1, zlibStream(fixed + letter + end, "\x68\x81")},
        {"dictionary", 1, zlibStream(fixed + letter + end, "\x78\xBB")},
        {"header", 1, zlibStream(fixed + letter + end, "\x78\x9D")},
        {"two bytes", 1, "\x78\x9C"},
        {"kind 3", 1, zlibStream("1 11")},
        {"fixed", 4, zlibStream(fixed + letter + "0000001 00000" + end)},
        {"two blocks", 2, zlibStream("0 10" + letter + end + fixed + letter + end)},
        {"too little", 3, zlibStream(fixed + letter + end)},
        {"too much", 3, zlibStream(fixed + repeated(letter, 9) + end)},
        {"far too much", 3, deflated(text)},
        {"length 286", 9, zlibStream(fixed + letter + "11000110")},
        {"distance 30", 9, zlibStream(fixed + letter + "0000001 11110")},
        {"distance 2 of 1", 9, zlibStream(fixed + letter + "0000001 00001" + end)},
        {"many blocks", 1, zlibStream(repeated("0 10" + end, 64) + fixed + letter + end)},
        {"stored", 5, stored + fiveBytes + "abcde"},
        {"stored not last", 6, "\x78\x9C" + std::string(1, '\0') + fiveBytes + "abcde" + "\x4B\x04"},
        {"stored cut in header", 5, stored + "\x05"},
        {"stored complement", 5, stored + std::string{5, 0, 5, 0} + "abcde"},
        {"stored cut", 5, stored + fiveBytes + "abc"},
        {"stored too much", 3, stored + fiveBytes + "abcde"},
        {"literals 287", 9, zlibStream(own + "01111 00000 0000")},
        {"distances 31", 9, zlibStream(own + "00000 01111 0000")},
        {"no length code", 9, zlibStream(own + "00000 00000 0000 000 000 000 000")},
        {"repeats nothing", 9, zlibStream(own + "00000 00000 0000 100 000 100 000 0")},
        {"runs too far", 9, zlibStream(own + "00000 00000 0000 100 000 100 000 1 1111111 1 1111111")},
        {"no literal", 9, zlibStream(own + onlyZeros)},
        {"no distance", 9, zlibStream(own + noDistance)},
        {"mostly matches", 800, deflated(numbered)},
        {"one value", 60000, deflated(std::string(60000, '\0'))}};
    Inputs inputs;
    for (const auto& [name, byteCount, stream] : rows)
        inputs[name] = blockInput(byteCount, 4, {{0, stream}, {isDeflated, "more"}});
    // What a stream lacks is what comes next.
    for (const std::size_t rest : {1, 2, 3, 12})
        inputs["ends " + std::to_string(rest) + " early"] =
            blockInput(20, 0, {{0, cutOff.substr(0, cutOff.size() - rest)}, {0, cutOff.substr(cutOff.size() - rest)}});
    std::string varied;
    for (int index = 0; index < 1500; ++index)
        varied += static_cast<char>(index * index % 251 * 31 % 97);
    const std::string stream = deflated(varied);
    for (const std::size_t count : {std::size_t{8}, stream.size() / 2})
        inputs["cut at " + std::to_string(count)] =
            blockInput(1500, 0, {{0, stream.substr(0, count)}, {0, stream.substr(count)}});
    std::string wanted{12, -8}; // 14 codes, from that of 248 on, ever longer, and 20 of distances
    wanted += std::string(13, '\0') + "\x12\x01" + std::string(19, '\0') + varied;
    inputs["longest codes"] = blockInput(1500, 0, {{hasCodesOnly, varied}, {isWritten, wanted}});
    return inputs;
}

} // namespace

std::map<std::string, std::string> inflateSeeds() {
    const std::string text = asciiText(integers("a", ElementType::Int32, numbers(60)));
    const std::string whole = deflated(text);
    std::string foreign = whole;
    foreign[whole.size() / 2] ^= 0x55;
    const auto byteCount = static_cast<std::uint16_t>(text.size());
    const std::string many = base64(text + foreign + text);
    const std::pair<int, std::string> sound{hasCodesOnly, many}, damaged{hasCodesOnly + isDamaged, many};
    const auto manyCount = static_cast<std::uint16_t>(many.size());
    Inputs inputs{
        {"sound", blockInput(100, 20, {{isDeflated, text.substr(0, 100)}, {isDeflated, text.substr(100, 20)}})},
        {"full", blockInput(byteCount, 0, {{0, whole}, {isDeflated, text}})},
        {"cut", blockInput(byteCount, 0, {{0, whole.substr(0, whole.size() - 9)}, {isDeflated, text}})},
        {"foreign", blockInput(byteCount, 7, {{0, foreign}, {isDeflated, text.substr(0, 7)}})},
        {"no room", blockInput(50, 0, {{0, whole}})},
        {"implausible", blockInput(0xFFFF, 0, {{0, "x"}})},
        {"codes", blockInput(manyCount, 0, {sound, sound, sound, sound, {isDeflated, many}, sound})},
        {"codes and damage", blockInput(manyCount, 0, {sound, sound, damaged, sound, sound, damaged, sound})}};
    inputs.merge(interleavedStreams());
    return inputs;
}
