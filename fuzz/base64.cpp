// Base64 text against a decoder that takes one character at a time: the function with limited room, and the stream read
// in chunks. The first two bytes are the room and the chunk.

#include "fuzz/fuzz.h"

#include "loader/sdk/Base64InputStream.h"
#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/base64.h"
#include "loader/sdk/exceptions.h"

#include <vector>

namespace {

using namespace veltra::dataio;

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view blanks = " \t\n\v\f\r";

struct Decoded {
    std::string bytes;
    std::size_t consumed = 0;
    std::size_t stop = 0;
};

Decoded decodeSlowly(std::string_view text, std::size_t room) {
    Decoded decoded;
    std::string group;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (blanks.find(text[at]) != blanks.npos)
            continue;
        const bool isPadding = text[at] == '=';
        const bool isKnown = isPadding || alphabet.find(text[at]) != alphabet.npos;
        if (!isKnown || (isPadding && group.size() < 2) || (!isPadding && group.find('=') != group.npos)) {
            decoded.stop = at;
            return decoded;
        }
        group += text[at];
        if (group.size() < 4)
            continue;
        unsigned bits = 0;
        for (const char character : group)
            bits = bits * 64 + (character == '=' ? 0 : static_cast<unsigned>(alphabet.find(character)));
        const std::string all{static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
        const std::string some = all.substr(0, std::min<std::size_t>(group.find('='), 4) - 1);
        if (some.size() > room - decoded.bytes.size()) {
            decoded.stop = decoded.consumed;
            return decoded;
        }
        decoded.bytes += some;
        decoded.consumed = at + 1;
        group.clear();
    }
    decoded.stop = text.size();
    return decoded;
}

void checkFunction(fuzz::Bytes text, std::size_t room) {
    const Decoded expected = decodeSlowly(fuzz::asText(text), room);
    std::vector<std::uint8_t> produced(room);
    const Base64Result result = decodeBase64(text, produced);
    fuzz::require(result.bytesProduced == expected.bytes.size() && result.charactersConsumed == expected.consumed,
                  "as much is decoded as has room");
    fuzz::require(result.stopIndex == expected.stop, "decoding stops at the character that cannot be there");
    fuzz::require(fuzz::asText({produced.data(), result.bytesProduced}) == expected.bytes, "bytes are decoded");
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    const std::size_t room = input.byte();
    const std::size_t chunk = 1 + input.byte();
    const Bytes text = input.rest();
    checkFunction(text, room);
    checkFunction(text, text.size() + 3);

    const std::string expected = decodeSlowly(asText(text), text.size()).bytes;
    Base64InputStream stream(
        std::make_shared<ByteInputStream>(std::make_shared<ByteInputStream::Bytes>(text.begin(), text.end())));
    std::string read;
    try {
        for (;;) {
            require(stream.available() >= std::ssize(expected) - std::ssize(read), "what is there is available");
            std::vector<std::uint8_t> part(chunk);
            const std::uint64_t begin = stream.position();
            try {
                stream.read(part.data(), chunk);
            } catch (...) {
                read += asText({part.data(), stream.position() - begin});
                throw;
            }
            read += asText(part);
        }
    } catch (const veltra::IOException& failure) {
        require(read == expected, "the stream gives what is before the end or the foreign character");
        return sentence(failure.what());
    }
}
