#include "krohost/reader/ByteSource.h"

#include <algorithm>
#include <string_view>

namespace krohost::reader {

namespace {

constexpr unsigned foreign = 64;

constexpr std::array<std::uint8_t, 256> base64Digits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(foreign);
    std::uint8_t value = 0;
    for (const char character : std::string_view{"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"})
        digits[static_cast<unsigned char>(character)] = value++;
    return digits;
}();

unsigned base64Digit(std::byte character) {
    return base64Digits[static_cast<std::size_t>(character)];
}

/// Decodes the first groups of four digits, of which nearly all text consists; gives how many there are.
std::size_t decodeGroups(std::span<const std::byte> text, std::span<std::byte> bytes) {
    const std::size_t limit = std::min(text.size() / 4, bytes.size() / 3);
    for (std::size_t group = 0; group < limit; ++group) {
        const std::byte* const characters = &text[4 * group];
        const unsigned one = base64Digit(characters[0]), two = base64Digit(characters[1]),
                       three = base64Digit(characters[2]), four = base64Digit(characters[3]);
        if ((one | two | three | four) >= foreign)
            return group;
        const unsigned bits = one << 18 | two << 12 | three << 6 | four;
        bytes[3 * group] = std::byte(bits >> 16);
        bytes[3 * group + 1] = std::byte(bits >> 8 & 0xFF);
        bytes[3 * group + 2] = std::byte(bits & 0xFF);
    }
    return limit;
}

} // namespace

FileSource::FileSource(const std::filesystem::path& path, std::uint64_t begin, std::uint64_t end, const Poll& poll)
    : stream_{path, std::ios::binary}, position_{begin}, end_{std::max(begin, end)}, poll_{poll} {
    stream_.seekg(static_cast<std::streamoff>(begin));
    isUnreadable_ = !stream_;
}

std::size_t FileSource::read(std::span<std::byte> bytes) {
    if (poll_)
        poll_();
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), byteLimit()));
    stream_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(wanted));
    const auto count = static_cast<std::size_t>(stream_.gcount());
    isUnreadable_ = isUnreadable_ || count < wanted;
    position_ += count;
    return count;
}

std::optional<Fault> FileSource::fault() const {
    return isUnreadable_ ? std::optional{Fault{.kind = FaultKind::unreadable, .byte = position_}} : std::nullopt;
}

Base64Source::Base64Source(const std::filesystem::path& path, std::uint64_t begin, std::uint64_t end, const Poll& poll)
    : text_{path, begin, end, poll} {}

std::size_t Base64Source::read(std::span<std::byte> bytes) {
    std::size_t count = 0;
    while (count < bytes.size()) {
        while (groupNext_ < groupEnd_ && count < bytes.size())
            bytes[count++] = group_[groupNext_++];
        if (foreign_)
            break;
        const std::size_t groupCount =
            decodeGroups(std::span{characters_}.subspan(next_, charactersEnd_ - next_), bytes.subspan(count));
        next_ += 4 * groupCount;
        count += 3 * groupCount;
        if (groupCount == 0 && count < bytes.size() && !decodeGroup())
            break;
    }
    return count;
}

std::uint64_t Base64Source::byteLimit() const {
    return (groupEnd_ - groupNext_) + (text_.byteLimit() + (charactersEnd_ - next_)) / 4 * 3;
}

std::optional<Fault> Base64Source::fault() const {
    return foreign_ ? foreign_ : text_.fault();
}

std::optional<char> Base64Source::nextCharacter() {
    while (true) {
        if (next_ == charactersEnd_) {
            next_ = 0;
            charactersEnd_ = text_.read(characters_);
            if (charactersEnd_ == 0)
                return std::nullopt;
        }
        const char character = static_cast<char>(characters_[next_]);
        if (character == '<')
            return std::nullopt;
        ++next_;
        if (std::string_view{" \t\n\v\f\r"}.find(character) == std::string_view::npos)
            return character;
    }
}

bool Base64Source::decodeGroup() {
    unsigned bits = 0;
    std::size_t digitCount = 0;
    for (int place = 0; place < 4; ++place) {
        const std::optional<char> character = foreign_ ? std::nullopt : nextCharacter();
        if (!character)
            return false;
        const bool isPadding = *character == '=' && place >= 2;
        const unsigned digit = isPadding ? 0 : base64Digit(std::byte(*character));
        if (digit == foreign || (!isPadding && digitCount < static_cast<std::size_t>(place))) {
            foreign_ = Fault{.kind = FaultKind::foreignText, .byte = position() - 1, .text = {*character}};
            return false;
        }
        digitCount += isPadding ? 0 : 1;
        bits = bits << 6 | digit;
    }
    group_ = {std::byte(bits >> 16), std::byte(bits >> 8 & 0xFF), std::byte(bits & 0xFF)};
    groupNext_ = 0;
    groupEnd_ = digitCount - 1;
    return true;
}

} // namespace krohost::reader
