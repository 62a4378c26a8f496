#include "tests/support/encoding.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace test {

namespace {

std::string allValueBytes(const Array& array, bool bigEndian) {
    return asElement(array.type, [&]<class T>(T) {
        std::string bytes;
        for (T value : valuesAs<T>(array))
            bytes += valueBytes(value, bigEndian);
        return bytes;
    });
}

std::string deflated(std::string_view bytes) {
    uLongf byteCount = compressBound(static_cast<uLong>(bytes.size()));
    std::string block(byteCount, '\0');
    if (compress(reinterpret_cast<Bytef*>(block.data()), &byteCount, reinterpret_cast<const Bytef*>(bytes.data()),
                 static_cast<uLong>(bytes.size())) != Z_OK)
        throw std::runtime_error("zlib cannot compress a block");
    block.resize(byteCount);
    return block;
}

struct HeaderAndData {
    std::vector<std::uint64_t> header;
    std::string data;
};

HeaderAndData compressedBlocks(std::string_view bytes, std::size_t blockByteCount) {
    HeaderAndData array{{0, blockByteCount, bytes.size() % blockByteCount}, {}};
    for (std::size_t start = 0; start < bytes.size(); start += blockByteCount) {
        const std::string block = deflated(bytes.substr(start, blockByteCount));
        array.header.push_back(block.size());
        array.data += block;
        ++array.header[0];
    }
    return array;
}

std::string headerBytes(std::vector<std::uint64_t> words, const HeaderWords& replacedWords, const Encoding& encoding) {
    for (const auto& [position, word] : replacedWords)
        words.at(position) = word;
    std::string bytes;
    for (std::uint64_t word : words)
        bytes += encoding.header64 ? valueBytes(word, encoding.bigEndian)
                                   : valueBytes(static_cast<std::uint32_t>(word), encoding.bigEndian);
    return bytes;
}

std::string inLines(const std::string& text, std::size_t lineLength) {
    if (lineLength == 0)
        return text;
    std::string lines;
    for (std::size_t start = 0; start < text.size(); start += lineLength)
        lines += text.substr(start, lineLength) + "\n";
    return lines;
}

} // namespace

std::string Encoding::name() const {
    constexpr std::array<std::string_view, 4> formats{"ascii", "base64", "appended raw", "appended base64"};
    std::string text{formats[static_cast<std::size_t>(format)]};
    text += compressed ? ", zlib" : "";
    text += bigEndian ? ", big-endian" : "";
    text += header64 ? ", UInt64" : "";
    return text;
}

std::vector<Encoding> allEncodings() {
    std::vector<Encoding> encodings{Encoding{}};
    for (Format format : {Format::Base64, Format::AppendedRaw, Format::AppendedBase64})
        for (bool compressed : {false, true})
            for (bool bigEndian : {false, true})
                for (bool header64 : {false, true})
                    encodings.push_back({format, compressed, bigEndian, header64});
    return encodings;
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        const std::size_t byteCount = std::min<std::size_t>(3, bytes.size() - start);
        std::uint32_t group = 0;
        for (std::size_t index = 0; index < 3; ++index)
            group = group << 8 | (index < byteCount ? static_cast<std::uint8_t>(bytes[start + index]) : 0u);
        for (std::size_t index = 0; index < 4; ++index)
            text += index <= byteCount ? alphabet[group >> (18 - 6 * index) & 63u] : '=';
    }
    return text;
}

template <class T>
std::string valueBytes(T value, bool bigEndian) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    if (bigEndian != (std::endian::native == std::endian::big))
        std::ranges::reverse(bytes);
    return bytes;
}

template std::string valueBytes(std::int8_t, bool);
template std::string valueBytes(std::uint8_t, bool);
template std::string valueBytes(std::int16_t, bool);
template std::string valueBytes(std::uint16_t, bool);
template std::string valueBytes(std::int32_t, bool);
template std::string valueBytes(std::uint32_t, bool);
template std::string valueBytes(std::int64_t, bool);
template std::string valueBytes(std::uint64_t, bool);
template std::string valueBytes(float, bool);
template std::string valueBytes(double, bool);

std::string asciiText(const Array& array) {
    return asElement(array.type, [&]<class T>(T) {
        std::string text;
        std::size_t column = 0;
        for (T value : valuesAs<T>(array)) {
            std::array<char, 32> number;
            const auto end = std::to_chars(number.data(), number.data() + number.size(), value);
            text += column == 0 ? "\n          " : " ";
            text.append(number.data(), end.ptr);
            column = (column + 1) % 12;
        }
        return text + "\n        ";
    });
}

std::string encodedArray(const Array& array, const Encoding& encoding, const HeaderWords& replacedWords) {
    const std::string bytes = allValueBytes(array, encoding.bigEndian);
    const HeaderAndData parts =
        encoding.compressed ? compressedBlocks(bytes, encoding.blockByteCount) : HeaderAndData{{bytes.size()}, bytes};
    const std::string header = headerBytes(parts.header, replacedWords, encoding);
    if (encoding.format == Format::AppendedRaw)
        return header + parts.data;
    return inLines(encoding.inOneRun ? base64(header + parts.data) : base64(header) + base64(parts.data),
                   encoding.lineLength);
}

} // namespace test
