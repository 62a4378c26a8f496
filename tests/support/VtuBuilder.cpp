#include "tests/support/VtuBuilder.h"

namespace test {

/// One file in the making: the markup and the appended data.
class VtuText {
public:
    explicit VtuText(const VtuBuilder& file) : file_(file) {}

    std::string text() {
        markup_ = "<?xml version=\"1.0\"?>\n";
        const auto [major, minor] = file_.version_;
        Attributes attributes{{"type", "UnstructuredGrid"},
                              {"version", std::to_string(major) + "." + std::to_string(minor)},
                              {"byte_order", encoding_.bigEndian ? "BigEndian" : "LittleEndian"},
                              {"header_type", encoding_.header64 ? "UInt64" : "UInt32"}};
        if (encoding_.compressed)
            attributes.emplace_back("compressor", "vtkZLibDataCompressor");
        startTag("VTKFile", attributes);
        startTag("UnstructuredGrid");
        if (!file_.fieldData_.empty())
            addSection("FieldData", file_.fieldData_);
        for (const MeshPiece& piece : file_.pieces_)
            addPiece(piece);
        endTag("UnstructuredGrid");
        if (encoding_.appended())
            startTag("AppendedData", {{"encoding", encoding_.format == Format::AppendedRaw ? "raw" : "base64"}});
        for (const auto& [from, to] : file_.markup_)
            for (std::size_t at = markup_.find(from); at != markup_.npos; at = markup_.find(from, at + to.size()))
                markup_.replace(at, from.size(), to);
        if (encoding_.appended())
            markup_ += "   _" + appended_ + "\n  </AppendedData>\n";
        return markup_ + "</VTKFile>\n";
    }

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    void addPiece(const MeshPiece& piece) {
        startTag("Piece", {{"NumberOfPoints", std::to_string(piece.pointCount())},
                           {"NumberOfCells", std::to_string(piece.cells.size())}});
        addSection("PointData", piece.pointData);
        addSection("CellData", piece.cellData);
        addSection("Points", {piece.points});
        addSection("Cells", piece.cellArrays());
        endTag("Piece");
    }

    void addSection(const std::string& element, const std::vector<Array>& arrays) {
        startTag(element);
        for (const Array& array : arrays)
            addArray(array, element == "FieldData");
        endTag(element);
    }

    void addArray(Array array, bool isFieldData) {
        constexpr std::array formats{"ascii", "binary", "appended", "appended"};
        if (file_.values_.contains(array.name))
            array.values = file_.values_[array.name];
        Attributes attributes{{"type", std::string(elementTypeNames[static_cast<std::size_t>(array.type)])},
                              {"Name", array.name},
                              {"NumberOfComponents", std::to_string(array.componentCount)},
                              {"format", formats[static_cast<std::size_t>(encoding_.format)]}};
        if (isFieldData)
            attributes.emplace_back("NumberOfTuples", std::to_string(valuesAs<double>(array).size()));
        std::string data = encoding_.format == Format::Ascii
                               ? asciiText(array)
                               : encodedArray(array, encoding_, file_.headerWords_[array.name]);
        if (encoding_.appended()) {
            attributes.emplace_back("offset", std::to_string(appended_.size()));
            startTag("DataArray", attributes, array.name, "/>\n");
            appended_ += data;
            return;
        }
        if (encoding_.format == Format::Base64)
            data = '\n' + data + '\n';
        if (file_.inlineTexts_.contains(array.name))
            data = file_.inlineTexts_[array.name];
        startTag("DataArray", attributes, array.name, ">");
        markup_ += data + "</DataArray>\n";
    }

    /// `key` is what the builder's attribute calls know the element by, beside its name.
    void startTag(const std::string& element, Attributes attributes = {}, const std::string& key = {},
                  const std::string& end = ">\n") {
        for (const auto& [place, text] : file_.attributes_) {
            if (place.first != key && place.first != element)
                continue;
            std::erase_if(attributes,
                          [&name = place.second](const auto& attribute) { return attribute.first == name; });
            if (text)
                attributes.emplace_back(place.second, *text);
        }
        markup_ += '<' + element;
        for (const auto& [name, text] : attributes)
            markup_ += " " + name + "=\"" + text + "\"";
        markup_ += end;
    }

    void endTag(const std::string& element) { markup_ += "</" + element + ">\n"; }

    VtuBuilder file_;
    const Encoding& encoding_ = file_.encoding_;
    std::string markup_;
    std::string appended_;
};

std::string VtuBuilder::text() const {
    return VtuText(*this).text();
}

} // namespace test
