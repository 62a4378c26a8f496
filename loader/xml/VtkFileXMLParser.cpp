#include "loader/xml/VtkFileXMLParser.h"

#include "loader/xml/equalsIgnoringCase.h"
#include "loader/xml/messages.h"

#include "loader/sdk/exceptions.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

namespace veltra::vtkfile {

namespace {

// Writers disagree on the case of this attribute, even within one file.
const XMLParser::Names nameSpellings{"name", "Name"};

constexpr std::array<std::string_view, 3> supportedDatasetTypes{"UnstructuredGrid", "PUnstructuredGrid",
                                                                "vtkMultiBlockDataSet"};

struct FormatName {
    std::string_view name;
    DataArrayFormat format;
};
constexpr std::array<FormatName, 3> formatNames{
    {{"ascii", DataArrayFormat::Ascii}, {"appended", DataArrayFormat::Appended}, {"binary", DataArrayFormat::Binary}}};

DataArrayFormat arrayFormat(const std::string& value) {
    const auto found = std::find_if(formatNames.begin(), formatNames.end(),
                                    [&](const FormatName& entry) { return entry.name == value; });
    if (found == formatNames.end())
        throw IOException(unsupportedArrayFormat(value));
    return found->format;
}

DataArrayType arrayType(const std::string& value) {
    const auto found = std::find_if(elementTypes.begin(), elementTypes.end(),
                                    [&](const ElementType& entry) { return entry.name == value; });
    if (found == elementTypes.end())
        throw IOException(unsupportedArrayType(value));
    return found->type;
}

Compressor compressorNamed(const std::optional<std::string>& value) {
    if (!value)
        return Compressor::None;
    if (!equalsIgnoringCase(*value, "vtkZLibDataCompressor"))
        throw IOException(badCompressor(*value));
    return Compressor::ZLib;
}

/// A value of an attribute that selects between two settings, or the first of them when the value is absent.
bool isSecondOf(const std::optional<std::string>& value, const char* first, const char* second,
                std::string (*message)(const std::string&)) {
    if (!value || equalsIgnoringCase(*value, first))
        return false;
    if (!equalsIgnoringCase(*value, second))
        throw IOException(message(*value));
    return true;
}

// A part that is no number passes as std::stoi reports it, in the words that users' scripts know. What is beyond any
// version there will be stays the newest.
std::uint16_t versionPart(const std::string& digits) {
    constexpr int newest = std::numeric_limits<std::uint16_t>::max();
    if (digits.empty())
        throw std::invalid_argument("invalid stoi argument");
    try {
        return static_cast<std::uint16_t>(std::min(std::stoi(digits), newest));
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stoi argument out of range");
    }
}

FileVersion parseVersion(const std::string& text) {
    if (text.find_first_not_of("0123456789.") != text.npos)
        throw IOException(badVersion(text));
    std::array<std::uint16_t, 3> parts{};
    std::size_t begin = 0;
    for (std::uint16_t& part : parts) {
        const std::size_t end = std::min(text.find('.', begin), text.size());
        part = versionPart(text.substr(begin, end - begin));
        if (end == text.size())
            break;
        begin = end + 1;
    }
    return {parts[0], parts[1], parts[2]};
}

} // namespace

/// The element that arrays stand in, and what follows for them.
struct VtkFileXMLParser::ArrayParent {
    std::string_view element;
    std::uint64_t tupleCount;
    ValueLocation_e valueLocation;
};

const VtkFileXMLParser::ArrayParent VtkFileXMLParser::fieldDataParent{"FieldData", 1, ValueLocation_Nodal};

VtkFileXMLParser::VtkFileXMLParser(std::shared_ptr<const boost::filesystem::path> path,
                                   std::unique_ptr<ParseProgress> progress)
    : path_(std::move(path)), progress_(std::move(progress)), xml_(*path_) {}

void VtkFileXMLParser::parse() {
    if (!xml_.open())
        throw IOException(openFailed);
    keepGoing_ = progress_->report("Parsing XML file...", 0);
    while (keepGoing_ && !appendedDataFound_ && xml_.hasMoreInput()) {
        if (!xml_.readNext())
            throw IOException(xml_.errorString());
        if (!rootFound_ && xml_.isStartElement())
            checkRoot();
        dispatch();
    }
}

void VtkFileXMLParser::checkRoot() {
    if (!xml_.isStartElement("VTKFile"))
        throw IOException(notAVtkFile(xml_.elementName()));
    rootFound_ = true;
}

void VtkFileXMLParser::dispatch() {
    if (xml_.isStartElement("VTKFile") && header_.type.empty()) // the first is the document's
        parseHeader();
    else if (xml_.isStartElement("DataSet"))
        parseDataSet();
    else if (xml_.isStartElement("Block"))
        parseBlock();
    else if (xml_.isEndElement("Block"))
        blockName_.clear();
    else if (xml_.isStartElement("FieldData"))
        parseArrays(fieldDataParent, fieldData_);
    else if (xml_.isStartElement("Piece"))
        parsePieceElement();
    else if (xml_.isStartElement("AppendedData"))
        parseAppendedData();
}

void VtkFileXMLParser::parseHeader() {
    // The presence of a title counts, not its text: the title is then one byte.
    if (xml_.hasAttribute("title"))
        header_.title = std::string(1, '\x01');
    else
        header_.title = xml_.getOptionalAttribute(nameSpellings);

    header_.type = xml_.getAttribute("type");
    if (const auto version = optionalAttribute("version"))
        header_.version = parseVersion(*version);
    header_.bigEndian = isSecondOf(optionalAttribute("byte_order"), "LittleEndian", "BigEndian", badByteOrder);
    header_.compressor = compressorNamed(optionalAttribute("compressor"));
    header_.headerSize = isSecondOf(optionalAttribute("header_type"), "UInt32", "UInt64", badHeaderType) ? 8 : 4;
    if (std::find(supportedDatasetTypes.begin(), supportedDatasetTypes.end(), header_.type) ==
        supportedDatasetTypes.end())
        throw IOException(unsupportedDatasetType(header_.type));
    header_.isParallel = header_.type == "PUnstructuredGrid";
    header_.isMultiBlock = header_.type == "vtkMultiBlockDataSet";
}

void VtkFileXMLParser::parsePieceElement() {
    if (header_.isParallel) {
        if (!xml_.hasAttribute("Source"))
            throw IOException(pieceWithoutSource);
        addReference(xml_.getAttribute("Source"));
    } else if (!header_.isMultiBlock) { // there a piece only wraps data sets
        parsePiece();
    }
}

void VtkFileXMLParser::parsePiece() {
    Piece piece;
    piece.name = xml_.hasAnyAttribute(nameSpellings) ? xml_.getAnyAttribute(nameSpellings) : fileStem();
    piece.numberOfPoints = count("NumberOfPoints");
    piece.numberOfCells = count("NumberOfCells");
    piece.points.file = path_;
    piece.points.name = std::make_shared<const std::string>();

    std::vector<DataArray> points;
    while (advanceWithin("Piece")) {
        if (xml_.isStartElement("Points"))
            parseArrays({"Points", piece.numberOfPoints, ValueLocation_Nodal}, points);
        else if (xml_.isStartElement("Cells"))
            parseArrays({"Cells", piece.numberOfCells, ValueLocation_CellCentered}, piece.cells);
        else if (xml_.isStartElement("PointData"))
            parseArrays({"PointData", piece.numberOfPoints, ValueLocation_Nodal}, piece.variables);
        else if (xml_.isStartElement("CellData"))
            parseArrays({"CellData", piece.numberOfCells, ValueLocation_CellCentered}, piece.variables);
        else if (xml_.isStartElement("FieldData"))
            parseArrays(fieldDataParent, fieldData_);
    }
    if (!points.empty())
        piece.points = std::move(points.front());
    pieces_.push_back(std::move(piece));
}

void VtkFileXMLParser::parseArrays(const ArrayParent& parent, std::vector<DataArray>& arrays) {
    while (advanceWithin(parent.element)) {
        if (!xml_.isStartElement("DataArray"))
            continue;
        if (parent.element == "Points" && !arrays.empty())
            throw IOException(tooManyPointsArrays);
        if (std::optional<DataArray> array = describeArray(parent)) {
            locateData(*array, parent);
            arrays.push_back(std::move(*array));
        }
        reportProgress(parent.element);
    }
}

/// What the attributes say. None for field data that are no array the loader knows: nobody misses a remark.
std::optional<DataArray> VtkFileXMLParser::describeArray(const ArrayParent& parent) const {
    try {
        return arrayAttributes(parent);
    } catch (const ExceptionBase&) {
        if (parent.element != fieldDataParent.element)
            throw;
        return std::nullopt;
    }
}

DataArray VtkFileXMLParser::arrayAttributes(const ArrayParent& parent) const {
    DataArray array;
    array.file = path_;
    array.format = arrayFormat(optionalAttribute("format").value_or("ascii"));
    array.type = arrayType(optionalAttribute("type").value_or("Float32"));
    array.name = std::make_shared<const std::string>(xml_.getOptionalAttribute(nameSpellings));
    array.numberOfTuples = parent.tupleCount;
    array.numberOfComponents = componentCount(*array.name);
    array.valueLocation = parent.valueLocation;
    array.compressor = header_.compressor;
    array.bigEndian = header_.bigEndian;
    array.headerSize = header_.headerSize;
    if (array.format == DataArrayFormat::Appended)
        array.offset = count("offset");
    return array;
}

std::uint16_t VtkFileXMLParser::componentCount(const std::string& arrayName) const {
    constexpr const char* attribute = "NumberOfComponents";
    try {
        return xml_.getAttributeAs<std::uint16_t>(attribute, 1);
    } catch (const bad_numeric_cast&) {
        throw IOException(unsupportedComponentCount(arrayName, xml_.getAttribute(attribute)));
    }
}

/// A number of 64 bits; 0 where there is none.
std::uint64_t VtkFileXMLParser::count(std::string_view attribute) const {
    try {
        return xml_.getAttributeAs<std::uint64_t>(attribute, 0);
    } catch (const bad_numeric_cast& error) {
        throw IOException(attributeOutOfRange(attribute, error.what()));
    }
}

void VtkFileXMLParser::locateData(DataArray& array, const ArrayParent& parent) {
    if (array.format != DataArrayFormat::Appended && !locateInlineData(array) &&
        parent.element == fieldDataParent.element)
        array.numberOfTuples = 0; // no piece says how many values there should be
}

/// Finds where an array's text is; false when there is none.
bool VtkFileXMLParser::locateInlineData(DataArray& array) {
    array.offset = xml_.position();
    if (xml_.isEmptyElement())
        return false;
    xml_.skipWhitespace();
    array.offset = xml_.position();
    if (!xml_.feedThrough('<'))
        throw IOException(openingTagMissing);
    const std::uint64_t length = xml_.position() - array.offset;
    if (array.format == DataArrayFormat::Ascii)
        array.length = length;
    return length > 0;
}

void VtkFileXMLParser::parseAppendedData() {
    const std::string encoding = xml_.getAttribute("encoding");
    const bool raw = equalsIgnoringCase(encoding, "raw");
    if (!raw && !equalsIgnoringCase(encoding, "base64"))
        throw IOException(badAppendedEncoding(encoding));
    if (xml_.isEmptyElement() || !xml_.feedThrough('_'))
        throw IOException(appendedPrefixMissing);

    const std::uint64_t start = xml_.position();
    forEachArray([&](DataArray& array) {
        array.appendedRaw = raw;
        // A sum that wraps would point back into the file; the offset alone is refused when the array is read.
        std::uint64_t position = 0;
        if (array.format == DataArrayFormat::Appended && !__builtin_add_overflow(array.offset, start, &position))
            array.offset = position;
    });
    appendedDataFound_ = true; // what follows is not XML
}

void VtkFileXMLParser::parseDataSet() {
    if (!header_.isMultiBlock)
        throw IOException(dataSetOutsideMultiBlock);
    if (!xml_.hasAttribute("file"))
        throw IOException(dataSetWithoutFile);
    addReference(xml_.getAttribute("file"));
    dataSetNames_.push_back(
        {blockName_, xml_.hasAnyAttribute(nameSpellings) ? xml_.getAnyAttribute(nameSpellings) : fileStem()});
}

void VtkFileXMLParser::parseBlock() {
    if (!header_.isMultiBlock)
        throw IOException(blockOutsideMultiBlock);
    blockName_ = xml_.getOptionalAttribute(nameSpellings);
}

void VtkFileXMLParser::addReference(const std::string& reference) {
    // Joining to an absolute path leaves that as it is.
    const boost::filesystem::path path(reference);
    referencedFiles_.push_back(
        std::make_shared<const boost::filesystem::path>(path.is_absolute() ? path : path_->parent_path() / path));
}

/// Goes to the next token within an element; false at its end and when parsing is over.
bool VtkFileXMLParser::advanceWithin(std::string_view element) {
    if (!keepGoing_ || appendedDataFound_)
        return false;
    if (!xml_.readNext())
        throw IOException(xml_.errorString());
    return !xml_.isEndElement(element);
}

void VtkFileXMLParser::reportProgress(std::string_view element) {
    const std::uint64_t position = xml_.position();
    keepGoing_ = progress_->report("Parsing " + std::string(element) + "...",
                                   position - std::exchange(reportedPosition_, position));
}

std::optional<std::string> VtkFileXMLParser::optionalAttribute(std::string_view name) const {
    return xml_.hasAttribute(name) ? std::optional(xml_.getAttribute(name)) : std::nullopt;
}

std::string VtkFileXMLParser::fileStem() const {
    return path_->stem().string();
}

template <class Visit>
void VtkFileXMLParser::forEachArray(Visit visit) {
    std::for_each(fieldData_.begin(), fieldData_.end(), visit);
    for (Piece& piece : pieces_) {
        visit(piece.points);
        std::for_each(piece.cells.begin(), piece.cells.end(), visit);
        std::for_each(piece.variables.begin(), piece.variables.end(), visit);
    }
}

} // namespace veltra::vtkfile
