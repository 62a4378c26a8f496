#include "tests/load/refusals.h"
#include "tests/support/sound.h"
#include "tests/support/text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include <sys/stat.h>

namespace test {

namespace {

using namespace std::string_literals;

const std::string badValue = "An error occurred while parsing values in the VTK file.\nReason: ";
const std::string badNumber = "An error occurred while parsing an ASCII number from a data array.\nReason: ";
const std::string badNodeNumber = "An error occurred while parsing an ASCII number from a data array.\nReaons: ";
std::string numberTooLarge(const std::string& number, const std::string& range) {
    return "A number parsed from an ASCII data array cannot be converted to the data type specified in the array.\n"
           "Reason: \"" +
           number + "\" is not in the range from " + range;
}
const std::string unknownError = "An unknown error occurred while reading data from the VTK file";

const std::string badGrid =
    "A Piece tag within an VTK unstructured grid file must specify either 1, 2 or 3 grid variables";
const std::string differentGrids =
    "All Piece tags within an VTK unstructured grid file must have the same number of grid variables";
const std::string badCells =
    "VTK unstructured connectivity is not correctly specified. Expected to find three named DataArray elements in the "
    "Cells tag with the named DataArray elements: \"connectivity\", \"offsets\" and \"types\"";
const std::string differentPieces =
    "All pieces that comprise a single zone must have the same number of DataArray components, and any given DataArray "
    "must have the same type and value location throughout all pieces of the zone";

std::string duplicate(const std::string& name) {
    return "Invalid variable name list. The variable: \"" + name +
           "\" is referenced more than once in the PointData or CellData section.\n\nTo load the variables by name you "
           "must cancel and remove duplicates from the VTK dataset by renaming the duplicate DataArray names";
}
std::string cutBehind(const std::string& end) {
    const std::string text = sound().text();
    return text.substr(0, text.find(end) + end.size());
}
VtuBuilder withOtherPiece(void (*change)(MeshPiece&)) {
    MeshPiece piece = mixed();
    change(piece);
    return sound().piece(piece);
}
VtuBuilder withArrays(const std::string& name, const std::string& secondName, int componentCount = 1) {
    return vtu().piece(hexahedron()
                           .withPointData(variedValues(name, ElementType::Float32, 8, componentCount))
                           .withPointData(variedValues(secondName, ElementType::Int8, 8)));
}
/// Two pieces with two arrays each, of which the second piece has the one as the other's type.
VtuBuilder withSwappedTypes(const std::string& name, const std::string& secondName) {
    VtuBuilder file = withArrays(name, secondName);
    return file.piece(hexahedron()
                          .withPointData(variedValues(secondName, ElementType::Float32, 8))
                          .withPointData(variedValues(name, ElementType::Int8, 8)));
}
/// Two points, and values at the one vertex that there is.
VtuBuilder withOneVertex() {
    MeshPiece piece = sideBySide({singleCell(1), singleCell(1)});
    piece.cells.pop_back();
    return vtu().piece(piece.withCellData(variedValues("c", ElementType::Int8, 1)));
}

} // namespace

TEST(Refusals, OfDocumentsHaveTheseTexts) {
    const std::string expected = "; expected it to be ", illFormed = "The XML data is ill formed. ";
    expectRefusals(
        fileError,
        {{""s, "Failed to open VTK file for reading"},
         {"\xFF\xFE<\0"s, "UTF-16 encoding is not currently supported"},
         {"\xFE\xFF\0<"s, "UTF-16 encoding is not currently supported"},
         {vtu(), "VTK unstructured file doesn't appear to contain any Piece data"},
         {cutBehind("<Cells"), "Premature end of document."},
         {withMarkup("</Cells>", "</Cell>"), "Opening and ending tag mismatch."},
         {with("VTKFile", "type", std::nullopt), " \"type\" attribute is missing"},
         {with("VTKFile", "type", "StructuredGrid"), "VTKFile type \"StructuredGrid\" is not yet supported"},
         {with("VTKFile", "version", "1.x"),
          "VTKFile's version \"1.x\" is not a valid version number" + expected + "\"[1-9].[0-9].[0-9]\""},
         {with("VTKFile", "byte_order", "Middle"), "VTKFile's byte_order \"Middle\" is unknown" + expected +
                                                       "\"LittleEndian\" (default if missing) or \"BigEndian\""},
         {with("VTKFile", "compressor", "vtkLZ4"), "VTKFile's compressor \"vtkLZ4\" is unknown" + expected +
                                                       "missing (meaning no compression) or \"vtkZLibDataCompressor\""},
         {with("VTKFile", "header_type", "UInt16"),
          "VTKFile's header_type \"UInt16\" is unknown" + expected + "\"UInt32\" (default if missing) or \"UInt64\""},
         {with("pressure", "format", "hex"), "DataArray format \"hex\" is not yet supported"},
         {with("pressure", "type", "float32"), "DataArray type \"float32\" is not yet supported"},
         {cutBehind("ascii\">\n          "), illFormed + "Unable to locate opening tag"},
         {withMarkup("</Points>", "<DataArray> 1 </DataArray></Points>"),
          "The Points element expects only 1 DataArray elements"},
         {sound().appendedRaw().attribute("AppendedData", "encoding", "zip"),
          "AppendedData's encoding \"zip\" is unknown; expected \"raw\" or \"base64\""},
         {sound().appendedRaw().attribute("AppendedData", "encoding", std::nullopt),
          " \"encoding\" attribute is missing"},
         {withMarkup("</UnstructuredGrid>", "</UnstructuredGrid><AppendedData encoding=\"raw\"></AppendedData>"),
          "AppendedData section is missing the required \"_\" data prefix to identify the start of the data"},
         {withMarkup("<UnstructuredGrid>", "<DataSet file=\"a.vtu\"/>"), "DataSet found in a non multi-block VTK file"},
         {withMarkup("<UnstructuredGrid>", "<Block/>"), "Block found in a non multi-block VTK file"},
         {Files{{"a.vtm", "<VTKFile type=\"vtkMultiBlockDataSet\"><DataSet/></VTKFile>"}},
          "MutliBlock file's DataSet expected an attributed named \"file\" but none was found"},
         {Files{{"a.pvtu", "<VTKFile type=\"PUnstructuredGrid\"><Piece/></VTKFile>"}},
          "Parallel file's Piece expected an attributed named \"Source\" but none was found"},
         {with("Piece", "a", std::string(0x10000, 'x')), illFormed + "A tag is longer than 65536 bytes"},
         {with("Piece", "a", std::string(1001, '=')), illFormed + "A tag holds more than 1000 \"=\" characters"},
         {with("Piece", "a", std::string(1001, '&')), illFormed + "A tag holds more than 1000 \"&\" characters"},
         {with("Piece", "a", std::string(1001, '>')), illFormed + "A tag holds more than 1000 \">\" characters"},
         {withMarkup("</Points>", repeated("<a>", 1001)), illFormed + "Elements are nested more than 1000 deep"},
         {withMarkup("</Points>", numbered(101, "<a xmlns:n{0}='u'>")),
          illFormed + "More than 100 namespaces are declared at a time"},
         {withMarkup("<VTKFile", "<!DOCTYPE a [<!ENTITY e '" + std::string(4000, 'x') + "'>]><VTKFile a='" +
                                     repeated("&e;", 17) + "'"),
          illFormed + "The entities in a tag make its attributes longer than 65536 characters"},
         {withMarkup("<VTKFile",
                     "<!DOCTYPE a [<!ATTLIST VTKFile " + numbered(101, "xmlns:n{0} CDATA 'u' ") + ">]><VTKFile"),
          illFormed + "More than 100 namespaces are declared at a time"},
         {withMarkup("<VTKFile", "<!DOCTYPE a [<!ENTITY e '" + std::string(4000, 'x') + "'><!ATTLIST VTKFile " +
                                     numbered(17, "a{0} CDATA '&e;' ") + ">]><VTKFile"),
          illFormed + "The entities in a tag make its attributes longer than 65536 characters"},
         {"<!DOCTYPE a [<!ENTITY e '<b/>'>]><VTKFile type='UnstructuredGrid'>&e;</VTKFile>"s,
          "The reference \"&e;\" at position 66 is in text, where entities that the document declares are not "
          "replaced"},
         {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><VTKFile name='\xC3\xA4'/>"s,
          illFormed +
              "The document begins with the byte-order mark of UTF-8 and declares the encoding \"ISO-8859-1\", so "
              "that byte 0xC3 at position 61 can be read in two ways"},
         {"<?xml version='1.0'?><!-- <VTKFile> --><vtu:mesh xmlns:vtu='u'><VTKFile/></vtu:mesh>"s,
          "The document's first element is \"vtu:mesh\"; expected it to be \"VTKFile\""}});
}

TEST(Refusals, OfBytesThatAreNotUtf8NameThem) {
    const auto refusal = [](const std::string& tag, int place, int byte) {
        const std::string text = sound().markup("<Points>", tag).text();
        return Refusal{text,
                       fmt::format("The XML data is ill formed. Byte 0x{:02X} at position {} is not valid in UTF-8, "
                                   "which is the document's encoding",
                                   byte, text.find(tag) + static_cast<std::size_t>(place))};
    };
    expectRefusals(fileError, {refusal("<a\xFF>", 2, 0xFF), refusal("<a b='\x80'>", 6, 0x80),
                               refusal("<a b='\xC0\x80'>", 6, 0xC0), refusal("<a b='\xED\xA0\x80'>", 6, 0xED),
                               refusal("<a b='\xE2\x82'>", 6, 0xE2), refusal("<a b='\xF4\x90\x80\x80'>", 6, 0xF4),
                               refusal("<a b='\xF0\x9F\x98\x80\xE9'" + std::string(0x10000, 'x'), 10, 0xE9),
                               refusal("<a b='\xE9'" + std::string(1001, '='), 6, 0xE9)});
}

TEST(Refusals, OfNumbersInALoadHaveTheseTexts) {
    expectRefusals("", {{with("Piece", "NumberOfPoints", "abc"), badValue + "\"abc\" is not a whole number"},
                        {withText("types", "12 13 x 10"), badValue + "\"x\" is not a whole number"},
                        {withText("types", "12 13 300 10"), unknownError},
                        {withText("types", std::string(0x10000, '0') + "12 13 14 10"),
                         badValue + "\"" + repeated("0", 80) + "...\" is not a number of fewer than 65536 characters"},
                        {with("Piece", "NumberOfPoints", "-1"),
                         fileError + "The value of the attribute \"NumberOfPoints\" cannot be used: \"-1\" is not in "
                                     "the range from 0 to 18446744073709551615"},
                        {with("VTKFile", "version", "1..0"), unknownError},
                        {with("VTKFile", "version", "99999999999.0"), unknownError},
                        {sound().attribute("Piece", "NumberOfPoints", "0").attribute("Piece", "NumberOfCells", "0"),
                         "None of the VTK files provided any data"}});
}

TEST(Refusals, OfMeshesHaveTheseTexts) {
    const std::string most = "18446744073709551615";
    const std::string sharedPieces = [](std::size_t count) {
        MeshPiece zeros;
        zeros.points = integers("Points", ElementType::Float32, std::vector<std::int64_t>(900'000), 3);
        const std::string file = vtu().piece(zeros).appendedRaw().compressed(1 << 15).text();
        const std::size_t begin = file.find("<Piece"), end = file.find("</UnstructuredGrid>");
        return file.substr(0, begin) + repeated(file.substr(begin, end - begin), count) + file.substr(end);
    }(50);
    expectRefusals(
        fileError,
        {{with("Points", "NumberOfComponents", "4"), badGrid},
         {with("Points", "NumberOfComponents", "0"), badGrid},
         {withOtherPiece([](MeshPiece& piece) { piece.points = variedValues("Points", ElementType::Float32, 23, 2); }),
          differentGrids},
         {withMarkup("\"types\"", "\"kinds\""), badCells},
         {withMarkup("</Cells>", "<DataArray Name=\"faces\"> 1 </DataArray></Cells>"), badCells},
         {withOtherPiece([](MeshPiece& piece) { piece.pointData.pop_back(); }), differentPieces},
         {withOtherPiece([](MeshPiece& piece) { piece.pointData[0].type = ElementType::Float64; }), differentPieces},
         {withSwappedTypes("p", "P"), differentPieces},
         {withArrays("a", "a"), duplicate("a")},
         {withArrays("a", "a_Z", 3), duplicate("a_Z")},
         {withArrays("a", "X"), duplicate("X")},
         {withCells("21:2"), badNodeCount("Quadratic Edge", "2")},
         {sound().values("offsets", {8, 14, 19, 3}), badNodeCount("Tetra", "-16")},
         {withCells("1:1 10:4 12:8 13:6 14:5 71:4 71:10 71:20 71:35 72:8 72:27 72:64 72:125 73:6 73:18 73:40 73:75"),
          "VTK file specifies 17 unique cell type and grid orders combinations, but Veltra only supports a maximum of "
          "16 sections"},
         {sound().base64().values("types", {12, 13, 14}), "DataArray \"types\" holds 3 values but 4 are needed"},
         {withOneVertex(),
          "Zone \"mesh\" has values at 1 cells, all of them vertices, but 2 points; such a zone has as "
          "many values at cells as points"},
         {with("pressure", "NumberOfComponents", "65536"),
          "DataArray \"pressure\" has 65536 components, more than the 32767 that are supported"},
         {with("pressure", "NumberOfComponents", std::string(5000, '9')),
          "DataArray \"pressure\" has " + std::string(80, '9') +
              "... components, more than the 32767 that are supported"},
         {with("pressure", "type", std::string(999, 'x') + "é"),
          "DataArray type \"" + std::string(999, 'x') + "...\" is not yet supported"},
         {with("pressure", "NumberOfComponents", "-1"), "DataArray \"pressure\" has -1 components, fewer than none"},
         {with("types", "type", "Float32"),
          "DataArray \"types\" holds floating-point numbers where integers are needed"},
         {withMarkup("NumberOfPoints=\"23\"", ""), "Zone \"mesh\" has cells but no points"},
         {vtu().piece(hexahedron()).piece(hexahedron()).attribute("Piece", "NumberOfPoints", most),
          "The numbers of points of a zone's pieces add up to more than any file holds"},
         {vtu().piece(hexahedron()).piece(hexahedron()).attribute("Piece", "NumberOfCells", most),
          "The numbers of cells of a zone's pieces add up to more than any file holds"},
         {vtu().piece(hexahedron()).attribute("Piece", "NumberOfPoints", "9223372036854775807"),
          "DataArray \"Points\" would have 9223372036854775807 tuples of 3 components, more than any file holds"},
         {sharedPieces,
          fmt::format("The pieces of a zone have more points or cells than the {} bytes of the file can hold",
                      sharedPieces.size())},
         {withText("Points", "1 2 3"),
          "DataArray \"Points\" holds 5 bytes of text, too few for the 69 values that are needed"},
         {with("pressure", "NumberOfComponents", "32768"),
          "DataArray \"pressure\" has 32768 components, more than the 32767 that are supported"},
         {withMarkup("<PointData>",
                     "<PointData>" + repeated("<DataArray Name=\"a\" NumberOfComponents=\"32767\"/>", 4)),
          "The arrays of the VTK files have more than 100000 components, each of which would be a variable"}});
}

TEST(Refusals, OfInstructionsHaveTheseTexts) {
    const std::string badStrand = "Unexpected value for STRAND_ID instruction. Found, \"",
                      notANumber = "\" but was expecting an integer value.";
    const std::string badCount = "Bad or missing count for in FILELIST_DATAFILES instruction";
    const std::string preamble = "Malformed or missing STANDARDSYNTAX preamble in the $!READDATASET command";
    const std::string noEntries = "Missing entries in SOLUTION_TIMES instruction";
    const std::string begun = "StandardSyntax,1.0,";
    const std::vector<std::pair<std::string, std::string>> rows{
        {"", preamble},
        {"STANDARDSYNTAX", preamble},
        {"STANDARDSYNTAX,1.00", preamble},
        {"X,1.0", preamble},
        {begun + "FILENAME_FILE", "Invalid instruction, filename in FILENAME_FILE instruction"},
        {begun + "SOLUTIONTIMESOURCE", "Missing SOLUTIONTIMESOURCE value for SOLUTIONTIMESOURCE instruction"},
        {begun + "SOLUTIONTIMESOURCE,file", "Unexpected value for SOLUTIONTIMESOURCE instruction. Found, \"FILE\" but "
                                            "was expecting FROMFIELDDATA, FROMFILENAME, AUTO or NONE"},
        {begun + "STRAND_ID", "Missing STRAND_ID value for STRAND_ID instruction"},
        {begun + "STRAND_ID,1x", badStrand + "1x" + notANumber},
        {begun + "STRAND_ID,2147483648", badStrand + "2147483648" + notANumber},
        {begun + "Colour,red", "Unrecognized load parameter: Colour"},
        {begun + "SOLUTION_TIMES", "Missing count for SOLUTION_TIMES instruction"},
        {begun + "FILELIST_DATAFILES,0", badCount},
        {begun + "FILELIST_DATAFILES,2x,a,b", badCount},
        {begun + "SOLUTION_TIMES,2,1", noEntries},
        {begun + "SOLUTION_TIMES,9223372036854775807,1", noEntries},
        {begun + "SOLUTION_TIMES,3,1,nan,3", "Invalid parameter value: \"nan\" is not a time"},
        {begun + "SOLUTION_TIMES,1,-inf", "Invalid parameter value: \"-inf\" is not a time"},
        {begun + "SOLUTION_TIMES,3,1,x,3,FILENAME_FILE,a.vtu",
         "Invalid parameter value: \"x\" is not a number, which leaves 2 solution times for 1 files"}};
    Load load{sound()};
    for (const auto& [list, reason] : rows) {
        std::vector<std::string> instructions;
        std::istringstream items(list);
        for (std::string item; std::getline(items, item, ',');)
            instructions.push_back(item);
        EXPECT_FALSE(load.host.loadInstructions(load.host.loaders().front(), instructions));
        EXPECT_EQ(load.host.dialogs().back().text,
                  "VTK Data Loader: Failed to load the VTK file\nReason: VTK Data Loader: " + reason);
    }
    EXPECT_EQ(load.host.dialogs().size(), rows.size());
}

TEST(Refusals, OfDemandsHaveTheseTexts) {
    const std::string longest(80, 'x'), zeros(0x10000, '0'),
        notInBuffer = repeated("0", 80) + "...\" is not a number of "
                                          "fewer than 65536 characters";
    expectRefusals(
        "", {{withText("pressure", "1 2 abc"), badNumber + "\"abc\" is not a number", "pressure"},
             {withText("pressure", longest), badNumber + "\"" + longest + "\" is not a number", "pressure"},
             {withText("pressure", longest + "x"), badNumber + "\"" + longest + "...\" is not a number", "pressure"},
             {withText("pressure", longest.substr(1) + "é"),
              badNumber + "\"" + longest.substr(1) + "...\" is not a number", "pressure"},
             {withText("pressure", "\xE9"), badNumber + "\"\uFFFD\" is not a number", "pressure"},
             {withText("pressure", zeros + "1 2 3"), badNumber + "\"" + notInBuffer, "pressure"},
             {withText("velocity", "1 " + zeros + "1 2 3"), badNumber + "\"" + notInBuffer, "velocity_X"},
             {withText("connectivity", zeros + "1 2 3"), badNodeNumber + "\"" + notInBuffer, "node map"},
             {withText("connectivity", "1 2 abc"), badNodeNumber + "\"abc\" is not a whole number", "node map"},
             {withText("pressure", "1e39"), numberTooLarge("1e39", "-3.4028235e+38 to 3.4028235e+38"), "pressure"},
             {withText("material", "4000000000 2 3 4"), numberTooLarge("4000000000", "0 to 255"), "material"},
             {sound().attribute("connectivity", "type", "Int32").inlineText("connectivity", "4000000000"),
              numberTooLarge("4000000000", "-2147483648 to 2147483647"), "node map"}});
    const VtuBuilder raw = sound().appendedRaw().header64();
    const std::string beyond = VtuBuilder(raw).attribute("material", "offset", "18446744073709551615").text();
    const VtuBuilder blocks = sound().base64().compressed(20);
    const std::string stored = encodedArray(mixed().pointData[0], {Format::Base64, true, false, false, 20});
    const VtuBuilder brokenOff =
        VtuBuilder(blocks).inlineText("pressure", stored.substr(0, 60) + "*" + stored.substr(61));
    expectRefusals(
        inputError,
        {{sound().base64().values("material", {1, 2, 3}), "DataArray \"material\" holds 3 values but 4 are needed",
          "material"},
         {sound().base64().inlineText("material", "BAAAAA==AQ*CAw=="),
          "Found \"*\" in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected",
          "material"},
         {sound().base64().inlineText("material", "BAAAAA==AQ\tC"),
          "Base64 text ends in the middle of a group of four characters", "material"},
         {sound().base64().inlineText("material", "BAA\xFF"),
          "Found byte 0xFF in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected",
          "material"},
         {sound().base64().inlineText("material", "BAAA"), "Unexpected end of base64 text", "material"},
         {sound().base64().inlineText("material", "BAAAAA==AQAA"), "Unexpected end of base64 text", "material"},
         {sound().base64().inlineText("material", ""), "Unexpected end of base64 text", "material"},
         {brokenOff, "Found \"*\" in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected",
          "pressure"},
         {sound().base64().compressed().values("connectivity", {0}), "Unexpected end of compressed data", "node map"},
         {with("connectivity", "type", "Float64"),
          "DataArray \"connectivity\" holds floating-point numbers where integers are needed", "node map"},
         {withOtherPiece(
              [](MeshPiece& piece) { piece.pointData[1] = variedValues("velocity", ElementType::Float64, 23, 2); }),
          "DataArray \"velocity\" has 2 components in one piece and at least 3 in another", "velocity_Z"},
         {beyond,
          fmt::format("DataArray \"material\" claims to begin at byte 18446744073709551615 but the file holds only {}",
                      beyond.size()),
          "material"}});
}

TEST(Refusals, OfHeadersHaveTheseTexts) {
    const VtuBuilder raw = sound().appendedRaw().header64();
    const VtuBuilder zlib = VtuBuilder(raw).compressed(20);
    const std::string pressure = "DataArray \"pressure\" claims ";
    const auto behindHeader = [](const VtuBuilder& file, bool compressed, std::size_t wordCount) {
        const std::string stored =
            encodedArray(mixed().pointData[0], {Format::AppendedRaw, compressed, false, true, 20});
        return file.text().size() - file.text().find(stored) - 8 * wordCount;
    };
    const std::size_t all = behindHeader(raw, false, 1), blocks = behindHeader(zlib, true, 8);
    const auto word = [](VtuBuilder file, std::size_t position, std::uint64_t value) {
        return file.headerWord("pressure", position, value);
    };
    expectRefusals(
        inputError,
        {{word(raw, 0, 1ull << 60),
          fmt::format("{}1152921504606846976 bytes of data but the file holds no more than {} for it", pressure, all),
          "pressure"},
         {word(zlib, 0, 1ull << 61),
          fmt::format("{}2305843009213693952 compressed blocks but the file holds no more than {} bytes for it",
                      pressure, blocks + 5 * 8),
          "pressure"},
         {word(zlib, 3, ~0ull),
          fmt::format("{}more compressed data than the {} bytes that the file holds for it", pressure, blocks),
          "pressure"},
         {word(zlib, 1, 0), pressure + "5 compressed blocks that inflate to nothing", "pressure"},
         {word(zlib, 1, 1ull << 62), pressure + "5 blocks of 4611686018427387904 bytes, more than any memory holds",
          "pressure"},
         {word(zlib, 1, 1ull << 60),
          pressure + "that its 137 compressed bytes inflate to 4611686018427387916, more than they can", "pressure"}});
}

TEST(Refusals, OfAFileThatIsGoneNameTheReasonOfTheSystem) {
    Load load{sound()};
    for (const auto& [change, reason] : {std::pair{+[](const char*) {}, "No such file or directory"},
                                         {+[](const char* path) { mkdir(path, 0700); }, "Is a directory"},
                                         {+[](const char* path) { mkfifo(path, 0600); }, "Not a regular file"}}) {
        std::filesystem::remove(load.path());
        change(load.path().c_str());
        EXPECT_FALSE(load.values("pressure"));
        EXPECT_EQ(load.host.dialogs().back().text,
                  fmt::format("VTK Data Loader: {}Unable to open \"{}\": {}", inputError, load.path(), reason));
    }
}

TEST(Refusals, NameTheLoaderThatWasAsked) {
    Load load{Files{{"mesh.trix", ""}}};
    EXPECT_EQ(load.dialog(), "TRIX Loader: " + fileError + "Failed to open VTK file for reading");
}

TEST(Refusals, OfADemandDoNotStandInTheWayOfTheNext) {
    Load load{withText("material", "1 2 x 4")};
    EXPECT_FALSE(load.values("material"));
    EXPECT_FALSE(load.values("material"));
    EXPECT_EQ(load.host.dialogs().size(), 2);
    sound().inlineText("material", "1 2 3 4").write(load.path());
    EXPECT_EQ(load.values("material"), (std::vector<double>{1, 2, 3, 4}));
}

} // namespace test
