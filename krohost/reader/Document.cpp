#include "krohost/reader/Document.h"

#include "krohost/text/letterCase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace krohost::reader {

const std::string* Element::find(std::string_view attribute) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [attribute](const Attribute& entry) { return entry.name == attribute; });
    return found == attributes.end() ? nullptr : &found->value;
}

std::optional<std::uint64_t> Element::number(std::string_view attribute, std::uint64_t absent) const {
    constexpr const char* blanks = " \t\n\v\f\r";
    const std::string* value = find(attribute);
    if (!value || value->find_first_not_of(blanks) == value->npos)
        return absent;
    const char* begin = value->data() + value->find_first_not_of(blanks);
    const char* end = value->data() + value->find_last_not_of(blanks) + 1;
    const bool isSigned = end - begin > 1 && (*begin == '+' || *begin == '-');
    std::uint64_t number = 0;
    const auto result = std::from_chars(begin + (isSigned ? 1 : 0), end, number);
    const bool isNumber = result.ec == std::errc{} && result.ptr == end && (*begin != '-' || number == 0);
    return isNumber ? std::optional{number} : std::nullopt;
}

std::string Element::nameAttribute() const {
    for (const char* spelling : {"name", "Name"})
        if (const std::string* value = find(spelling))
            return *value;
    return {};
}

std::optional<Association> associationNamed(std::string_view element) {
    static constexpr auto names =
        std::to_array<std::pair<std::string_view, Association>>({{"Points", Association::points},
                                                                 {"Cells", Association::cells},
                                                                 {"PointData", Association::pointData},
                                                                 {"CellData", Association::cellData},
                                                                 {"FieldData", Association::fieldData}});
    const auto found =
        std::find_if(names.begin(), names.end(), [&](const auto& entry) { return entry.first == element; });
    return found == names.end() ? std::nullopt : std::optional{found->second};
}

std::optional<Format> formatNamed(const std::string* word) {
    if (!word || *word == "ascii")
        return Format::ascii;
    if (*word == "binary")
        return Format::base64;
    return *word == "appended" ? std::optional{Format::appended} : std::nullopt;
}

Compressor compressorNamed(const std::string* word) {
    static constexpr auto names =
        std::to_array<std::pair<std::string_view, Compressor>>({{"vtkZLibDataCompressor", Compressor::zlib},
                                                                {"vtkLZ4DataCompressor", Compressor::lz4},
                                                                {"vtkLZMADataCompressor", Compressor::lzma}});
    if (!word)
        return Compressor::none;
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const auto& entry) { return equalsIgnoringCase(*word, entry.first); });
    return found == names.end() ? Compressor::unknown : found->second;
}

std::vector<Array>& Piece::arrays(Association association) {
    switch (association) {
    case Association::points:
        return points;
    case Association::cells:
        return cells;
    case Association::pointData:
        return pointData;
    default:
        return cellData;
    }
}

const Array* Piece::cellArray(std::string_view name) const {
    const auto found = std::find_if(cells.begin(), cells.end(),
                                    [name](const Array& array) { return equalsIgnoringCase(array.name, name); });
    return found == cells.end() ? nullptr : &*found;
}

bool Document::mayNameMore() const {
    const bool isOther = !beginsAsMarkup || (malformation && malformation->code == "file-type");
    return malformation && !isOther && (root.name.empty() || isCollection());
}

std::vector<const Array*> Document::arrays() const {
    std::vector<const Array*> all;
    const auto append = [&all](const std::vector<Array>& arrays) {
        for (const Array& array : arrays)
            all.push_back(&array);
    };
    for (const Piece& piece : pieces)
        for (const auto* arrays : {&piece.points, &piece.cells, &piece.pointData, &piece.cellData})
            append(*arrays);
    append(fieldData);
    return all;
}

void placeAppendedArrays(Document& document) {
    const std::uint64_t begin = document.appendedBegin.value_or(document.byteCount);
    const auto place = [&](Array& array) {
        if (array.format != Format::appended)
            return;
        const std::uint64_t offset = array.element.number("offset", 0).value_or(UINT64_MAX);
        array.begin = offset > UINT64_MAX - begin ? UINT64_MAX : begin + offset;
        array.end = std::max(array.begin, document.byteCount);
    };
    for (Piece& piece : document.pieces)
        for (auto* arrays : {&piece.points, &piece.cells, &piece.pointData, &piece.cellData})
            std::for_each(arrays->begin(), arrays->end(), place);
    std::for_each(document.fieldData.begin(), document.fieldData.end(), place);
}

} // namespace krohost::reader
