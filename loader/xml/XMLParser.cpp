#include "loader/xml/XMLParser.h"

#include "loader/xml/TagLimits.h"
#include "loader/xml/Utf8Check.h"
#include "loader/xml/equalsIgnoringCase.h"
#include "loader/xml/messages.h"

#include "loader/sdk/BufferedInputStream.h"
#include "loader/sdk/FileInputStream.h"
#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"

#include <QByteArray>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

namespace veltra::vtkfile {

namespace {

constexpr std::string_view whitespace = " \t\n\v\f\r";

using Bytes = std::span<const std::uint8_t>;

std::size_t find(Bytes bytes, char byte) {
    const void* hit = std::memchr(bytes.data(), byte, bytes.size());
    return hit ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(hit) - bytes.data()) : bytes.size();
}

std::size_t findNonWhitespace(Bytes bytes) {
    const auto isBlank = [](std::uint8_t byte) { return whitespace.find(static_cast<char>(byte)) != whitespace.npos; };
    return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), isBlank) - bytes.begin());
}

/// Markup that is no element and that nobody looks at. It ends at the first `>` after `mark`s, so many at least.
struct Passage {
    std::string_view opening;
    char mark;
    std::size_t markCount;
};
constexpr std::array<Passage, 3> passages{{{"<!--", '-', 2}, {"<![CDATA[", ']', 2}, {"<?", '?', 1}}};

/// Finds the `>` that ends a passage, in one block after the other.
class PassageEnd {
public:
    explicit PassageEnd(const Passage& passage) : passage_(passage) {}

    std::size_t operator()(Bytes bytes) {
        for (std::size_t index = 0; index < bytes.size(); ++index) {
            if (bytes[index] == '>' && markCount_ >= passage_.markCount)
                return index;
            markCount_ = bytes[index] == passage_.mark ? markCount_ + 1 : 0;
        }
        return bytes.size();
    }

private:
    const Passage& passage_;
    std::size_t markCount_ = 0; // before the next byte
};

QLatin1String latin1(std::string_view text) {
    return QLatin1String(text.data(), static_cast<int>(text.size()));
}

template <class QtString>
std::string utf8(const QtString& text) {
    const QByteArray bytes = text.toUtf8();
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

} // namespace

