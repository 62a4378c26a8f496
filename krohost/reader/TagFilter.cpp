#include "krohost/reader/TagFilter.h"

#include <algorithm>
#include <iterator>

namespace krohost::reader {

namespace {

constexpr std::string_view instruction = "<?p?>"; // takes the place of a passage
constexpr std::size_t longestOpening = 9;         // that of CDATA

void blank(std::span<char> bytes) {
    for (char& byte : bytes)
        byte = byte == '\n' || byte == '\r' || byte == '_' ? byte : ' ';
}

bool isDeclaration(std::string_view text) {
    constexpr std::string_view opening = "<?xml";
    return text.size() > opening.size() && text.starts_with(opening) &&
           std::string_view{" \t\n\v\f\r"}.find(text[opening.size()]) != std::string_view::npos;
}

} // namespace

std::size_t TagFilter::filter(std::span<char> bytes, bool isLast) {
    std::size_t next = 0;
    while (next < bytes.size()) {
        if (state_ == State::tag)
            next = passTag(bytes, next);
        else if (state_ == State::passage)
            next = passOverPassage(bytes, next);
        else if (state_ == State::through)
            next = bytes.size();
        else if (bytes[next] != '<')
            next = passOverText(bytes, next);
        else if (!isLast && bytes.size() - next <= longestOpening)
            return next;
        else
            next = open(bytes, next);
        isAtStart_ = false;
    }
    return next;
}

std::size_t TagFilter::passOverText(std::span<char> bytes, std::size_t next) const {
    const std::string_view text{bytes.data(), bytes.size()};
    const std::size_t end = std::min(text.find('<', next), bytes.size());
    if (hasRoot_)
        blank(bytes.subspan(next, end - next));
    return end;
}

std::size_t TagFilter::passTag(std::span<char> bytes, std::size_t next) {
    for (; next < bytes.size(); ++next) {
        const char byte = bytes[next];
        if (quote_ != 0)
            quote_ = byte == quote_ ? char{0} : quote_;
        else if (byte == '"' || byte == '\'')
            quote_ = byte;
        else if (byte == '>') {
            state_ = State::text;
            return next + 1;
        }
    }
    return next;
}

std::size_t TagFilter::passOverPassage(std::span<char> bytes, std::size_t next) {
    const std::size_t begin = next;
    bool isOver = false;
    while (next < bytes.size() && !isOver)
        isOver = endsPassage(bytes[next++]);
    blank(bytes.subspan(begin, next - begin));
    if (isOver)
        state_ = State::text;
    return next;
}

std::size_t TagFilter::open(std::span<char> bytes, std::size_t next) {
    struct Passage {
        std::string_view opening;
        char mark;
        std::size_t markCount;
    };
    constexpr Passage passages[]{{"<!--", '-', 2}, {"<![CDATA[", ']', 2}, {"<?", '?', 1}};
    const std::string_view text{&bytes[next], bytes.size() - next};
    const auto found = std::find_if(std::begin(passages), std::end(passages),
                                    [&](const Passage& passage) { return text.starts_with(passage.opening); });
    if (found != std::end(passages) && !(isAtStart_ && isDeclaration(text))) {
        mark_ = found->mark;
        neededMarkCount_ = found->markCount;
        return openPassage(bytes, next, found->opening.size());
    }
    state_ = text.starts_with("<!") ? State::through : State::tag;
    hasRoot_ = hasRoot_ || !text.starts_with("<?");
    return next + 1;
}

/// One that is too short for what is to take its place stays.
std::size_t TagFilter::openPassage(std::span<char> bytes, std::size_t next, std::size_t openingLength) {
    const std::size_t end = next + std::max(openingLength, instruction.size());
    markCount_ = 0;
    bool isOver = false;
    for (std::size_t index = next + openingLength; index < end && index < bytes.size(); ++index) {
        state_ = isOver ? State::through : state_;
        isOver = isOver || endsPassage(bytes[index]);
    }
    if (state_ == State::through || end > bytes.size())
        return bytes.size();
    std::copy(instruction.begin(), instruction.end(), bytes.begin() + static_cast<std::ptrdiff_t>(next));
    blank(bytes.subspan(next + instruction.size(), end - next - instruction.size()));
    state_ = isOver ? State::text : State::passage;
    return end;
}

bool TagFilter::endsPassage(char byte) {
    const bool isEnd = byte == '>' && markCount_ >= neededMarkCount_;
    markCount_ = byte == mark_ ? markCount_ + 1 : 0;
    return isEnd;
}

} // namespace krohost::reader
