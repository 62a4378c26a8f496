#include "fuzz/mutate.h"

#include "loader/sdk/base64.h"
#include "tests/support/encoding.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <random>
#include <span>
#include <utility>
#include <vector>

namespace fuzz {

namespace {

/// Places in the text, the second one after the last character.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct Attribute {
    std::string_view name;
    Span whole; // with the blank before it
    Span value; // without quotes
};

struct Element {
    std::string_view name;
    Span startTag;
    Span whole;
    std::vector<Attribute> attributes;
};

/// What an attribute may say, by its name. Others are taken for counts.
const std::vector<std::pair<std::string_view, std::vector<std::string_view>>> vocabulary{
    {"type",
     {"Int8", "UInt8", "Int16", "UInt16", "Int32", "UInt32", "Int64", "UInt64", "Float32", "Float64", "String",
      "UnstructuredGrid", "PUnstructuredGrid", "vtkMultiBlockDataSet", "Collection"}},
    {"format", {"ascii", "binary", "appended", "Ascii"}},
    {"encoding", {"raw", "base64"}},
    {"byte_order", {"LittleEndian", "BigEndian"}},
    {"header_type", {"UInt32", "UInt64"}},
    {"compressor", {"vtkZLibDataCompressor", "vtkLZ4DataCompressor", "vtkLZMADataCompressor", ""}},
    {"version", {"0.1", "1.0", "2.0", "2.1", "2.2", "9.9"}},
    {"Name", {"connectivity", "offsets", "types", "faces", "faceoffsets", "TimeValue", "Points", "X", "v", "V", ""}},
    {"file", {"1.vtu", "2.vtu", "case.vtm", "gone.vtu", "./1.vtu", ""}},
    {"Source", {"1.vtu", "2.vtu", "case.vtm", ""}}};

constexpr std::string_view rawBegin = "<AppendedData", rawEnd = "</AppendedData>";

std::vector<Attribute> attributesIn(std::string_view text, Span tag) {
    std::vector<Attribute> attributes;
    for (std::size_t equals = text.find('=', tag.begin); equals < tag.end; equals = text.find('=', equals)) {
        const std::size_t quote = equals + 1, close = text.find(text[quote], quote + 1);
        std::size_t begin = equals;
        while (begin > tag.begin && !std::isspace(static_cast<unsigned char>(text[begin - 1])))
            --begin;
        if (begin == tag.begin || close >= tag.end || (text[quote] != '"' && text[quote] != '\''))
            break;
        attributes.push_back({text.substr(begin, equals - begin), {begin - 1, close + 1}, {quote + 1, close}});
        equals = close;
    }
    return attributes;
}

std::size_t endOfTag(std::string_view text, std::size_t begin) {
    char quote = '\0';
    for (std::size_t at = begin; at < text.size(); ++at)
        if (quote != '\0' || text[at] == '"' || text[at] == '\'')
            quote = quote == '\0' ? text[at] : quote == text[at] ? '\0' : quote;
        else if (text[at] == '>')
            return at + 1;
    return text.npos;
}

/// The elements of the text, as far as it is well-formed; raw data are passed over.
std::vector<Element> elementsOf(std::string_view text) {
    std::vector<Element> elements;
    std::vector<std::size_t> open;
    for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at)) {
        const Span tag{at, endOfTag(text, at)};
        if (tag.end == text.npos)
            break;
        const std::string_view name = text.substr(at + 1, text.find_first_of(" \t\r\n/>", at + 2) - at - 1);
        at = tag.end;
        if (name.starts_with('/')) {
            if (open.empty() || elements[open.back()].name != name.substr(1))
                break;
            elements[open.back()].whole.end = tag.end;
            open.pop_back();
        } else if (!name.starts_with('?') && !name.starts_with('!')) {
            elements.push_back({name, tag, tag, attributesIn(text, tag)});
            if (text[tag.end - 2] == '/')
                continue;
            open.push_back(elements.size() - 1);
            if (name == rawBegin.substr(1))
                at = std::min(text.find(rawEnd, at), text.size());
        }
    }
    std::erase_if(elements, [](const Element& element) { return element.whole.end == 0; });
    return elements;
}

std::string_view in(std::string_view text, Span span) {
    return text.substr(span.begin, span.end - span.begin);
}