void checkEncoding(std::span<const std::uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.size() > 2 && (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")))
        throw IOException(utf16Unsupported);
}

struct XMLParser::Impl {
    static constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

    boost::filesystem::path path;
    std::shared_ptr<dataio::FileInputStream> file;
    std::shared_ptr<dataio::BufferedInputStream> stream;
    QByteArray pending; // read from the stream and not yet handed to the XML reader
    QXmlStreamReader reader;
    QXmlStreamReader::TokenType token = QXmlStreamReader::NoToken;
    QXmlStreamAttributes attributes; // of the current start element
    std::uint64_t position = 0;      // in the stream, after the last byte fed or passed over
    bool lookAhead = false;          // `position` is one byte too far
    bool emptyElement = false;       // the last tag fed ended in "/>"
    bool declarationFed = false;
    bool rootBegun = false;
    bool hasDoctype = false;                           // which may give tags attributes that are not written there
    std::uint64_t start = 0;                           // of the document, after a byte-order mark
    std::optional<Utf8Check> utf8Check{std::in_place}; // none once the document is known to be in another encoding
    bool isMarked = false;                             // begins with the byte-order mark of UTF-8
    std::optional<std::string> contradiction;          // the encoding that it declares besides
    TagLimits limits;

    /// Whether the next byte of the file passes. False at the end of the file.
    template <class Test>
    bool isNext(Test test) {
        const Bytes bytes = stream->peek();
        return !bytes.empty() && test(static_cast<char>(bytes.front()));
    }

    void takeByte() {
        pending.append(static_cast<char>(stream->peek().front()));
        stream->skip(1);
    }

    /// The reader takes the encoding that a document declares only without the mark.
    void skipByteOrderMark() {
        const Bytes bytes = stream->peek();
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        isMarked = text.starts_with(byteOrderMark);
        if (isMarked)
            stream->skip(byteOrderMark.size());
        start = stream->position();
    }

    /// Passes over the bytes before the first that `findEnd` finds in a block. False at the end of the file.
    template <class FindEnd>
    bool passOver(FindEnd&& findEnd) {
        for (Bytes bytes = stream->peek(); !bytes.empty(); bytes = stream->peek()) {
            const std::size_t end = findEnd(bytes);
            stream->skip(end);
            if (end < bytes.size())
                return true;
        }
        return false;
    }

    /// Passes over text to the first `byte`; false at the end of the file. A document type may declare entities that
    /// hold elements, which nobody would see here.
    bool passOverText(char byte) {
        const bool found = passOver([&](Bytes bytes) {
            const std::size_t end = find(bytes, byte);
            return hasDoctype ? find(bytes.first(end), '&') : end;
        });
        if (found && hasDoctype && isNext([](char next) { return next == '&'; })) {
            const std::uint64_t place = stream->position();
            throw IOException(referenceInText(takeReference(), place));
        }
        return found;
    }

    /// What is there up to a `;`, or the beginning of it.
    std::string takeReference() {
        constexpr std::size_t byteLimit = 100;
        const auto goesOn = [](char byte) { return byte != '<' && whitespace.find(byte) == whitespace.npos; };
        std::string text;
        while (!text.ends_with(';') && text.size() < byteLimit && isNext(goesOn)) {
            text += static_cast<char>(stream->peek().front());
            stream->skip(1);
        }
        return text;
    }

    /// Throws where a tag's bytes are not of the document's encoding.
    void checkCharacters(Bytes bytes) {
        const std::uint64_t begin = stream->position();
        if (const auto invalid = utf8Check ? utf8Check->check(bytes, begin) : std::nullopt)
            throw IOException(notUtf8(invalid->byte, invalid->position));
        if (!contradiction)
            return;
        const auto foreign = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte >= 0x80; });
        if (foreign != bytes.end())
            throw IOException(
                twoEncodings(*contradiction, *foreign, begin + static_cast<std::uint64_t>(foreign - bytes.begin())));
    }

    /// Moves bytes from the stream to `pending` through the first `>` or to the end of the file.
    void collectTag() {
        for (Bytes bytes = stream->peek(); !bytes.empty(); bytes = stream->peek()) {
            const std::size_t end = find(bytes, '>');
            const std::size_t count = std::min(end + 1, bytes.size());
            checkCharacters(bytes.first(count));
            limits.add(bytes.first(count));
            pending.append(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(count));
            stream->skip(count);
            if (end < bytes.size())
                return;
        }
    }

    /// Passes over text and passages. Before the root element text is an error, which the reader reports.
    void passOverToTag() {
        do
            rootBegun ? passOverText('<') : passOver(findNonWhitespace);
        while (passOverPassage());
    }

    /// Passes over the passage that comes next. False when there is none; what was taken of a tag then is in
    /// `pending`.
    bool passOverPassage() {
        const bool atStart = stream->position() == start;
        const Passage* passage = takeOpening();
        if (!passage || (atStart && passage->mark == '?' && takeDeclarationName()))
            return false;
        pending.clear();
        if (passOver(PassageEnd(*passage)))
            stream->skip(1);
        return true;
    }

    /// Moves the name of an instruction to `pending` as far as it is that of the XML declaration, which is the
    /// reader's.
    bool takeDeclarationName() {
        for (const char expected : std::string_view("xml")) {
            if (!isNext([expected](char byte) { return byte == expected; }))
                return false;
            takeByte();
        }
        return isNext([](char byte) { return whitespace.find(byte) != whitespace.npos; });
    }

    /// Moves bytes to `pending` as long as they may be the opening of a passage. Null when they are not.
    const Passage* takeOpening() {
        for (Bytes bytes = stream->peek(); !bytes.empty(); bytes = stream->peek()) {
            pending.append(static_cast<char>(bytes.front()));
            const std::string_view taken(pending.constData(), static_cast<std::size_t>(pending.size()));
            const auto passage = std::find_if(passages.begin(), passages.end(), [&](const Passage& candidate) {
                return candidate.opening.starts_with(taken);
            });
            if (passage == passages.end()) {
                pending.chop(1);
                return nullptr;
            }
            stream->skip(1);
            if (passage->opening == taken)
                return &*passage;
        }
        return nullptr;
    }

    /// Hands the next tag to the reader, or more of one whose `>` was not its end. False when the file has nothing
    /// more.
    bool feedTag() {
        if (limits.isWithinTag())
            limits.addInnerEnd();
        else
            passOverToTag();
        collectTag();
        position = stream->position();
        lookAhead = false;
        emptyElement = pending.endsWith("/>");
        declarationFed = declarationFed || (pending.contains("<?xml") && pending.endsWith("?>"));
        if (pending.isEmpty())
            return false;
        reader.addData(pending);
        pending.clear();
        return true;
    }

    static bool isUtf8(const std::string& encoding) {
        return encoding.empty() || equalsIgnoringCase(encoding, "UTF-8") || equalsIgnoringCase(encoding, "UTF8");
    }

    void takeEncoding(const std::string& declared) {
        if (isUtf8(declared))
            return;
        utf8Check.reset();
        if (isMarked)
            contradiction = declared;
    }

    /// Takes a start element over from the reader.
    void openElement() {
        rootBegun = true;
        attributes = reader.attributes();
        if (hasDoctype) // which may give them where no tag has any
            TagLimits::checkAttributeCount(static_cast<std::size_t>(attributes.size()));
        if (limits.hasReferences() || hasDoctype) { // what has none is no longer than its tag
            std::size_t characterCount = 0;
            for (const QXmlStreamAttribute& attribute : attributes)
                characterCount += static_cast<std::size_t>(attribute.value().size());
            TagLimits::checkCharacterCount(characterCount);
        }
        const bool mayDeclare = limits.hasEquals() || hasDoctype;
        limits.openElement(mayDeclare ? static_cast<std::size_t>(reader.namespaceDeclarations().size()) : 0);
    }

    void readToken() {
        token = reader.readNext();
        while (token == QXmlStreamReader::Invalid && reader.error() == QXmlStreamReader::PrematureEndOfDocumentError &&
               feedTag())
            token = reader.readNext();
        // Without a declaration the reader announces the document at the first `>`, which may be within the root's tag.
        const bool announced = token == QXmlStreamReader::StartDocument && !declarationFed;
        if (token == QXmlStreamReader::StartDocument)
            takeEncoding(utf8(reader.documentEncoding()));
        hasDoctype = hasDoctype || token == QXmlStreamReader::DTD;
        if (token == QXmlStreamReader::StartElement)
            openElement();
        else if (token == QXmlStreamReader::EndElement)
            limits.closeElement();
        if (token != QXmlStreamReader::Invalid && !announced)
            limits.endTag();
    }
};

