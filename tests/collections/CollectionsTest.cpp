#include "krohost/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

namespace {

using test::ElementType;
using test::TemporaryFolder;
using test::vtu;

test::VtuBuilder cube() {
    return vtu().piece(test::hexahedron());
}

std::string blocks(const std::string& content) {
    return R"(<VTKFile type="vtkMultiBlockDataSet" version="1.0"><vtkMultiBlockDataSet>)" + content +
           "</vtkMultiBlockDataSet></VTKFile>";
}

std::string parallel(const std::string& content) {
    return R"(<VTKFile type="PUnstructuredGrid" version="1.0"><PUnstructuredGrid GhostLevel="0">)" + content +
           "</PUnstructuredGrid></VTKFile>";
}

/// Loads by instructions; the text of each zone that came of it, or of the dialogs.
template <class ZoneText>
std::string outcome(std::vector<std::string> instructions, const ZoneText& zoneText) {
    krohost::Host host;
    host.loadAddOn(ADD_ON);
    instructions.insert(instructions.begin(), {"STANDARDSYNTAX", "1.0"});
    const bool isLoaded = host.loadInstructions(host.loaders().front(), instructions);
    std::string text;
    for (const krohost::Zone& zone : host.dataset().zones)
        text += zoneText(zone) + " ";
    for (const krohost::Dialog& dialog : host.dialogs())
        text += dialog.text;
    EXPECT_NE(isLoaded, host.dataset().zones.empty());
    host.shutDown();
    EXPECT_EQ(host.violations(), std::vector<std::string>{});
    return text;
}

} // namespace

TEST(Collections, NameTheirMembersAndTheZonesTheyBecome) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    for (const char* name : {"p.vtu", "sub/q.vtu", "two words.vtu", "größe.vtu"})
        cube().write(folder.write(name, ""));
    cube().write(elsewhere / "far.vtu");
    folder.write("inner.pvtu", parallel(R"(<Piece Source="p.vtu"/>)"));
    const std::string far = (elsewhere / "far.vtu").string();
    const std::string failed = "VTK Data Loader: An error occurred while reading data from the VTK file.\nReason: ";
    struct Row {
        const char* file;
        std::string text;
        std::string zones; // "name[block]"
    };
    const std::vector<Row> rows{
        {"case.vtm",
         blocks(R"(<DataSet file="p.vtu"/><Block name="outer"><DataSet file="sub/q.vtu" name="first"/><Block name="in">
                   <DataSet index="0" file="p.vtu" name="second"/></Block><DataSet file="p.vtu" name="third"/></Block>
                   <Block index="2" Name="last"><Piece name="none"><DataSet file="p.vtu" Name="fourth"/></Piece></Block>
                   <Block><DataSet file="p.vtu" name="fifth"/></Block>)"),
         "case[] first[outer] second[in] third[] fourth[last] fifth[] "},
        {"names.vtm",
         blocks(R"(<DataSet file="two words.vtu" name="two words"/><DataSet file="größe.vtu" name="a &lt; ö"/>)"),
         "two words[] a < ö[] "},
        {"case.pvtu",
         parallel(R"(<PPoints><PDataArray type="Float32" NumberOfComponents="3"/></PPoints><Piece Source="sub/q.vtu"/>
                     <Piece Source="two words.vtu"/><Piece Source="größe.vtu"/>)"),
         "q[] two words[] größe[] "},
        {"far.vtm", blocks(R"(<DataSet file=")" + far + R"(" name="n"/>)"), "n[] "},
        {"far.pvtu", parallel(R"(<Piece Source=")" + far + R"("/>)"), "far[] "},
        {"sub/up.pvtu", parallel(R"(<Piece Source="../p.vtu"/>)"), "p[] "},
        {"nested.vtm", blocks(R"(<DataSet file="p.vtu"/><DataSet file="inner.pvtu"/>)"),
         failed + "Parallel and Multi-block files cannot be nested"},
        {"nested.pvtu", parallel(R"(<Piece Source="case.vtm"/>)"),
         failed + "Parallel and Multi-block files cannot be nested"},
        {"missing.vtm", blocks(R"(<DataSet file="p.vtu"/><DataSet file="gone.vtu"/>)"),
         failed + "Failed to open VTK file for reading"},
        {"empty.vtm", blocks(""), failed + "VTK unstructured file doesn't appear to contain any Piece data"}};
    const auto nameAndBlock = [](const krohost::Zone& zone) {
        const auto block = zone.auxiliaryData.find("Block.name");
        return zone.name + "[" + (block == zone.auxiliaryData.end() ? "" : block->second) + "]";
    };
    for (const Row& row : rows)
        EXPECT_EQ(outcome({"FILENAME_FILE", folder.write(row.file, row.text)}, nameAndBlock), row.zones) << row.file;
}

