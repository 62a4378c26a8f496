#include "krohost/reader/Document.h"

#include "krohost/reader/SkippedText.h"
#include "krohost/reader/TagFilter.h"
#include "krohost/reader/XmlEvents.h"
#include "krohost/reader/declaredEncoding.h"
#include "krohost/reader/tagLimits.h"
#include "krohost/text/letterCase.h"
#include "krohost/text/printable.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <span>
#include <utility>

namespace krohost::reader {

namespace {

/// Bytes that the XML library may hold back until a comment or the like ends.
constexpr std::uint64_t heldBackLimit = 8 << 20;

/// Stands between namespace and name in what the XML library calls an element.
constexpr char namespaceEnd = '\n';

bool isUtf16(std::string_view bytes) {
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

/// Follows the events of the XML library and writes down what the records want.
class Reader : private XmlEvents {
public:
    Reader(const std::filesystem::path& path, const Poll& poll) : XmlEvents{namespaceEnd}, poll_{poll} {
        document_.path = path;
        takeMoreEncodings(parser());
        XML_SetXmlDeclHandler(parser(), [](void* self, const char* version, const char* encoding, int) {
            reader(self)->declare(version, encoding);
        });
        XML_SetStartDoctypeDeclHandler(parser(), [](void* self, const char*, const char*, const char*, int) {
            reader(self)->documentTypeBegin_ = reader(self)->position().byte;
        });
        XML_SetEndDoctypeDeclHandler(parser(), [](void* self) { reader(self)->endDocumentType(); });
        XML_SetEntityDeclHandler(parser(), [](void* self, const char*, int, const char*, int, const char*, const char*,
                                              const char*, const char*) { reader(self)->checkDocumentType(); });
        XML_SetNamespaceDeclHandler(
            parser(), [](void* self, const char*, const char*) { reader(self)->beginNamespace(); },
            [](void* self, const char*) { --reader(self)->namespaceCount_; });
        XML_SetCommentHandler(parser(), [](void* self, const char*) { reader(self)->beginMarkup(); });
        XML_SetProcessingInstructionHandler(parser(),
                                            [](void* self, const char*, const char*) { reader(self)->beginMarkup(); });
        XML_SetCdataSectionHandler(
            parser(), [](void* self) { reader(self)->beginCdata(); },
            [](void* self) { reader(self)->isInCdata_ = false; });
    }

    Document read() {
        std::error_code error;
        const bool isFile = std::filesystem::is_regular_file(document_.path, error);
        std::ifstream stream;
        if (isFile)
            stream.open(document_.path, std::ios::binary);
        if (!stream.is_open()) {
            document_.malformation = {"cannot-open", "the file cannot be opened", {}};
            return std::move(document_);
        }
        document_.byteCount = std::filesystem::file_size(document_.path, error);
        feed(stream);
        placeAppendedArrays(document_);
        return std::move(document_);
    }

private:
    /// From what the library hands on.
    static Reader* reader(void* self) { return static_cast<Reader*>(static_cast<XmlEvents*>(self)); }

    void feed(std::ifstream& stream) {
        std::vector<char> block(65536);
        std::size_t keptCount = 0; // of bytes that have been read and not fed
        std::uint64_t fedCount = 0;
        for (bool isFirst = true; !isOver_; isFirst = false) {
            if (poll_)
                poll_();
            stream.read(block.data() + keptCount, static_cast<std::streamsize>(block.size() - keptCount));
            const std::size_t count = keptCount + static_cast<std::size_t>(stream.gcount());
            const bool isLast = count < block.size();
            const std::string_view bytes{block.data(), count};
            if (isFirst && isUtf16(bytes))
                return stop("utf-16", "the file is in UTF-16 (accepted: UTF-8)");
            if (isFirst)
                look(bytes);
            if (!isLast && filter_.isText(bytes) && !document_.appendedData && skipped_.takes(bytes)) {
                skipped_.add(bytes, XmlEvents::position());
                continue;
            }
            const std::size_t markCount = isFirst && isMarked_ ? mark.size() : 0;
            const std::size_t settled =
                markCount + filter_.filter(std::span{block}.subspan(markCount, count - markCount), isLast);
            skipped_.pass(bytes.substr(0, settled));
            if (!parse(bytes.substr(0, settled), isLast))
                return fail();
            if (isLast)
                return;
            fedCount += settled;
            keptCount = count - settled;
            std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(settled), keptCount, block.begin());
            if (fedCount - XmlEvents::position().byte > heldBackLimit)
                return stop("markup-too-long", fmt::format("markup is longer than {} bytes", heldBackLimit));
        }
    }

    Position position() const { return skipped_.inFile(XmlEvents::position()); }

    static constexpr std::string_view mark = "\xEF\xBB\xBF"; // of UTF-8

    /// Takes down what the file's first bytes tell.
    void look(std::string_view bytes) {
        isMarked_ = bytes.starts_with(mark);
        bytes.remove_prefix(isMarked_ ? mark.size() : 0);
        const std::size_t first = bytes.find_first_not_of(" \t\n\v\f\r");
        document_.beginsAsMarkup = first != bytes.npos && bytes[first] == '<';
    }

    void fail() {
        const std::string reason = error();
        if (!isOver_)
            stop("xml", fmt::format("the document is not well-formed XML: {}", reason));
    }

    /// Nothing further is read; without a code, because everything has been.
    void stop(const char* code = nullptr, std::string message = {}) {
        if (isOver_)
            return;
        isOver_ = true;
        endText();
        if (code)
            document_.malformation = {code, std::move(message), position()};
        stopParser();
    }

    static std::string_view localName(std::string_view name) { return name.substr(name.rfind(namespaceEnd) + 1); }

    void start(std::string_view name, const char** attributes) override {
        beginMarkup();
        if (isOver_)
            return;
        if (++depth_ > depthLimit)
            return stop("nested-too-deep", fmt::format("elements are nested more than {} deep", depthLimit));
        if (!checkTag())
            return;
        if (depth_ == 1 && localName(name) != "VTKFile")
            return stop("file-type", fmt::format("the document's first element is \"{}\" (accepted: \"VTKFile\")",
                                                 beginning(localName(name), 80)));
        Element element{std::string(localName(name)), position(), {}};
        std::size_t valueByteCount = 0; // with entities replaced
        for (; *attributes; attributes += 2) {
            element.attributes.push_back({attributes[0], attributes[1]});
            valueByteCount += element.attributes.back().value.size();
        }
        if (declaredEncoding_ && !isAscii(element))
            return stop("encoding", fmt::format("the document begins with the byte-order mark of UTF-8 and declares "
                                                "the encoding \"{}\", so that this tag can be read in two ways "
                                                "(accepted: the mark or that encoding)",
                                                *declaredEncoding_));
        if (valueByteCount > tagByteLimit)
            return stop("tag-too-long", fmt::format("entities make a tag longer than {} bytes", tagByteLimit));
        dispatch(std::move(element));
    }

    void declare(const char* version, const char* encoding) {
        if (version && version != std::string_view{"1.0"})
            stop("xml", fmt::format("XML {} is not read (accepted: 1.0)", beginning(version, 80)));
        if (isMarked_ && encoding && !equalsIgnoringCase(encoding, "UTF-8") && !equalsIgnoringCase(encoding, "UTF8"))
            declaredEncoding_ = beginning(encoding, 80);
    }

    /// From here on entities may be in text, and hold elements, which other readers would not see.
    void endDocumentType() {
        checkDocumentType();
        XML_SetDefaultHandler(parser(), [](void* self, const char* text, int byteCount) {
            reader(self)->checkText({text, static_cast<std::size_t>(byteCount)});
        });
    }

    void checkText(std::string_view text) {
        if (depth_ > 0 && !isInCdata_ && text.starts_with('&'))
            stop("reference",
                 fmt::format("the reference \"{}\" is in text, where entities are not replaced", beginning(text, 80)));
    }

    void beginCdata() {
        endText();
        isInCdata_ = true;
    }

    /// All of a document type is one tag.
    void checkDocumentType() {
        if (++entityCount_ > innerCharacterLimit || position().byte - documentTypeBegin_ > tagByteLimit)
            stop("tag-too-long", fmt::format("a document type has more than {} bytes or {} entities", tagByteLimit,
                                             innerCharacterLimit));
    }

    void beginNamespace() {
        constexpr std::size_t namespaceLimit = 100; // each makes every tag take longer
        if (++namespaceCount_ > namespaceLimit)
            stop("namespaces", fmt::format("more than {} namespaces are declared at a time", namespaceLimit));
    }

    /// False when the tag is one that other readers refuse.
    bool checkTag() {
        int offset = 0, byteCount = 0;
        const char* bytes = XML_GetInputContext(parser(), &offset, &byteCount);
        if (auto fault = tagFault({bytes ? bytes + offset : "", bytes ? tagByteCount() : 0}, tagByteCount()))
            stop(fault->first, std::move(fault->second));
        return !isOver_;
    }

    void dispatch(Element element) {
        const std::optional<Association> association = associationNamed(element.name);
        if (element.name == "AppendedData")
            beginAppendedData(std::move(element));
        else if (association_)
            addToArrays(std::move(element));
        else if (association && (isInPiece_ || association == Association::fieldData))
            beginArrays(*association, element);
        else if (isInPiece_)
            return;
        else if (element.name == "Piece")
            addPiece(std::move(element));
        else if (element.name == "VTKFile" && document_.type.empty())
            readRoot(std::move(element));
        else if (element.name == "DataSet" || element.name == "Block")
            addToCollection(std::move(element));
    }

    void addToArrays(Element element) {
        if (element.name == "DataArray")
            addArray(std::move(element));
        else if (element.name == "Array")
            document_.textArrays.push_back({std::move(element), *association_});
        else if (element.name == "InformationKey" && !arrays().empty())
            addKey(element.nameAttribute());
    }

    void beginArrays(Association association, const Element& element) {
        association_ = association;
        for (const Attribute& role : element.attributes)
            document_.remarks.insert({association, role.value, fmt::format("the role \"{}\"", role.name)});
    }

    /// Ranges follow from the values.
    void addKey(const std::string& key) {
        if (!key.ends_with("RANGE"))
            document_.remarks.insert({*association_, arrays().back().name, fmt::format("the key \"{}\"", key)});
    }

    void readRoot(Element element) {
        const auto text = [&element](const char* name) {
            const std::string* value = element.find(name);
            return value ? *value : std::string();
        };
        document_.type = text("type");
        document_.isBigEndian = equalsIgnoringCase(text("byte_order"), "BigEndian");
        document_.headerWordByteCount = equalsIgnoringCase(text("header_type"), "UInt64") ? 8 : 4;
        document_.compressor = compressorNamed(element.find("compressor"));
        document_.root = std::move(element);
    }

    void addPiece(Element element) {
        if (document_.type == "PUnstructuredGrid")
            return addMember(std::move(element), "Source");
        if (document_.isCollection())
            return; // in a multi-block file a piece only wraps data sets
        isInPiece_ = true;
        Piece& piece = document_.pieces.emplace_back();
        piece.pointCount = element.number("NumberOfPoints", 0);
        piece.cellCount = element.number("NumberOfCells", 0);
        piece.element = std::move(element);
    }

    void addToCollection(Element element) {
        if (document_.type != "vtkMultiBlockDataSet")
            document_.strays.push_back(std::move(element));
        else if (element.name == "Block")
            block_ = element.nameAttribute();
        else
            addMember(std::move(element), "file");
    }

    void addMember(Element element, const char* attribute) {
        const std::string* file = element.find(attribute);
        Member member{{}, block_, file ? *file : "", {}};
        member.path = document_.path.parent_path() / member.file;
        member.element = std::move(element);
        document_.members.push_back(std::move(member));
    }

    std::vector<Array>& arrays() {
        return association_ == Association::fieldData ? document_.fieldData
                                                      : document_.pieces.back().arrays(*association_);
    }

    void addArray(Element element) {
        Array array;
        array.association = *association_;
        array.name = element.nameAttribute();
        const std::string* type = element.find("type");
        array.type = type ? elementType(*type) : ElementType::Float32;
        array.format = formatNamed(element.find("format"));
        array.componentCount = element.number("NumberOfComponents", 1);
        if (element.find("NumberOfTuples"))
            array.declaredTupleCount = element.number("NumberOfTuples", 0);
        array.tupleCount = tupleCount(array);
        array.begin = position().byte + tagByteCount();
        array.end = array.begin;
        array.element = std::move(element);
        arrays().push_back(std::move(array));
        isInText_ = true;
    }

    std::uint64_t tupleCount(const Array& array) const {
        if (array.association == Association::fieldData)
            return array.declaredTupleCount.value_or(1);
        const Piece& piece = document_.pieces.back();
        const bool isOfPoints = array.association == Association::points || array.association == Association::pointData;
        return (isOfPoints ? piece.pointCount : piece.cellCount).value_or(0);
    }

    /// An array's text ends at the first markup after its tag.
    void endText() {
        if (std::exchange(isInText_, false))
            arrays().back().end = std::max(arrays().back().begin, position().byte);
    }

    /// A loader takes the first `_` after AppendedData, which may be within markup.
    void beginMarkup() {
        endText();
        if (document_.appendedData)
            stop("appended-prefix", "there is markup before the \"_\" of the appended data");
    }

    void beginAppendedData(Element element) {
        if (isInPiece_ || association_)
            return stop("appended-data-place", "AppendedData is within a Piece or its arrays, or these do not end "
                                               "(accepted: after all pieces)");
        const std::string* encoding = element.find("encoding");
        document_.isAppendedRaw = encoding && equalsIgnoringCase(*encoding, "raw");
        isEncodingKnown_ = document_.isAppendedRaw || (encoding && equalsIgnoringCase(*encoding, "base64"));
        document_.appendedData = std::move(element);
        // Set here alone: with a handler for text the library would not leave inline data where they are.
        XML_SetCharacterDataHandler(parser(), [](void* self, const char* text, int byteCount) {
            reader(self)->findAppendedBegin({text, static_cast<std::size_t>(byteCount)});
        });
    }

    void findAppendedBegin(std::string_view text) {
        const std::size_t underscore = text.find('_');
        if (isOver_ || underscore == text.npos)
            return;
        if (isEncodingKnown_)
            document_.appendedBegin = position().byte + underscore + 1;
        stop();
    }

    void end(std::string_view name) override {
        endText();
        if (isOver_)
            return;
        --depth_;
        name = localName(name);
        if (association_ && associationNamed(name) == association_)
            association_.reset(); // at the first end of its name; what is within counts for nothing else
        else if (!association_ && name == "Piece")
            isInPiece_ = false;
        else if (!association_ && name == "Block")
            block_.clear();
        if (name == "AppendedData")
            stop("appended-prefix", "the appended data lack the \"_\" that is before them");
        else if (depth_ == 0)
            stop(); // what comes after it is nobody's business
    }

    const Poll& poll_;
    TagFilter filter_;
    SkippedText skipped_;
    Document document_;
    std::optional<Association> association_;
    std::string block_;
    std::size_t depth_ = 0;
    std::size_t namespaceCount_ = 0; // of those in force
    std::uint64_t documentTypeBegin_ = 0;
    std::ptrdiff_t entityCount_ = 0;              // that the document declares
    bool isInPiece_ = false;                      // within a Piece
    bool isInText_ = false;                       // of the array added last
    bool isEncodingKnown_ = false;                // that of the appended data
    std::optional<std::string> declaredEncoding_; // that contradicts the mark
    bool isMarked_ = false;
    bool isInCdata_ = false;
    bool isOver_ = false;
};

} // namespace

Document readDocument(const std::filesystem::path& path, const Poll& poll) {
    return Reader{path, poll}.read();
}

} // namespace krohost::reader