XMLParser::XMLParser(boost::filesystem::path path) : impl_(std::make_unique<Impl>()) {
    impl_->path = std::move(path);
}

XMLParser::~XMLParser() = default;

bool XMLParser::open() {
    try {
        impl_->file = std::make_shared<dataio::FileInputStream>(impl_->path);
    } catch (const IOException&) {
        return false; // the caller has a sentence of its own for every reason
    }
    impl_->stream = std::make_shared<dataio::BufferedInputStream>(impl_->file, dataio::fileBlockByteCount);
    checkEncoding(impl_->stream->peek());
    impl_->skipByteOrderMark();
    return impl_->stream->available() > 0;
}

bool XMLParser::readNext() {
    impl_->readToken();
    return impl_->reader.error() == QXmlStreamReader::NoError;
}

bool XMLParser::hasMoreInput() const {
    return !impl_->rootBegun || impl_->limits.depth() > 0;
}

std::string XMLParser::errorString() const {
    return excerpt(utf8(impl_->reader.errorString())); // which may quote the document
}

bool XMLParser::isStartElement() const {
    return impl_->token == QXmlStreamReader::StartElement;
}

bool XMLParser::isStartElement(std::string_view name) const {
    return isStartElement() && impl_->reader.name() == latin1(name);
}

bool XMLParser::isEndElement(std::string_view name) const {
    return impl_->token == QXmlStreamReader::EndElement && impl_->reader.name() == latin1(name);
}

std::string XMLParser::elementName() const {
    return utf8(impl_->reader.qualifiedName());
}

bool XMLParser::isEmptyElement() const {
    return impl_->emptyElement;
}

bool XMLParser::hasAnyAttribute(Names names) const {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return impl_->attributes.hasAttribute(latin1(name)); });
}

std::string XMLParser::getAnyAttribute(Names names) const {
    if (!hasAnyAttribute(names))
        throw IOException(missingAttribute(utf8(impl_->reader.namespaceUri()), *names.begin()));
    return getOptionalAttribute(names);
}

std::string XMLParser::getOptionalAttribute(Names names) const {
    for (const std::string_view name : names)
        if (impl_->attributes.hasAttribute(latin1(name)))
            return utf8(impl_->attributes.value(latin1(name)));
    return {};
}

// One widely used writer pads its numbers with blanks.
std::string XMLParser::numericText(Names names) const {
    const std::string value = getOptionalAttribute(names);
    const std::size_t first = value.find_first_not_of(whitespace);
    if (first == value.npos)
        return {};
    return value.substr(first, value.find_last_not_of(whitespace) - first + 1);
}

void XMLParser::skipWhitespace() {
    impl_->lookAhead = impl_->passOver(findNonWhitespace);
    impl_->position = impl_->stream->position() + (impl_->lookAhead ? 1 : 0);
}

bool XMLParser::feedThrough(char byte) {
    const bool found = impl_->passOverText(byte);
    impl_->position = impl_->stream->position() + (found ? 1 : 0);
    if (found && byte != '<')
        impl_->stream->skip(1);
    return found;
}

std::uint64_t XMLParser::position() const {
    return impl_->position - (impl_->lookAhead ? 1 : 0);
}

} // namespace veltra::vtkfile