/// One text and the ways to change it once.
class Mutation {
    std::size_t below(std::size_t count) { return random_() % count; }
    template <class List>
    auto& any(List& list) {
        return list[below(std::size(list))];
    }
    void replace(Span span, std::string_view by) { text_.replace(span.begin, span.end - span.begin, by); }

public:
    Mutation(std::string_view text, std::mt19937& random)
        : text_(text), elements_(elementsOf(text_)), random_(random) {}

    std::string once() {
        if (elements_.empty())
            return text_;
        static constexpr std::array changes{
            &Mutation::changeAttribute, &Mutation::changeAttribute, &Mutation::copyAttribute, &Mutation::changeElement,
            &Mutation::changeHeader,    &Mutation::changeHeader,    &Mutation::changeNumber};
        (this->*any(changes))();
        return text_;
    }

    std::string with(std::string_view other) {
        const std::vector<Element> others = elementsOf(other);
        if (elements_.empty() || others.empty())
            return text_;
        const Element& given = any(others);
        const Element& place = any(elements_);
        const bool isReplacing = given.name == place.name || below(8) == 0;
        replace({isReplacing ? place.whole.begin : place.whole.end, place.whole.end}, in(other, given.whole));
        return text_;
    }

private:
    /// Beside a power of two, where sizes of types and products of sizes end.
    std::uint64_t count() {
        static constexpr std::array powers{0, 1, 8, 15, 16, 31, 32, 53, 60, 61, 63, 64};
        const int power = any(powers);
        return (power == 64 ? 0 : 1ull << power) + below(3) - 1;
    }
    std::string number() {
        const std::uint64_t number = count();
        return below(8) == 0 ? std::to_string(static_cast<std::int64_t>(number)) : std::to_string(number);
    }

    static void changeCase(std::span<char> text) {
        for (char& letter : text)
            letter = static_cast<char>(std::isalpha(static_cast<unsigned char>(letter)) != 0 ? letter ^ 32 : letter);
    }

    /// Data arrays carry most of what is read.
    const Element& element() {
        for (int attempt = 0; attempt < 3; ++attempt)
            if (const Element& element = any(elements_); element.name == "DataArray")
                return element;
        return any(elements_);
    }

    std::string valueFor(const Attribute& attribute) {
        const std::string_view now = in(text_, attribute.value);
        if (below(3) == 0) // what another element says there: one name or offset for two
            for (int attempt = 0; attempt < 8; ++attempt)
                for (const Attribute& other : element().attributes)
                    if (other.name == attribute.name && in(text_, other.value) != now)
                        return std::string(in(text_, other.value));
        for (const auto& [name, values] : vocabulary)
            if (std::ranges::equal(name, attribute.name, [](char a, char b) { return (a | 32) == (b | 32); })) {
                std::string value(below(3) == 0 ? now : any(values));
                if (value == now) // the same in another case
                    changeCase(value);
                return value;
            }
        if (below(4) != 0 || now.empty() || now.size() > 18 || !std::ranges::all_of(now, ::isdigit))
            return number();
        return std::to_string(std::stoull(std::string(now)) + below(17) - 8);
    }

    void changeAttribute() {
        const Element& chosen = element();
        if (chosen.attributes.empty())
            return;
        const Attribute& attribute = any(chosen.attributes);
        if (below(8) == 0)
            replace(attribute.whole, "");
        else
            replace(attribute.value, valueFor(attribute));
    }

    /// An attribute of one element on another that has none of the name.
    void copyAttribute() {
        const Element &from = element(), &to = element();
        if (from.attributes.empty())
            return;
        const Attribute& attribute = any(from.attributes);
        const bool isTaken =
            std::ranges::any_of(to.attributes, [&](const Attribute& own) { return own.name == attribute.name; });
        if (!isTaken)
            text_.insert(to.startTag.begin + 1 + to.name.size(), std::string(in(text_, attribute.whole)));
    }

