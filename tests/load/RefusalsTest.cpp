#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace test {

namespace {

using namespace std::string_literals;

const std::string fileError = "An error occurred while reading data from the VTK file.\nReason: ";
const std::string inputError = "An error occurred while reading data from the input file.\nReason: ";
const std::string badValue = "An error occurred while parsing values in the VTK file.\nReason: ";
const std::string badNumber = "An error occurred while parsing an ASCII number from a data array.\nReason: ";
const std::string badNodeNumber = "An error occurred while parsing an ASCII number from a data array.\nReaons: ";
const std::string numberTooLarge = "A number parsed from an ASCII data array cannot be converted to the data type "
                                   "specified in the array.\nReason: \"4000000000\" is not in the range from ";
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
std::string unsupportedCell(const std::string& name) {
    return "VTK cell type \"" + name + "\" is not yet supported by the VTK loader";
}
std::string badNodeCount(const std::string& name, const std::string& count) {
    return "Veltra supports P1 through P4 high-order Lagrange elements. The VTK cell type \"" + name + "\" has " +
           count + " nodes and is not yet supported";
}

/// A sound file of one piece, to be damaged: 23 points, 4 cells, nodal "pressure" and "velocity", "material" in cells.
VtuBuilder sound() {
    return vtu().piece(mixed());
}
VtuBuilder with(const char* element, const char* attribute, std::optional<std::string> value) {
    return sound().attribute(element, attribute, std::move(value));
}
VtuBuilder withText(const char* array, const char* text) {
    return sound().inlineText(array, text);
}
VtuBuilder withMarkup(const char* from, const char* to) {
    return sound().markup(from, to);
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
/// Cells of these types and numbers of nodes: "12:8 10:4".
VtuBuilder withCells(const char* cells) {
    MeshPiece piece = hexahedron();
    piece.cells.clear();
    std::istringstream numbers(cells);
    std::size_t nodeCount = 0;
    char colon{};
    for (int type = 0; numbers >> type >> colon >> nodeCount;)
        piece.cells.push_back({type, std::vector<std::int64_t>(nodeCount)});
    return vtu().piece(piece);
}

struct Refusal {
    Files file;
    std::string dialog;
    std::string demand = {}; // what is demanded after the load; empty when that is refused
};

/// Each file's only dialog is its text with this beginning.
void expectRefusals(const std::string& beginning, const std::vector<Refusal>& refusals) {
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.dialog);
        Load load{refusal.file};
        EXPECT_EQ(load.loaded(), !refusal.demand.empty());
        if (load.loaded()) {
            EXPECT_EQ(load.dialog(), "");
            EXPECT_FALSE(refusal.demand == "node map" ? load.nodeMap().has_value() : !!load.values(refusal.demand));
        }
        EXPECT_EQ(load.dialog(), "VTK Data Loader: " + beginning + refusal.dialog);
    }
}

} // namespace

TEST(Refusals, OfDocumentsHaveTheseTexts) {
    const std::string expected = "; expected it to be ";
    expectRefusals(
        fileError,
        {{""s, "Failed to open VTK file for reading"},
         {"\xFF\xFE<\0"s, "UTF-16 encoding is not currently supported"},
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
         {cutBehind("ascii\">\n          "), "The XML data is ill formed. Unable to locate opening tag"},
         {withMarkup("</Points>", "<DataArray> 1 </DataArray></Points>"),
          "The Points element expects only 1 DataArray elements"},
         {sound().appendedRaw().attribute("AppendedData", "encoding", "zip"),
          "AppendedData's encoding \"zip\" is unknown; expected \"raw\" or \"base64\""},
         {sound().appendedRaw().attribute("AppendedData", "encoding", std::nullopt),
          " \"encoding\" attribute is missing"},
         {withMarkup("</UnstructuredGrid>", "</UnstructuredGrid><AppendedData encoding=\"raw\"></AppendedData>"),
          "AppendedData section is missing the required \"_\" data prefix to identify the start of the data"},
         {withMarkup("<UnstructuredGrid>", "<DataSet file=\"a.vtu\"/>"), "DataSet found in a non multi-block VTK file"},
         {withMarkup("<UnstructuredGrid>", "<Block/>"), "Block found in a non multi-block VTK file"}});
}