TEST(SolutionTimes, ComeFromEachSourceWhereverATimeStands) {
    const TemporaryFolder folder;
    const std::string own =
        R"(<FieldData><DataArray type="Float64" Name="TimeValue" NumberOfTuples="1" format="ascii">9</DataArray>
           </FieldData>)";
    cube().write(folder / "p.vtu");
    cube().write(folder / "step4.vtu");
    cube().timeValue(0.25).write(folder / "step3.vtu");
    cube().fieldData(reals("time", ElementType::Float32, {1.5})).base64().write(folder / "base64.vtu");
    cube()
        .fieldData(integers("TIMEvalue", ElementType::Int8, {-7}))
        .appendedRaw()
        .compressed()
        .header64()
        .write(folder / "raw.vtu");
    cube().timeValue(1e-300).appendedBase64().bigEndian().write(folder / "appended.vtu");
    cube().fieldData(reals("Time", ElementType::Float64, {1, 2})).write(folder / "two.vtu");
    cube().fieldData(reals("times", ElementType::Float64, {1})).write(folder / "other.vtu");
    folder.write("own.vtm", blocks(own + R"(<DataSet file="p.vtu"/><DataSet file="step3.vtu"/>)"));
    folder.write("members.pvtu",
                 parallel(R"(<Piece Source="p.vtu"/><Piece Source="base64.vtu"/><Piece Source="raw.vtu"/>)"));
    struct Row {
        std::vector<std::string> files;
        std::vector<std::string> instructions;
        const char* times;
    };
    const std::vector<Row> rows{
        {{"step3.vtu", "base64.vtu", "raw.vtu", "appended.vtu", "p.vtu"}, {}, "0.25 1.5 -7 1e-300 0 "},
        {{"two.vtu", "other.vtu", "p.vtu"}, {}, "0 0 0 "},
        {{"own.vtm", "step3.vtu"}, {}, "9 9 0.25 "},
        {{"members.pvtu", "step4.vtu"}, {}, "1.5 1.5 1.5 0 "},
        {{"step4.vtu", "step4.vtu"}, {}, "4 4 "},
        {{"step4.vtu", "p.vtu"}, {}, "0 0 "},
        {{"step4.vtu"}, {"SOLUTIONTIMESOURCE", "fromfielddata"}, "0 "},
        {{"step3.vtu"}, {"SOLUTIONTIMESOURCE", "FROMFILENAME"}, "3 "},
        {{"step3.vtu", "p.vtu"}, {"SOLUTIONTIMESOURCE", "FROMFILENAME"}, "0 0 "},
        {{"step3.vtu", "own.vtm"}, {"SOLUTIONTIMESOURCE", "NONE"}, "0 0 0 "},
        {{"step3.vtu", "own.vtm"}, {"SOLUTION_TIMES", "2", "5", "1e-9"}, "5 1e-09 1e-09 "},
        {{"step3.vtu"}, {"SOLUTIONTIMESOURCE", "AUTO", "SOLUTION_TIMES", "1", "0"}, "0 "}};
    const auto time = [](const krohost::Zone& zone) { return (std::ostringstream{} << zone.solutionTime).str(); };
    for (const Row& row : rows) {
        std::vector<std::string> instructions{"FILELIST_DATAFILES", std::to_string(row.files.size())};
        for (const std::string& file : row.files)
            instructions.push_back(folder / file);
        instructions.insert(instructions.end(), row.instructions.begin(), row.instructions.end());
        EXPECT_EQ(outcome(instructions, time), row.times) << testing::PrintToString(row.files);
    }
}
