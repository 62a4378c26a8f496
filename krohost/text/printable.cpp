#include "krohost/text/printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace krohost {

namespace {

/// A character, or a byte that is none.
struct Character {
    std::string_view bytes;
    char32_t code;
    bool isValid;
};

/// What a text begins with.
Character firstCharacter(std::string_view text) {
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000}; // by the number of bytes
    const auto at = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = at(0);
    const Character single{text.substr(0, 1), lead, lead < 0x80};
    const std::size_t byteCount = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < byteCount)
        return single;
    char32_t code = lead & (0x7Fu >> byteCount);
    for (std::size_t index = 1; index < byteCount; ++index) {
        if ((at(index) & 0xC0) != 0x80)
            return single;
        code = code << 6 | (at(index) & 0x3Fu);
    }
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < least[byteCount] || code > 0x10FFFF || isSurrogate)
        return single;
    return {text.substr(0, byteCount), code, true};
}

struct Range {
    char32_t first, last;
};

/// Control characters, those that set the direction of writing, ends of lines and paragraphs, and those without a
/// shape.
constexpr std::array<Range, 12> hidden{{{0x00, 0x1F},
                                        {0x7F, 0x9F},
                                        {0xAD, 0xAD},
                                        {0x61C, 0x61C},
                                        {0x180E, 0x180E},
                                        {0x200B, 0x200F},
                                        {0x2028, 0x202E},
                                        {0x2060, 0x206F},
                                        {0xFEFF, 0xFEFF},
                                        {0xFFF9, 0xFFFB},
                                        {0x1D173, 0x1D17A},
                                        {0xE0000, 0xE0FFF}}};

bool isHidden(const Character& character) {
    if (character.code >= 0x20 && character.code < 0x7F)
        return false; // as most are
    return !character.isValid || std::any_of(hidden.begin(), hidden.end(), [code = character.code](Range range) {
        return code >= range.first && code <= range.last;
    });
}

std::string escape(const Character& character) {
    const auto code = static_cast<std::uint32_t>(character.code);
    if (!character.isValid || code < 0x80)
        return fmt::format("\\x{:02x}", code);
    return code < 0x10000 ? fmt::format("\\u{:04x}", code) : fmt::format("\\U{:08x}", code);
}

std::string escapeInJson(const Character& character) {
    const auto code = static_cast<std::uint32_t>(character.code);
    if (code < 0x10000)
        return fmt::format("\\u{:04x}", code);
    return fmt::format("\\u{:04x}\\u{:04x}", 0xD7C0 + (code >> 10), 0xDC00 + (code & 0x3FF)); // a surrogate pair
}

/// The text with each character replaced, for which `replace` gives true.
template <class Replace>
std::string replaced(std::string_view text, const Replace& replace) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (!replace(character, result))
            result += character.bytes;
        text.remove_prefix(character.bytes.size());
    }
    return result;
}

template <class Escape>
bool appendEscape(std::string& result, const Character& character, const Escape& escapeOf) {
    if (!isHidden(character))
        return false;
    result += escapeOf(character);
    return true;
}

} // namespace

std::string printable(std::string_view text) {
    return replaced(text, [](const Character& character, std::string& result) {
        return character.bytes != "\n" && character.bytes != "\t" && appendEscape(result, character, escape);
    });
}

std::string printableLine(std::string_view text, std::string_view marked) {
    return replaced(text, [marked](const Character& character, std::string& result) {
        if (character.bytes == "\n" || character.bytes == "\t")
            result += character.bytes == "\n" ? "\\n" : "\\t";
        else if (marked.find(character.bytes) != marked.npos)
            result.append("\\").append(character.bytes);
        else
            return appendEscape(result, character, escape);
        return true;
    });
}

std::string printableName(std::string_view name) {
    std::string whole;
    for (std::size_t index = 0; index < name.size(); ++index) {
        const std::string_view rest = name.substr(index + 1);
        const bool isBeforeEscape = !rest.empty() && (std::string_view{"\\ntxuU"}.find(rest.front()) != rest.npos ||
                                                      isHidden(firstCharacter(rest)));
        whole.append(name[index] == '\\' && isBeforeEscape ? 2 : 1, name[index]);
    }
    return printableLine(whole);
}

std::string printableDialog(std::string_view text) {
    std::string result;
    bool isReasonSaid = false;
    while (true) {
        const std::string line = printableLine(text.substr(0, text.find('\n')));
        const bool isReason = !isReasonSaid && line.starts_with("Reason: ");
        isReasonSaid = isReasonSaid || isReason;
        result += (result.empty() || line.empty() || isReason ? "" : "  ") + line;
        if (text.find('\n') == text.npos)
            return result;
        text.remove_prefix(text.find('\n') + 1);
        result += '\n';
    }
}

std::string printableJson(std::string_view json) {
    return replaced(json, [](const Character& character, std::string& result) {
        return character.bytes != "\n" && appendEscape(result, character, escapeInJson);
    });
}

std::string inXml(std::string_view text) {
    return replaced(text, [](const Character& character, std::string& result) {
        const bool isControl =
            character.code < 0x20 && std::string_view{"\t\n\r"}.find(character.bytes) == std::string_view::npos;
        const bool isForeign = !character.isValid || isControl || character.code == 0xFFFE || character.code == 0xFFFF;
        if (isForeign)
            result += '_';
        return isForeign;
    });
}

std::string_view beginning(std::string_view text, std::size_t byteLimit) {
    if (text.size() <= byteLimit)
        return text;
    for (std::size_t end = byteLimit; end > 0 && end + 4 > byteLimit; --end)
        if ((static_cast<unsigned char>(text[end]) & 0xC0) != 0x80)
            return text.substr(0, end);
    return text.substr(0, byteLimit); // it is not UTF-8
}

} // namespace krohost
