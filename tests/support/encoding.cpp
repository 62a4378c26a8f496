#include "tests/support/encoding.h"

#include "tests/support/deflate.h"

#include <fmt/format.h>

namespace test {

namespace {

/// Compresses the data and returns the words of the header.
std::vector<std::uint64_t> compressInBlocks(std::string& data, std::size_t blockByteCount) {
    std::vector<std::uint64_t> words{0, blockByteCount, data.size() % blockByteCount};
    std::string blocks;
    for (std::size_t start = 0; start < data.size(); start += blockByteCount) {
        const std::string part = data.substr(start, blockByteCount);
        const auto block = deflated({reinterpret_cast<const std::uint8_t*>(part.data()), part.size()}, -1);
        words.push_back(block.size());
        blocks.append(block.begin(), block.end());
        ++words[0];
    }
    data = blocks;
    return words;
}

} // namespace

std::string Encoding::name() const {
    constexpr std::array formats{"ascii", "base64", "appended raw", "appended base64"};
    std::string text = formats[static_cast<std::size_t>(format)];
    text += compressed ? ", zlib in blocks of " + std::to_string(blockByteCount) : "";
    text += bigEndian ? ", big-endian" : "";
    text += header64 ? ", UInt64" : "";
    return text + (inOneRun ? ", in one run" : "") + (lineLength > 0 ? ", in lines" : "");
}

std::vector<Encoding> allEncodings() {
    std::vector<Encoding> encodings{Encoding{}};
    for (Format format : {Format::Base64, Format::AppendedRaw, Format::AppendedBase64})
        for (unsigned bits = 0; bits < 8; ++bits)
            encodings.push_back({format, (bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0});
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

std::string asciiText(const Array& array) {
    return asElement(array.type, [&]<class T>(T) {
        std::string text;
        std::size_t column = 0;
        for (T value : valuesAs<T>(array))
            text += fmt::format("{}{}", column++ % 12 == 0 ? "\n          " : " ", value);
        return text + "\n        ";
    });
}

std::string encodedArray(const Array& array, const Encoding& encoding, const HeaderWords& replacedWords) {
    const bool bigEndian = encoding.bigEndian;
    std::string data;
    asElement(array.type, [&]<class T>(T) {
        for (T value : valuesAs<T>(array))
            data += valueBytes(value, bigEndian);
    });
    std::vector<std::uint64_t> words{data.size()};
    if (encoding.compressed)
        words = compressInBlocks(data, encoding.blockByteCount);
    for (const auto& [position, word] : replacedWords)
        words.at(position) = word;
    std::string header;
    for (std::uint64_t word : words)
        header +=
            encoding.header64 ? valueBytes(word, bigEndian) : valueBytes(static_cast<std::uint32_t>(word), bigEndian);
    if (encoding.format == Format::AppendedRaw)
        return header + data;
    std::string text = encoding.inOneRun ? base64(header + data) : base64(header) + base64(data);
    for (std::size_t end = encoding.lineLength; end > 0 && end < text.size(); end += encoding.lineLength + 1)
        text.insert(end, 1, '\n');
    return text;
}

} // namespace test