    void changeElement() {
        const Element &first = element(), &second = below(2) == 0 ? first : element();
        std::string copy(in(text_, first.whole));
        for (const Attribute& attribute : first.attributes)
            if ((attribute.name == "Name" || attribute.name == "name") && below(3) == 0)
                changeCase(std::span(copy).subspan(attribute.value.begin - first.whole.begin,
                                                   attribute.value.end - attribute.value.begin));
        if (&first == &second && below(2) == 0)
            return replace(first.whole, "");
        if (below(4) == 0) // within it, before its own content
            return replace({second.startTag.end, second.startTag.end},
                           second.whole.end == second.startTag.end ? "" : copy);
        if (below(2) == 0 && first.whole.end <= second.whole.begin) {
            const std::string other(in(text_, second.whole));
            replace(second.whole, copy);
            return replace(first.whole, other);
        }
        replace({second.whole.end, second.whole.end}, copy);
    }

    /// A word among the first of an array: byte counts, block counts and sizes, or a value.
    void changeHeader() {
        const Element& array = element();
        std::size_t begin = array.startTag.end;
        bool isAppended = false;
        for (const Attribute& attribute : array.attributes)
            if (const std::size_t data = text_.find('_', text_.find(rawBegin));
                attribute.name == "offset" && data != text_.npos) {
                begin = data + 1 + std::strtoull(text_.c_str() + attribute.value.begin, nullptr, 10);
                isAppended = true;
            }
        begin = text_.find_first_not_of(" \t\r\n", std::min(begin, text_.size()));
        if (begin == text_.npos)
            return;
        const std::string text = base64At(begin);
        std::string bytes(text.size(), '\0');
        const std::size_t byteCount =
            veltra::dataio::decodeBase64({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                                         {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()})
                .bytesProduced;
        if (text.empty() && isAppended)
            return changeWord(text_, begin);
        bytes.resize(byteCount);
        changeWord(bytes, 0);
        replace({begin, begin + text.size()}, test::base64(bytes));
    }

    /// The groups of the first 48 bytes, or as far as padding; none where there are fewer than two groups.
    std::string base64At(std::size_t begin) const {
        static constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::string_view text = std::string_view(text_).substr(begin, 64);
        std::size_t count = std::min(text.find_first_not_of(alphabet), text.size());
        while (count < text.size() && count % 4 != 0 && text[count] == '=')
            ++count;
        return std::string(text.substr(0, count < 8 ? 0 : count / 4 * 4));
    }

    void changeWord(std::string& bytes, std::size_t begin) {
        const bool isWide = (text_.find("header_type=\"UInt64") != text_.npos) != (below(8) == 0);
        const std::size_t byteCount = isWide ? 8 : 4, place = begin + byteCount * below(1 + below(6));
        if (place + byteCount > bytes.size())
            return;
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + place, byteCount);
        word = below(2) == 0 ? count() : word + below(9) - 4;
        std::string written(reinterpret_cast<const char*>(&word), byteCount);
        if (below(4) == 0)
            std::ranges::reverse(written);
        bytes.replace(place, byteCount, written);
    }

    /// A number of ascii text, or the end of one.
    void changeNumber() {
        static constexpr std::array<const char*, 12> words{"nan",  "inf",  "-inf",     "1.#QNAN", "n/a",        "1e400",
                                                           "1e39", "1e-9", "1.495e10", "300",     "4294967299", "-1"};
        const Element& array = element();
        const std::size_t end = text_.find('<', array.startTag.end);
        if (array.startTag.end >= text_.size() || end == text_.npos || end == array.startTag.end)
            return;
        std::size_t begin = array.startTag.end + below(end - array.startTag.end);
        begin = std::min(text_.find_first_not_of(" \t\r\n", begin), end);
        const std::size_t wordEnd = std::min(text_.find_first_of(" \t\r\n<", begin), end);
        const std::size_t choice = below(3);
        replace({begin, wordEnd}, choice == 0 ? number() : choice == 1 ? any(words) : "");
    }

    std::string text_;
    std::vector<Element> elements_;
    std::mt19937& random_;
};

} // namespace

std::string mutated(std::string_view document, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::string text(document);
    for (std::size_t count = 1 + random() % 4; count > 0; --count)
        text = Mutation(text, random).once();
    return text;
}

std::string crossed(std::string_view document, std::string_view other, std::uint32_t seed) {
    std::mt19937 random(seed);
    return Mutation(document, random).with(other);
}

} // namespace fuzz
