#include "loader/xml/VtkFileXMLParser.h"

#include "loader/sdk/exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace test {

namespace {

using namespace std::string_literals;
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
    const std::string space(700'000, ' '), ends(700'000, '>'); // longer than the buffer
    for (const std::string& before :
         {""s, "<!-- a < b > c -->"s, "<![CDATA[ <a> ]>" + ends + "]]]>", "<?pi <a> " + ends + "?>",
          "&lt; text &amp; more > and more"s, "<Comment>" + space + "</Comment>",
          "<DataArray/><DataArray></DataArray>"s, "<DataArray>" + space + "7 8</DataArray>",
          "<Array type='String' Name='a>b'> 1 </Array>"s,
          "<DataArray>1<InformationKey name='n'>2</InformationKey></DataArray>"s})
        for (const char* tag : {"<DataArray>", "<DataArray Name='a > b'>", "<DataArray\n\ttype = \"Int8\"\n>"})
            for (const std::string& blanks : {""s, "\n\t "s, space})
                for (const std::string& start : {""s, "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!--" + ends + "-->"}) {
                    const std::string text = start + withPointData(before + tag + blanks + "1.25 2 \n</DataArray>") +
                                             "</VTKFile><!--" + ends + "-->";
                    const DataArray array = lastArray(text);
                    EXPECT_EQ(array.offset, text.find("1.25")) << before.substr(0, 80) << tag;
                    EXPECT_EQ(array.length, 8);
                }
    for (std::size_t count = 0x4000 - 8; count < 0x4000; ++count) { // the comment's end at the edge of a block
        const std::string comment = "<!--" + std::string(count, '>') + "-->";
        const std::string text = comment + withPointData("<DataArray>1.25</DataArray>") + "</VTKFile>";
        EXPECT_EQ(lastArray(text).offset, text.find("1.25")) << count;
    }
}

TEST(Records, OfAppendedArraysAreCountedFromTheUnderscore) {
    for (const char* between : {"_", "\n   _", " <>&\xFF _"}) {
        const std::string text =
            withPointData("<DataArray format='appended' offset='\n120'/>", "header_type='UINT64'") +
            "<AppendedData encoding='Raw'>" + between + "<<not XML";
        const DataArray array = lastArray(text);
        EXPECT_EQ(array.offset, text.rfind('_') + 1 + 120);
        EXPECT_TRUE(array.appendedRaw && array.headerSize == 8 && array.length == 0);
    }
    EXPECT_EQ(lastArray(withPointData("<DataArray format='appended' offset=' '/>") + "</VTKFile>").offset, 0);
}

TEST(Records, HaveDefaults) {
    const Parsed parsed(
        "<VTKFile type='UnstructuredGrid' name='n' title='t'><Piece NumberOfPoints='' NumberOfCells=' 4 '>"
        "<datAarray/><PPointData><DataArray/></PPointData><CellData><DataArray name='low' Name='high'/>"
        "</CellData></Piece><FieldData><DataArray NumberOfComponents='3'> 1 2 3</DataArray></FieldData></VTKFile>");
    EXPECT_EQ(parsed.parser.header().title, "\x01");
    EXPECT_EQ(parsed.parser.fieldData().at(0).numberOfTuples, 1);
    const Piece& piece = parsed.parser.pieces().at(0);
    EXPECT_TRUE(piece.name == "wing" && piece.numberOfPoints == 0 && piece.variables.size() == 1);
    const DataArray& array = piece.variables.at(0);
    EXPECT_TRUE(*array.name == "low" && array.numberOfTuples == 4 && array.numberOfComponents == 1 &&
                array.type == DataArrayType::Float32 && array.format == DataArrayFormat::Ascii &&
                array.valueLocation == ValueLocation_CellCentered && array.compressor == Compressor::None &&
                !array.bigEndian);
    EXPECT_EQ(piece.points.valueLocation, ValueLocation_None);
}

} // namespace test