TEST(Refusals, OfNumbersInALoadHaveTheseTexts) {
    expectRefusals("", {{with("Piece", "NumberOfPoints", "abc"), badValue + "\"abc\" is not a whole number"},
                        {withText("types", "12 13 x 10"), badValue + "\"x\" is not a whole number"},
                        {withText("types", "12 13 300 10"), unknownError},
                        {with("VTKFile", "version", "1..0"), unknownError},
                        {sound().attribute("Piece", "NumberOfPoints", "0").attribute("Piece", "NumberOfCells", "0"),
                         "None of the VTK files provided any data"}});
}

TEST(Refusals, OfMeshesHaveTheseTexts) {
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
         {withArrays("a", "a"), duplicate("a")},
         {withArrays("a", "a_Z", 3), duplicate("a_Z")},
         {withArrays("a", "X"), duplicate("X")},
         {withCells("7:3"), unsupportedCell("Polygon")},
         {withCells("81:3"), unsupportedCell("Bezier Pyramid")},
         {withCells("82:3"), unsupportedCell("Unknown")},
         {withCells("5:3 10:4"),
          "VTK cell type \"Tetra\" has a dimensionality of 3 but one or more cells of dimensionality 2 have already "
          "been discovered in this VTK file. All cell types of a zone must have the same dimensionality"},
         {withCells("21:2"), badNodeCount("Quadratic Edge", "2")},
         {sound().values("offsets", {8, 14, 19, 3}), badNodeCount("Tetra", "-16")},
         {withCells("1:1 10:4 12:8 13:6 14:5 71:4 71:10 71:20 71:35 72:8 72:27 72:64 72:125 73:6 73:18 73:40 73:75"),
          "VTK file specifies 17 unique cell type and grid orders combinations, but Veltra only supports a maximum of "
          "16 sections"},
         {withText("types", "12 13 14 10 10"), "DataArray \"types\" holds more than the 4 values that are needed"},
         {with("types", "type", "Float32"),
          "DataArray \"types\" holds floating-point numbers where integers are needed"},
         {withMarkup("NumberOfPoints=\"23\"", ""), "Zone \"mesh\" has cells but no points"}});
}

TEST(Refusals, OfDemandsHaveTheseTexts) {
    expectRefusals("",
                   {{withText("pressure", "1 2 abc"), badNumber + "\"abc\" is not a number", "pressure"},
                    {withText("connectivity", "1 2 abc"), badNodeNumber + "\"abc\" is not a whole number", "node map"},
                    {withText("material", "4000000000 2 3 4"), numberTooLarge + "0 to 255", "material"},
                    {sound().attribute("connectivity", "type", "Int32").inlineText("connectivity", "4000000000"),
                     numberTooLarge + "-2147483648 to 2147483647", "node map"}});
    const std::string beyond = sound().appendedRaw().attribute("material", "offset", "18446744073709551615").text();
    expectRefusals(inputError,
                   {{sound().base64().values("material", {1, 2, 3}),
                     "DataArray \"material\" holds 3 values but 4 are needed", "material"},
                    {sound().base64().inlineText("material", "BAAAAA==AQ*CAw=="),
                     "Found \"*\" in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected",
                     "material"},
                    {with("connectivity", "type", "Float64"),
                     "DataArray \"connectivity\" holds floating-point numbers where integers are needed", "node map"},
                    {beyond,
                     "DataArray \"material\" claims to begin at byte 18446744073709551615 but the file holds only " +
                         std::to_string(beyond.size()),
                     "material"}});
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
