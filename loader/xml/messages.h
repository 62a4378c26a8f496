/// The sentences that a user reads about a malformed document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace veltra::vtkfile {

std::string missingAttribute(const std::string& namespaceUri, std::string_view name);
std::string markupTooLong(std::size_t byteLimit);
std::string tooManyInTag(std::size_t limit, char character);
std::string expandedTooFar(std::size_t limit);
std::string tooManyNamespaces(std::size_t limit);
std::string notUtf8(std::uint8_t byte, std::uint64_t position);
std::string twoEncodings(const std::string& declared, std::uint8_t byte, std::uint64_t position);
std::string referenceInText(const std::string& reference, std::uint64_t position);
std::string notAVtkFile(const std::string& element);
std::string nestedTooDeep(std::size_t depthLimit);
std::string unsupportedDatasetType(const std::string& value);
std::string badVersion(const std::string& value);
std::string badByteOrder(const std::string& value);
std::string badCompressor(const std::string& value);
std::string badHeaderType(const std::string& value);
std::string unsupportedArrayFormat(const std::string& value);
std::string unsupportedArrayType(const std::string& value);
std::string badAppendedEncoding(const std::string& value);
std::string unsupportedComponentCount(const std::string& arrayName, const std::string& value);
/// `error` names the value and the range.
std::string attributeOutOfRange(std::string_view attribute, const std::string& error);

inline constexpr const char* utf16Unsupported = "UTF-16 encoding is not currently supported";
inline constexpr const char* openFailed = "Failed to open VTK file for reading";
inline constexpr const char* openingTagMissing = "The XML data is ill formed. Unable to locate opening tag";
inline constexpr const char* tooManyPointsArrays = "The Points element expects only 1 DataArray elements";
inline constexpr const char* appendedPrefixMissing =
    "AppendedData section is missing the required \"_\" data prefix to identify the start of the data";
inline constexpr const char* dataSetOutsideMultiBlock = "DataSet found in a non multi-block VTK file";
inline constexpr const char* blockOutsideMultiBlock = "Block found in a non multi-block VTK file";
// Both misspellings are known to users' scripts, which match the whole sentence.
inline constexpr const char* dataSetWithoutFile =
    "MutliBlock file's DataSet expected an attributed named \"file\" but none was found";
inline constexpr const char* pieceWithoutSource =
    "Parallel file's Piece expected an attributed named \"Source\" but none was found";

} // namespace veltra::vtkfile
