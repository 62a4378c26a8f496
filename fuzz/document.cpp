// Scanning of documents. Where Qt's reader finds nothing wrong with the whole text, the tags must come as it gives
// them; places in the file are compared with what a search of the text finds.

#include "fuzz/fuzz.h"

#include "loader/xml/XMLParser.h"

#include "loader/sdk/exceptions.h"

#include <QXmlStreamReader>

#include <vector>

namespace {

using veltra::vtkfile::XMLParser;

struct Tag {
    bool isStart;
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
};

bool isLatin(const std::string& text) {
    return std::ranges::all_of(text, [](char character) { return character > 0; });
}

/// The parser is asked for names in plain letters only.
bool isLatin(const Tag& tag) {
    return isLatin(tag.name) &&
           std::ranges::all_of(tag.attributes, [](const auto& attribute) { return isLatin(attribute.first); });
}

/// The tags of a document; none when it is not well-formed. Those of entities are not in the document.
std::vector<Tag> tagsOf(std::string_view text) {
    QXmlStreamReader reader(QByteArray(text.data(), static_cast<int>(text.size())));
    std::vector<Tag> tags;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isDTD())
            return {};
        if (!reader.isStartElement() && !reader.isEndElement())
            continue;
        tags.push_back({reader.isStartElement(), reader.name().toUtf8().toStdString(), {}});
        for (const QXmlStreamAttribute& attribute : reader.attributes())
            tags.back().attributes.emplace_back(attribute.qualifiedName().toUtf8().toStdString(),
                                                attribute.value().toUtf8().toStdString());
        if (!isLatin(tags.back()))
            return {};
    }
    return reader.hasError() ? std::vector<Tag>() : tags;
}

bool isAt(const XMLParser& parser, const Tag& tag) {
    return tag.isStart ? parser.isStartElement(tag.name) : parser.isEndElement(tag.name);
}

/// Passes over inline text as the reader of arrays does.
bool passOverText(XMLParser& parser, std::string_view text) {
    constexpr std::string_view whitespace = " \t\n\v\f\r";
    const std::size_t begin = std::min(text.find_first_not_of(whitespace, parser.position()), text.size());
    parser.skipWhitespace();
    fuzz::require(parser.position() == begin, "inline text begins at the first character that is not blank");
    const std::size_t end = text.find('<', begin);
    fuzz::require(parser.feedThrough('<') == (end != text.npos), "inline text ends where a tag begins");
    fuzz::require(end == text.npos || parser.position() == end, "the end of inline text is known to the byte");
    return end != text.npos;
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::string_view text = asText(input);
    XMLParser parser(scratchFile("document.vtu", text).string());
    std::size_t tagCount = 0;
    std::size_t textCount = 0;
    const std::vector<Tag> tags = tagsOf(text);
    try {
        if (!parser.open())
            return "not opened";
        while (parser.hasMoreInput()) {
            const std::uint64_t before = parser.position();
            if (!parser.readNext()) {
                require(tags.empty(), "a well-formed document is read to its end");
                return "malformed";
            }
            require(parser.position() >= before && parser.position() <= text.size(), "places do not go back");
            if (tagCount < tags.size() && isAt(parser, tags[tagCount])) {
                for (const auto& [name, value] : tags[tagCount].attributes)
                    require(parser.getAttribute(name) == value, "attributes have the values of the file");
                ++tagCount;
            }
            if (!parser.isStartElement("DataArray") || parser.isEmptyElement())
                continue;
            require(text[parser.position() - 1] == '>', "a tag ends with its >");
            if (!passOverText(parser, text))
                return "text without end";
            ++textCount;
        }
    } catch (const veltra::IOException& failure) {
        return sentence(failure.what());
    }
    require(tagCount == tags.size(), "no tag is left out");
    return std::string(tags.empty() ? "read" : "well-formed") + (textCount > 0 ? ", with texts" : "");
}
