#include "mesh/VtkCell.h"
#include "xml/VtkFileXMLParser.h"

#include "host/exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace test {

namespace {

using namespace veltra::vtkfile;

struct NoProgress final : ParseProgress {
    bool report(const std::string&, std::uint64_t) override { return true; }
};

struct Parsed {
    explicit Parsed(const std::string& text)
        : parser(std::make_shared<boost::filesystem::path>(folder.write("wing.vtu", text).string()),
                 std::make_unique<NoProgress>()) {
        parser.parse();
    }
    TemporaryFolder folder;
    VtkFileXMLParser parser;
};

/// A file whose one piece has these point data.
std::string withPointData(const std::string& arrays, const std::string& fileAttributes = "") {
    return "<VTKFile type=\"UnstructuredGrid\" " + fileAttributes + "><UnstructuredGrid><Piece><PointData>" + arrays +
           "</PointData></Piece></UnstructuredGrid>";
}

DataArray lastArray(const std::string& text) {
    return Parsed(text).parser.pieces().at(0).variables.back();
}

} // namespace

TEST(Records, KnowToTheByteWhereInlineTextStands) {
    const std::string space(700'000, ' '); // longer than the buffer
    for (const std::string& before :
         {std::string(), std::string("<!-- a < b > c -->"), std::string("<![CDATA[ a > b ]]>"),
          std::string("&lt; text &amp; more > and more"), "<Comment>" + space + "</Comment>",
          std::string("<DataArray/><DataArray></DataArray>"), "<DataArray>" + space + "7 8</DataArray>",
          std::string("<Array type='String' Name='a>b'> 1 </Array>"), std::string("<?pi a > b ?>"),
          std::string("<DataArray>1<InformationKey name='n'>2</InformationKey></DataArray>")})
        for (const char* tag : {"<DataArray>", "<DataArray Name='a > b'>", "<DataArray\n\ttype = \"Int8\"\n>"})
            for (const std::string& blanks : {std::string(), std::string("\n\t "), space})
                for (const char* start : {"", "\xEF\xBB\xBF<?xml version='1.0'?>\r\n"}) {
                    const std::string text =
                        start + withPointData(before + tag + blanks + "1.25 2 \n</DataArray>") + "</VTKFile>";
                    const DataArray array = lastArray(text);
                    EXPECT_EQ(array.offset, text.find("1.25")) << before.substr(0, 80) << tag;
                    EXPECT_EQ(array.length, 8);
                }
}

TEST(Records, OfAppendedArraysAreCountedFromTheUnderscore) {
    for (const char* offset : {"120", "120     ", "\n120"})
        for (const char* between : {"_", "\n   _", " <>&\xFF _"}) {
            const std::string text =
                withPointData("<DataArray format='appended' offset='" + std::string(offset) + "'/>",
                              "header_type='UINT64' byte_order='bigendian'") +
                "<AppendedData encoding='Raw'>" + between + "<<not XML";
            const DataArray array = lastArray(text);
            EXPECT_EQ(array.offset, text.rfind('_') + 1 + 120);
            EXPECT_TRUE(array.appendedRaw && array.bigEndian && array.headerSize == 8 && array.length == 0);
        }
    const DataArray array = lastArray(withPointData("<DataArray format='appended' offset=' '/>") + "</VTKFile>");
    EXPECT_EQ(array.offset, 0);
    EXPECT_FALSE(array.appendedRaw);
}

TEST(Records, HaveDefaults) {
    const Parsed parsed(
        "<VTKFile type='UnstructuredGrid' name='n' title='t'><Piece NumberOfPoints='' NumberOfCells=' 4 '>"
        "<datAarray/><PPointData><DataArray/></PPointData><CellData><DataArray name='low' Name='high'/>"
        "</CellData></Piece><FieldData><DataArray NumberOfComponents='3'> 1 2 3</DataArray></FieldData></VTKFile>");
    EXPECT_EQ(parsed.parser.header().title, "\x01");
    const Piece& piece = parsed.parser.pieces().at(0);
    EXPECT_EQ(piece.name, "wing");
    EXPECT_EQ(piece.numberOfPoints, 0);
    ASSERT_EQ(piece.variables.size(), 1);
    const DataArray& array = piece.variables[0];
    EXPECT_EQ(*array.name, "low");
    EXPECT_TRUE(array.numberOfTuples == 4 && array.numberOfComponents == 1 && array.type == DataArrayType::Float32 &&
                array.format == DataArrayFormat::Ascii && array.valueLocation == ValueLocation_CellCentered &&
                array.headerSize == 4 && !array.compressed && !array.bigEndian);
    EXPECT_EQ(piece.points.valueLocation, ValueLocation_None);
    EXPECT_EQ(parsed.parser.fieldData().at(0).numberOfTuples, 1);
}

TEST(Documents, ThatEndEarlyOrNeverAreRefused) {
    for (const std::string& text : {std::string("<VTKFile type='Unstr"), std::string("<V"), std::string("\xFF\xFE"),
                                    "<VTKFile a='" + std::string(2'000'000, 'x') + "'/>",
                                    "<VTKFile type='UnstructuredGrid'><!--" + std::string(2'000'000, '>')})
        EXPECT_THROW(Parsed{text}, veltra::IOException) << text.substr(0, 20);
}

TEST(Catalogue, NamesEveryCode) {
    const std::vector<std::pair<int, const char*>> rows{
        {0, "Empty Cell"},         {16, "Hexagonal Prism"}, {17, "Unknown"}, {42, "Polyhedron"}, {59, "Unknown"},
        {60, "Higher Order Edge"}, {81, "Bezier Pyramid"},  {82, "Unknown"}, {255, "Unknown"}};
    for (const auto& [code, name] : rows)
        EXPECT_EQ(VtkCell::typeName(static_cast<VtkCell::Type>(code)), name);
}

} // namespace test
