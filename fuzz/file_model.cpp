// The records of a file. The places of inline texts are compared with what a search of the file finds.

#include "fuzz/fuzz.h"

#include "loader/xml/VtkFileXMLParser.h"

#include "loader/sdk/exceptions.h"

#include <stdexcept>

namespace {

using namespace veltra::vtkfile;

struct NoProgress final : ParseProgress {
    bool report(const std::string&, std::uint64_t) override { return true; }
};

std::size_t occurrences(std::string_view text, std::string_view word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

void checkPlace(std::string_view text, const DataArray& array) {
    if (array.format == DataArrayFormat::Appended)
        return;
    fuzz::require(array.offset <= text.size(), "inline text begins in the file");
    const std::size_t before = text.substr(0, array.offset).find_last_not_of(" \t\n\v\f\r");
    fuzz::require(before != text.npos && text[before] == '>', "inline text begins after its tag");
    if (array.length == 0)
        return;
    fuzz::require(text.find('<', array.offset) == array.offset + array.length, "inline text ends where a tag begins");
}

std::size_t checkPlaces(std::string_view text, const std::vector<DataArray>& arrays) {
    for (const DataArray& array : arrays)
        checkPlace(text, array);
    return arrays.size();
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::string_view text = asText(input);
    VtkFileXMLParser parser(std::make_shared<const boost::filesystem::path>(scratchFile("model.vtu", text).string()),
                            std::make_unique<NoProgress>());
    try {
        parser.parse();
    } catch (const veltra::ExceptionBase& failure) {
        return sentence(failure.what());
    } catch (const std::logic_error&) {
        return "version";
    }
    std::size_t arrayCount = checkPlaces(text, parser.fieldData());
    for (const Piece& piece : parser.pieces()) {
        arrayCount += checkPlaces(text, piece.cells) + checkPlaces(text, piece.variables);
        if (piece.points.numberOfComponents > 0 && piece.points.valueLocation != ValueLocation_None)
            arrayCount += checkPlaces(text, {piece.points});
    }
    require(arrayCount <= occurrences(text, "DataArray"), "each array is in the file");
    require(parser.referencedFiles().empty() || parser.header().isParallel || parser.header().isMultiBlock,
            "only collections refer to files");
    require(parser.dataSetNames().empty() || parser.dataSetNames().size() == parser.referencedFiles().size(),
            "each data set of a multi-block file has a name");
    return parser.header().type + (arrayCount > 0 ? " with arrays" : "") +
           (parser.referencedFiles().empty() ? "" : " with files");
}
