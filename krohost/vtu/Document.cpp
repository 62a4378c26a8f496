#include "krohost/vtu/Document.h"

#include <algorithm>
#include <charconv>

namespace krohost::vtu {

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
    std::uint64_t number = 0;
    const auto result = std::from_chars(begin, end, number);
    return result.ec == std::errc{} && result.ptr == end ? std::optional{number} : std::nullopt;
}

std::string Element::nameAttribute() const {
    for (const char* spelling : {"name", "Name"})
        if (const std::string* value = find(spelling))
            return *value;
    return {};
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

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char one, char other) { return lower(one) == lower(other); });
}

} // namespace krohost::vtu
