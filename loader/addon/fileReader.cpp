#include "loader/addon/fileReader.h"

#include "loader/addon/messages.h"

#include "loader/mesh/fieldData.h"
#include "loader/output/solutionTimes.h"

#include "loader/xml/VtkFileXMLParser.h"

#include "loader/sdk/exceptions.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>

namespace veltra::vtkfile {

namespace {

using Path = std::shared_ptr<const boost::filesystem::path>;

/// How many of a collection's field data its members have too.
constexpr std::size_t inheritedPairLimit = 100;

/// Shows the parsing of a file as a task of as many steps as the file has bytes.
class ParseReporter final : public ParseProgress {
public:
    ParseReporter(const boost::filesystem::path& path, ui::TaskProgress& progress) : progress_(progress) {
        boost::system::error_code error;
        const std::uintmax_t byteCount = boost::filesystem::file_size(path, error);
        progress_.setStepCount(error ? 1 : std::max<std::uintmax_t>(byteCount, 1));
        progress_.setText("Opening file..."); // so that a file that does not open leaves its name on the display
    }

    bool report(const std::string& message, std::uint64_t byteCount) override {
        try {
            progress_.setText(message);
            progress_.advance(byteCount);
            return true;
        } catch (const InterruptedException&) {
            return false;
        }
    }

private:
    ui::TaskProgress& progress_;
};

void parse(VtkFileXMLParser& parser) {
    parser.parse();
    if (!parser.isComplete())
        throw InterruptedException();
}

/// Adds a file's own field data to those that its collection gives it. They replace what has the same name, but not the
/// time: there the collection's takes precedence, as it does for the solution time.
void addTexts(std::vector<NameValuePair>& texts, const std::vector<NameValuePair>& own) {
    const std::size_t givenCount = texts.size();
    const auto isGiven = [&](const std::string& name) {
        return std::any_of(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(givenCount),
                           [&](const NameValuePair& given) { return given.first == name; });
    };
    for (const NameValuePair& pair : own)
        if (!isTimeName(pair.first) || !isGiven(pair.first))
            texts.push_back(pair);
}

/// The records of one file as a zone, and its field data as those of the load's current file.
void addZone(const Path& path, VtkFileXMLParser& parser, LoadedFiles& loaded, Zone zone) {
    const std::vector<NameValuePair> fieldData = readFieldData(parser.fieldData());
    LoadedFile& file = loaded.files.back();
    file.fieldData.insert(file.fieldData.end(), fieldData.begin(), fieldData.end());
    addTexts(zone.auxiliaryData, fieldData);
    zone.pieces = parser.takePieces();
    if (zone.pieces.empty())
        return;
    zone.file = path;
    zone.version = parser.header().version;
    zone.fileIndex = loaded.files.size() - 1;
    loaded.zones.push_back(std::move(zone));
}

void readMember(const Path& path, ui::TaskProgress& progress, LoadedFiles& loaded, Zone zone) {
    VtkFileXMLParser parser(path, std::make_unique<ParseReporter>(*path, progress));
    parse(parser);
    if (!parser.referencedFiles().empty())
        throw IOException(nestedCollections);
    addZone(path, parser, loaded, std::move(zone));
}

/// The zone that a collection's member becomes, as far as the collection says.
Zone namedZone(const VtkFileXMLParser& collection, std::size_t memberIndex,
               const std::vector<NameValuePair>& collectionFieldData) {
    Zone zone;
    zone.auxiliaryData = collectionFieldData;
    if (memberIndex < collection.dataSetNames().size()) {
        const DataSetName& name = collection.dataSetNames()[memberIndex];
        zone.name = name.dataSet;
        if (!name.block.empty())
            zone.auxiliaryData.emplace_back("Block.name", name.block);
    }
    return zone;
}

} // namespace

void readFile(const Path& path, ui::TaskProgress& progress, LoadedFiles& loaded) {
    loaded.files.push_back({path, {}});
    VtkFileXMLParser parser(path, std::make_unique<ParseReporter>(*path, progress));
    parse(parser);
    addZone(path, parser, loaded, {});

    // Every member gets a copy, so that the number is bounded.
    std::vector<NameValuePair> fieldData = loaded.files.back().fieldData;
    fieldData.resize(std::min(fieldData.size(), inheritedPairLimit));
    const std::vector<Path>& members = parser.referencedFiles();
    progress.setStepCount(members.size());
    for (std::size_t index = 0; index < members.size(); ++index)
        readMember(members[index], *progress.openSubTask(members[index]->string()), loaded,
                   namedZone(parser, index, fieldData));
}

} // namespace veltra::vtkfile
