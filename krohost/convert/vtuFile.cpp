#include "krohost/convert/vtuFile.h"

#include "krohost/convert/OutputFile.h"
#include "krohost/convert/encodeArray.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>

namespace krohost::convert {

namespace {

/// Text for an attribute.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : inXml(text)) {
        if (character == '&')
            result += "&amp;";
        else if (character == '<')
            result += "&lt;";
        else if (character == '>')
            result += "&gt;";
        else if (character == '"')
            result += "&quot;";
        else if (character == '\t' || character == '\n' || character == '\r')
            result += fmt::format("&#{};", static_cast<int>(character));
        else
            result += character;
    }
    return result;
}

class VtuWriter {
public:
    VtuWriter(const std::filesystem::path& path, const Encoding& encoding) : file_{path}, encoding_{encoding} {}

    void write(const Grid& grid) {
        // From version 2.1 on, Lagrange hexahedra have the order of nodes that is written here.
        file_.write(
            fmt::format("<?xml version=\"1.0\"?>\n"
                        "<VTKFile type=\"UnstructuredGrid\" version=\"2.1\" byte_order=\"{}\" header_type=\"{}\"{}>\n"
                        "  <UnstructuredGrid>\n",
                        encoding_.isBigEndian ? "BigEndian" : "LittleEndian",
                        encoding_.headerWordByteCount == 8 ? "UInt64" : "UInt32",
                        encoding_.hasZlib() ? " compressor=\"vtkZLibDataCompressor\"" : ""));
        section("FieldData", grid.fieldData);
        file_.write(fmt::format("    <Piece Name=\"{}\" NumberOfPoints=\"{}\" NumberOfCells=\"{}\">\n",
                                escaped(grid.name), grid.pointCount, grid.cellCount));
        if (grid.areCellDataFirst)
            section("CellData", grid.cellData);
        section("PointData", grid.pointData);
        if (!grid.areCellDataFirst)
            section("CellData", grid.cellData);
        section("Points", {grid.points});
        section("Cells", {grid.connectivity, grid.offsets, grid.types});
        file_.write("    </Piece>\n  </UnstructuredGrid>\n");
        if (encoding_.isAppended())
            appendArrays();
        file_.write("</VTKFile>\n");
        file_.close();
    }

private:
    /// An array whose data are still to be appended, and the place of the offset that its tag has room for.
    struct Appended {
        Array array;
        std::uint64_t offsetPosition;
    };
    static constexpr int offsetWidth = 20;

    void section(const char* element, const std::vector<Array>& arrays) {
        file_.write(fmt::format("    <{}>\n", element));
        for (const Array& array : arrays)
            dataArray(array, element == std::string_view{"FieldData"});
        file_.write(fmt::format("    </{}>\n", element));
    }

    void dataArray(const Array& array, bool tellsTupleCount) {
        file_.write(fmt::format("      <DataArray type=\"{}\" Name=\"{}\" NumberOfComponents=\"{}\"{}",
                                reader::elementTypeName(array.type), escaped(array.name), array.componentCount,
                                tellsTupleCount ? fmt::format(" NumberOfTuples=\"{}\"", array.tupleCount) : ""));
        if (encoding_.isAppended()) {
            file_.write(" format=\"appended\" offset=\"");
            appended_.push_back({array, file_.position()});
            file_.write(fmt::format("{:{}}\"/>\n", "", offsetWidth));
            return;
        }
        file_.write(fmt::format(" format=\"{}\">\n", encoding_.format == Format::ascii ? "ascii" : "binary"));
        encodeArray(file_, encoding_, array);
        file_.write(encoding_.format == Format::ascii ? "      </DataArray>\n" : "\n      </DataArray>\n");
    }

    void appendArrays() {
        file_.write(
            fmt::format("  <AppendedData encoding=\"{}\">\n   _", encoding_.format == Format::raw ? "raw" : "base64"));
        const std::uint64_t begin = file_.position();
        for (const Appended& appended : appended_) {
            file_.patch(appended.offsetPosition, fmt::format("{:<{}}", file_.position() - begin, offsetWidth));
            encodeArray(file_, encoding_, appended.array);
        }
        file_.write("\n  </AppendedData>\n");
    }

    OutputFile file_;
    Encoding encoding_;
    std::vector<Appended> appended_;
};

void writeText(const std::filesystem::path& path, const std::string& text) {
    OutputFile file{path};
    file.write(text);
    file.close();
}

} // namespace

void addXmlRenaming(const std::string& name, Losses& losses) {
    if (const std::string other = inXml(name); other != name)
        losses.add({"renamed",
                    fmt::format("\"{}\" is called \"{}\" in the file, since XML cannot hold all of it.", name, other)});
}

void writeVtu(const std::filesystem::path& path, const Encoding& encoding, const Grid& grid) {
    VtuWriter{path, encoding}.write(grid);
}

void writeVtm(const std::filesystem::path& path, const std::vector<CollectionMember>& members) {
    std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"vtkMultiBlockDataSet\" version=\"1.0\">\n"
                       "  <vtkMultiBlockDataSet>\n";
    std::size_t blockIndex = 0;
    std::size_t indexInBlock = 0;
    for (std::size_t index = 0; index < members.size(); ++index) {
        const CollectionMember& member = members[index];
        const bool isInBlock = !member.block.empty();
        const bool continues = isInBlock && index > 0 && members[index - 1].block == member.block;
        if (isInBlock && !continues) {
            text += fmt::format("    <Block index=\"{}\" name=\"{}\">\n", blockIndex++, escaped(member.block));
            indexInBlock = 0;
        }
        text += fmt::format("      <DataSet index=\"{}\" name=\"{}\" file=\"{}\"/>\n",
                            isInBlock ? indexInBlock++ : blockIndex++, escaped(member.name), escaped(member.file));
        if (isInBlock && (index + 1 == members.size() || members[index + 1].block != member.block))
            text += "    </Block>\n";
    }
    writeText(path, text + "  </vtkMultiBlockDataSet>\n</VTKFile>\n");
}

void writePvd(const std::filesystem::path& path, const std::vector<CollectionMember>& members) {
    std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"0.1\">\n  <Collection>\n";
    for (const CollectionMember& member : members)
        text += fmt::format("    <DataSet timestep=\"{}\" part=\"{}\" name=\"{}\" file=\"{}\"/>\n", member.time,
                            member.part, escaped(member.name), escaped(member.file));
    writeText(path, text + "  </Collection>\n</VTKFile>\n");
}

} // namespace krohost::convert
