#include "krohost/convert/zoneFiles.h"

#include "krohost/convert/Loss.h"
#include "krohost/reader/Document.h"

#include <algorithm>
#include <utility>

namespace krohost::convert {

using reader::Document;

namespace {

bool isEmpty(const Document& document) {
    const bool hasNone = std::all_of(document.pieces.begin(), document.pieces.end(), [](const reader::Piece& piece) {
        return piece.pointCount.value_or(0) == 0 && piece.cellCount.value_or(0) == 0;
    });
    return hasNone && !document.malformation;
}

} // namespace

ZoneFiles zoneFiles(const std::vector<std::filesystem::path>& inputs, std::size_t zoneCount) {
    ZoneFiles result;
    bool isWhole = true;
    for (const std::filesystem::path& input : inputs) {
        const Document document = reader::readDocument(input, pollInterrupt);
        std::vector<std::filesystem::path> candidates{input};
        if (document.mayNameMore())
            isWhole = false;
        else if (document.isCollection())
            candidates.clear();
        for (const reader::Member& member : document.members)
            candidates.push_back(member.path);
        for (std::filesystem::path& file : candidates)
            if (!isEmpty(reader::readDocument(file, pollInterrupt))) {
                result.files.push_back(std::move(file));
                result.collections.push_back(input);
            }
    }
    result.areKnown = isWhole && result.files.size() == zoneCount;
    return result;
}

} // namespace krohost::convert
