#include "krohost/convert/names.h"

#include <fmt/format.h>

#include <algorithm>

namespace krohost::convert {

namespace {

std::string safe(std::string name) {
    for (char& character : name)
        if (const auto byte = static_cast<unsigned char>(character); byte < 0x20 || byte == 0x7F || byte == '/')
            character = '_';
    return name.empty() ? "unnamed" : name == "." || name == ".." ? std::string(name.size(), '_') : name;
}

std::string withoutBlanks(const std::string& name) {
    const std::size_t begin = name.find_first_not_of(' ');
    return begin == name.npos ? "" : name.substr(begin, name.find_last_not_of(' ') + 1 - begin);
}

/// The first bytes, without a part of a character at the end.
std::string cut(const std::string& text, std::size_t byteLimit) {
    std::size_t end = std::min(text.size(), byteLimit);
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

} // namespace

std::string Names::claim(const std::string& wanted) {
    const std::string stem = safe(areBlanksKept_ ? wanted : withoutBlanks(wanted));
    std::string name = cut(stem, byteLimit_);
    if (!areBlanksKept_)
        name = withoutBlanks(name); // which its end may be now
    for (std::size_t& number = lastNumbers_.emplace(name, 1).first->second; !taken_.insert(name).second;) {
        const std::string suffix = fmt::format("_{}", ++number);
        name = cut(stem, byteLimit_ - suffix.size()) + suffix;
    }
    if (name != wanted)
        losses_.add({"renamed", fmt::format("\"{}\" is called \"{}\" in the {} file.", wanted, name, format_)});
    return name;
}

} // namespace krohost::convert
