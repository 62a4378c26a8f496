#include "tests/support/VtuBuilder.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>

namespace test {

namespace {

std::string replacedAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string escaped(const std::string& text) {
    return replacedAll(replacedAll(replacedAll(text, "&", "&amp;"), "<", "&lt;"), "\"", "&quot;");
}

} // namespace

/// One file in the making: the markup and the appended data.
class VtuText {
public:
    explicit VtuText(const VtuBuilder& file) : file_(file) {}

    std::string text() {
        markup_ = "<?xml version=\"1.0\"?>\n";
        open("VTKFile", fileAttributes());
        open("UnstructuredGrid", {});
        if (!file_.fieldData_.empty())
            addSection("FieldData", file_.fieldData_);
        for (const MeshPiece& piece : file_.pieces_)
            addPiece(piece);
        close("UnstructuredGrid");
        if (file_.encoding_.appended())
            open("AppendedData", {{"encoding", file_.encoding_.format == Format::AppendedRaw ? "raw" : "base64"}});
        for (const auto& [from, to] : file_.markup_)
            markup_ = replacedAll(markup_, from, to);
        if (file_.encoding_.appended())
            markup_ += "   _" + appended_ + "\n  </AppendedData>\n";
        return markup_ + "</VTKFile>\n";
    }

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    Attributes fileAttributes() const {
        const FileVersion version = file_.version_;
        Attributes attributes{{"type", "UnstructuredGrid"},
                              {"version", std::to_string(version.major) + "." + std::to_string(version.minor)},
                              {"byte_order", file_.encoding_.bigEndian ? "BigEndian" : "LittleEndian"},
                              {"header_type", file_.encoding_.header64 ? "UInt64" : "UInt32"}};
        if (file_.encoding_.compressed)
            attributes.emplace_back("compressor", "vtkZLibDataCompressor");
        return attributes;
    }

    void addPiece(const MeshPiece& piece) {
        Attributes attributes{{"NumberOfPoints", std::to_string(piece.pointCount())},
                              {"NumberOfCells", std::to_string(piece.cells.size())}};
        if (!piece.name.empty())
            attributes.emplace_back("name", escaped(piece.name));
        open("Piece", attributes);
        addSection("PointData", piece.pointData);
        addSection("CellData", piece.cellData);
        addSection("Points", {piece.points});
        addSection("Cells", {piece.connectivity(), piece.offsets(), piece.types()});
        close("Piece");
    }

    void addSection(const std::string& element, const std::vector<Array>& arrays) {
        open(element, {});
        for (const Array& array : arrays)
            addArray(array, element == "FieldData");
        close(element);
    }

    void addArray(Array array, bool isFieldData) {
        if (const auto values = file_.values_.find(array.name); values != file_.values_.end())
            array.values = values->second;
        const Encoding& encoding = file_.encoding_;
        Attributes attributes{{"type", std::string(elementTypeNames[static_cast<std::size_t>(array.type)])},
                              {file_.nameAttribute_, escaped(array.name)},
                              {"NumberOfComponents", std::to_string(array.componentCount)},
                              {"format", encoding.appended()                 ? "appended"
                                         : encoding.format == Format::Base64 ? "binary"
                                                                             : "ascii"}};
        if (isFieldData)
            attributes.emplace_back("NumberOfTuples", std::to_string(array.valueCount()));
        if (encoding.appended()) {
            addAppended(array, attributes);
            return;
        }
        startTag(array.name, "DataArray", attributes, ">");
        markup_ += inlineText(array) + "</DataArray>\n";
    }

    void addAppended(const Array& array, Attributes& attributes) {
        std::string offset = std::to_string(appended_.size());
        if (file_.paddedOffsets_)
            offset.resize(std::max<std::size_t>(offset.size(), 8), ' ');
        attributes.emplace_back("offset", offset);
        startTag(array.name, "DataArray", attributes, "/>\n");
        appended_ += encoded(array);
    }

    std::string inlineText(const Array& array) const {
        if (const auto text = file_.inlineTexts_.find(array.name); text != file_.inlineTexts_.end())
            return text->second;
        return file_.encoding_.format == Format::Ascii ? asciiText(array) : '\n' + encoded(array) + '\n';
    }

    std::string encoded(const Array& array) const {
        const auto words = file_.headerWords_.find(array.name);
        return encodedArray(array, file_.encoding_, words == file_.headerWords_.end() ? HeaderWords{} : words->second);
    }

    void open(const std::string& element, const Attributes& attributes) {
        startTag(element, element, attributes, ">\n");
    }
    void close(const std::string& element) { markup_ += "</" + element + ">\n"; }

    /// `key` is what the builder's attribute calls know the element by.
    void startTag(const std::string& key, const std::string& element, Attributes attributes, const std::string& end) {
        for (const auto& [place, text] : file_.attributes_) {
            if (place.first != key && place.first != element)
                continue;
            std::erase_if(attributes, [&](const auto& attribute) { return attribute.first == place.second; });
            if (text)
                attributes.emplace_back(place.second, *text);
        }
        markup_ += '<' + element;
        for (const auto& [name, text] : attributes)
            markup_ += " " + name + "=\"" + text + "\"";
        markup_ += end;
    }

    const VtuBuilder& file_;
    std::string markup_;
    std::string appended_;
};

std::string VtuBuilder::text() const {
    return VtuText(*this).text();
}

void VtuBuilder::write(const std::filesystem::path& path) const {
    writeFile(path, text());
}

} // namespace test
