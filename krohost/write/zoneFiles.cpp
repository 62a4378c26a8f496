#include "krohost/write/zoneFiles.h"

#include "krohost/vtu/Document.h"
#include "krohost/write/Loss.h"

#include <algorithm>
#include <iterator>

namespace krohost::write {

using vtu::Document;

namespace {

bool isEmpty(const Document& document) {
    return std::all_of(document.pieces.begin(), document.pieces.end(), [](const vtu::Piece& piece) {
        return piece.pointCount.value_or(0) == 0 && piece.cellCount.value_or(0) == 0;
    });
}

} // namespace

std::vector<std::filesystem::path> zoneFiles(const std::vector<std::filesystem::path>& inputs) {
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::path& input : inputs) {
        const Document document = vtu::readDocument(input, pollInterrupt);
        std::vector<std::filesystem::path> candidates{input};
        if (document.isCollection()) {
            candidates.clear();
            for (const vtu::Member& member : document.members)
                candidates.push_back(member.path);
        }
        std::copy_if(
            candidates.begin(), candidates.end(), std::back_inserter(files),
            [](const std::filesystem::path& file) { return !isEmpty(vtu::readDocument(file, pollInterrupt)); });
    }
    return files;
}

} // namespace krohost::write
