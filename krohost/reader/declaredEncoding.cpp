#include "krohost/reader/declaredEncoding.h"

#include "krohost/reader/Document.h"
#include "krohost/text/letterCase.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>

#include <iconv.h>

namespace krohost::reader {

namespace {

/// The character that a whole sequence of UTF-8 stands for, whose length its first byte tells; -1 when it is none.
int characterOfUtf8(void*, const char* text) {
    const auto first = static_cast<unsigned char>(*text);
    const int length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    int character = first & (0xFF >> (length + 1));
    for (int index = 1; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        if ((byte & 0xC0) != 0x80)
            return -1;
        character = character << 6 | (byte & 0x3F);
    }
    constexpr int least[]{0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    return character < least[length - 2] || isSurrogate || character > 0x10FFFF ? -1 : character;
}

int takeUtf8(XML_Encoding& encoding) {
    for (int byte = 0; byte < 256; ++byte)
        encoding.map[byte] = byte < 0x80   ? byte
                             : byte < 0xC2 ? -1
                             : byte < 0xE0 ? -2
                             : byte < 0xF0 ? -3
                             : byte < 0xF5 ? -4
                                           : -1;
    encoding.convert = characterOfUtf8;
    return XML_STATUS_OK;
}

/// A byte that is no character by itself has -1; in an encoding of one byte these are few.
int takeSingleBytes(iconv_t converter, XML_Encoding& encoding) {
    int count = 0;
    for (int byte = 0; byte < 256; ++byte) {
        char in = static_cast<char>(byte);
        std::uint32_t out = 0;
        char *from = &in, *to = reinterpret_cast<char*>(&out);
        std::size_t inCount = 1, outCount = sizeof out;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool isWhole =
            iconv(converter, &from, &inCount, &to, &outCount) != static_cast<std::size_t>(-1) && outCount == 0;
        encoding.map[byte] = isWhole && out <= 0xFFFF ? static_cast<int>(out) : -1;
        count += isWhole ? 1 : 0;
        if (byte < 0x80 && encoding.map[byte] != byte)
            return XML_STATUS_ERROR;
    }
    constexpr int leastCount = 200;
    return count < leastCount ? XML_STATUS_ERROR : XML_STATUS_OK;
}

/// The library loads code for each encoding that it knows, so that a file may not choose among all of them.
bool isSingleByteName(std::string_view name) {
    constexpr std::array<std::string_view, 5> families{"iso-8859-", "windows-", "cp", "koi8-", "latin"};
    const bool isInFamily = std::ranges::any_of(families, [name](std::string_view family) {
        return equalsIgnoringCase(name.substr(0, family.size()), family);
    });
    return isInFamily && std::ranges::all_of(name, [](char letter) {
               return letter == '-' || (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') ||
                      (letter >= 'A' && letter <= 'Z');
           });
}

int take(void*, const XML_Char* name, XML_Encoding* encoding) {
    *encoding = {};
    if (equalsIgnoringCase(name, "UTF8"))
        return takeUtf8(*encoding);
    if (!isSingleByteName(name))
        return XML_STATUS_ERROR;
    const iconv_t converter = iconv_open("UTF-32LE", name);
    if (converter == reinterpret_cast<iconv_t>(-1)) // NOLINT
        return XML_STATUS_ERROR;
    const int result = takeSingleBytes(converter, *encoding);
    iconv_close(converter);
    return result;
}

} // namespace

void takeMoreEncodings(XML_ParserStruct* parser) {
    XML_SetUnknownEncodingHandler(parser, take, nullptr);
}

bool isAscii(const Element& element) {
    const auto isOne = [](const std::string& text) {
        return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    };
    return isOne(element.name) &&
           std::all_of(element.attributes.begin(), element.attributes.end(),
                       [&](const Attribute& attribute) { return isOne(attribute.name) && isOne(attribute.value); });
}

} // namespace krohost::reader
