#include "krohost/write/zoneFiles.h"

#include "krohost/vtu/Document.h"
#include "krohost/write/Loss.h"

#include <algorithm>
#include <utility>

namespace krohost::write {

using vtu::Document;

namespace {

bool isEmpty(const Document& document) {
    const bool hasNone = std::all_of(document.pieces.begin(), document.pieces.end(), [](const vtu::Piece& piece) {
        return piece.pointCount.value_or(0) == 0 && piece.cellCount.value_or(0) == 0;
    });
    return hasNone && !document.malformation;
}

} // namespace

ZoneFiles zoneFiles(const std::vector<std::filesystem::path>& inputs, std::size_t zoneCount) {
    ZoneFiles result;
    bool isWhole = true;
    for (const std::filesystem::path& input : inputs) {
        const Document document = vtu::readDocument(input, pollInterrupt);
        std::vector<std::filesystem::path> candidates{input};
        if (document.mayNameMore())
            isWhole = false;
        else if (document.isCollection())
            candidates.clear();
        for (const vtu::Member& member : document.members)
            candidates.push_back(member.path);
        for (std::filesystem::path& file : candidates)
            if (!isEmpty(vtu::readDocument(file, pollInterrupt))) {
                result.files.push_back(std::move(file));
                result.collections.push_back(input);
            }
    }
    result.areKnown = isWhole && result.files.size() == zoneCount;
    return result;
}

} // namespace krohost::write
