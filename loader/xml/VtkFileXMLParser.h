#pragma once

#include "loader/xml/FileHeader.h"
#include "loader/xml/ParseProgress.h"
#include "loader/xml/Piece.h"
#include "loader/xml/XMLParser.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltra::vtkfile {

/// The names that a multi-block file gives to one of its data sets.
struct DataSetName {
    std::string block; ///< the enclosing block's name; empty outside any
    std::string dataSet;
};

/// Reads one VTK XML file into records: its header, its pieces with their arrays, its field data, and the files that a
/// collection refers to. Reads no values: an array's record says where in the file they are and how.
///
/// One parser per file, on one thread.
class VtkFileXMLParser {
public:
    VtkFileXMLParser(std::shared_ptr<const boost::filesystem::path> path, std::unique_ptr<ParseProgress> progress);

    /// Reads the document. Throws IOException when the file cannot be opened or is malformed, and the exceptions of
    /// lexical_cast and of std::stoi for numbers that are none; the results are then not to be used.
    void parse();

    /// False when the progress reporter ended the parsing; the results are incomplete then.
    bool isComplete() const { return keepGoing_; }

    const FileHeader& header() const { return header_; }
    const std::vector<Piece>& pieces() const { return pieces_; }
    std::vector<Piece> takePieces() { return std::move(pieces_); }
    const std::vector<DataArray>& fieldData() const { return fieldData_; }

    /// The files that a collection names, in document order, as paths that can be opened.
    const std::vector<std::shared_ptr<const boost::filesystem::path>>& referencedFiles() const {
        return referencedFiles_;
    }

    /// One entry per referenced file of a multi-block collection; empty for other files.
    const std::vector<DataSetName>& dataSetNames() const { return dataSetNames_; }

private:
    struct ArrayParent;
    static const ArrayParent fieldDataParent;

    void checkRoot();
    void dispatch();
    void parseHeader();
    void parseBlock();
    void parseDataSet();
    void parsePieceElement();
    void parsePiece();
    void parseArrays(const ArrayParent& parent, std::vector<DataArray>& arrays);
    std::optional<DataArray> describeArray(const ArrayParent& parent) const;
    DataArray arrayAttributes(const ArrayParent& parent) const;
    std::uint16_t componentCount(const std::string& arrayName) const;
    std::uint64_t count(std::string_view attribute) const;
    void locateData(DataArray& array, const ArrayParent& parent);
    bool locateInlineData(DataArray& array);
    void parseAppendedData();
    void addReference(const std::string& reference);

    bool advanceWithin(std::string_view element);
    void reportProgress(std::string_view element);
    std::optional<std::string> optionalAttribute(std::string_view name) const;
    std::string fileStem() const;
    template <class Visit>
    void forEachArray(Visit visit);

    std::shared_ptr<const boost::filesystem::path> path_;
    std::unique_ptr<ParseProgress> progress_;
    XMLParser xml_;
    bool keepGoing_ = true;
    bool rootFound_ = false;
    bool appendedDataFound_ = false;
    std::uint64_t reportedPosition_ = 0;
    std::string blockName_;

    FileHeader header_;
    std::vector<Piece> pieces_;
    std::vector<DataArray> fieldData_;
    std::vector<std::shared_ptr<const boost::filesystem::path>> referencedFiles_;
    std::vector<DataSetName> dataSetNames_;
};

} // namespace veltra::vtkfile
