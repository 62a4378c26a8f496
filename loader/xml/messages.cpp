#include "loader/xml/messages.h"

#include "loader/sdk/format.h"
#include "loader/sdk/messages.h"

#include <limits>

namespace veltra::vtkfile {

namespace {

std::string quoted(const char* text, const std::string& value) {
    return (format(text) % excerpt(value)).str();
}

} // namespace

// Without a namespace the sentence begins with a blank.
std::string missingAttribute(const std::string& namespaceUri, std::string_view name) {
    return (format("%1% \"%2%\" attribute is missing") % excerpt(namespaceUri) % name).str();
}

std::string markupTooLong(std::size_t byteLimit) {
    return (format("The XML data is ill formed. A tag is longer than %1% bytes") % byteLimit).str();
}

std::string tooManyInTag(std::size_t limit, char character) {
    return (format("The XML data is ill formed. A tag holds more than %1% \"%2%\" characters") % limit % character)
        .str();
}

std::string expandedTooFar(std::size_t limit) {
    return (format("The XML data is ill formed. The entities in a tag make its attributes longer than %1% characters") %
            limit)
        .str();
}

std::string tooManyNamespaces(std::size_t limit) {
    return (format("The XML data is ill formed. More than %1% namespaces are declared at a time") % limit).str();
}

std::string notUtf8(std::uint8_t byte, std::uint64_t position) {
    return (format("The XML data is ill formed. Byte 0x%1$02X at position %2% is not valid in UTF-8, which is the "
                   "document's encoding") %
            unsigned{byte} % position)
        .str();
}

std::string twoEncodings(const std::string& declared, std::uint8_t byte, std::uint64_t position) {
    return (format("The XML data is ill formed. The document begins with the byte-order mark of UTF-8 and declares the "
                   "encoding \"%1%\", so that byte 0x%2$02X at position %3% can be read in two ways") %
            excerpt(declared) % unsigned{byte} % position)
        .str();
}

std::string referenceInText(const std::string& reference, std::uint64_t position) {
    return (format(
                "The reference \"%1%\" at position %2% is in text, where entities that the document declares are not "
                "replaced") %
            excerpt(reference) % position)
        .str();
}

std::string notAVtkFile(const std::string& element) {
    return quoted("The document's first element is \"%1%\"; expected it to be \"VTKFile\"", element);
}

std::string nestedTooDeep(std::size_t depthLimit) {
    return (format("The XML data is ill formed. Elements are nested more than %1% deep") % depthLimit).str();
}

std::string unsupportedDatasetType(const std::string& value) {
    return quoted("VTKFile type \"%1%\" is not yet supported", value);
}

std::string badVersion(const std::string& value) {
    return quoted("VTKFile's version \"%1%\" is not a valid version number; expected it to be \"[1-9].[0-9].[0-9]\"",
                  value);
}

std::string badByteOrder(const std::string& value) {
    return quoted("VTKFile's byte_order \"%1%\" is unknown; expected it to be \"LittleEndian\" (default if missing) or "
                  "\"BigEndian\"",
                  value);
}

std::string badCompressor(const std::string& value) {
    return quoted("VTKFile's compressor \"%1%\" is unknown; expected it to be missing (meaning no compression) or "
                  "\"vtkZLibDataCompressor\"",
                  value);
}

std::string badHeaderType(const std::string& value) {
    return quoted("VTKFile's header_type \"%1%\" is unknown; expected it to be \"UInt32\" (default if missing) or "
                  "\"UInt64\"",
                  value);
}

std::string unsupportedArrayFormat(const std::string& value) {
    return quoted("DataArray format \"%1%\" is not yet supported", value);
}

std::string unsupportedArrayType(const std::string& value) {
    return quoted("DataArray type \"%1%\" is not yet supported", value);
}

std::string badAppendedEncoding(const std::string& value) {
    return quoted("AppendedData's encoding \"%1%\" is unknown; expected \"raw\" or \"base64\"", value);
}

std::string unsupportedComponentCount(const std::string& arrayName, const std::string& value) {
    const std::string most = std::to_string(std::numeric_limits<short>::max());
    const bool isNegative = value.find('-') != value.npos;
    return (format("DataArray \"%1%\" has %2% components, %3%") % excerpt(arrayName) % excerpt(value, 80) %
            (isNegative ? "fewer than none" : "more than the " + most + " that are supported"))
        .str();
}

std::string attributeOutOfRange(std::string_view attribute, const std::string& error) {
    return (format("The value of the attribute \"%1%\" cannot be used: %2%") % attribute % error).str();
}

} // namespace veltra::vtkfile
