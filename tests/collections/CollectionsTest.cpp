#include "krohost/host/runtime/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>

namespace {

using test::ElementType;
using test::TemporaryFolder;
using test::vtu;

test::VtuBuilder cube() {
    return vtu().piece(test::hexahedron());
}

std::string blocks(const std::string& content) {
    return R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet>)" + content +
           "</vtkMultiBlockDataSet></VTKFile>";
}

std::string parallel(const std::string& content) {
    return R"(<VTKFile type="PUnstructuredGrid"><PUnstructuredGrid>)" + content + "</PUnstructuredGrid></VTKFile>";
}

/// Loads by instructions; the text of each zone that came of it, or of the dialogs.
template <class ZoneText>
std::string outcome(std::vector<std::string> instructions, const ZoneText& zoneText) {
    krohost::Host host;
    host.loadAddOn(ADD_ON);
    instructions.insert(instructions.begin(), {"STANDARDSYNTAX", "1.0"});
    host.loadInstructions(host.loaders().front(), instructions);
    std::string text;
    for (const krohost::Zone& zone : host.dataset().zones)
        text += zoneText(zone) + " ";
    for (const krohost::Dialog& dialog : host.dialogs())
        text += dialog.text;
    host.shutDown();
    EXPECT_EQ(host.violations(), std::vector<std::string>{});
    return text;
}

} // namespace

TEST(Collections, NameTheirMembersAndTheZonesTheyBecome) {
    const TemporaryFolder folder;
    for (const char* name : {"p.vtu", "sub/q.vtu", "größe 2.vtu"})
        folder.write(name, cube().text());
    folder.write("void.vtu", R"(<VTKFile type="UnstructuredGrid"><UnstructuredGrid><Piece NumberOfPoints="0"><Points/>
                                </Piece></UnstructuredGrid></VTKFile>)");
    const std::string absolute = folder / "p.vtu";
    const std::string failed = "VTK Data Loader: An error occurred while reading data from the VTK file.\nReason: ";
    const std::string nested = failed + "Parallel and Multi-block files cannot be nested";
    // file, text, "name[block]" of its zones
    const std::vector<std::array<std::string, 3>> rows{
        {"case.vtm",
         blocks(R"(<DataSet file="p.vtu"/><Block name="outer"><DataSet file="sub/q.vtu" name="first"/><Block name="in">
                   <DataSet index="0" file="p.vtu" name="second"/></Block><DataSet file="p.vtu" name="third"/></Block>
                   <Block index="2" Name="last"><Piece name="none"><DataSet file="p.vtu" Name="fourth"/></Piece></Block>
                   <Block><DataSet file="p.vtu" name="fifth"/></Block>)"),
         "case[] first[outer] second[in] third[] fourth[last] fifth[] "},
        {"names.vtm",
         blocks(R"(<DataSet file="größe 2.vtu" name="a &lt; ö"/><DataSet file=")" + absolute + "\" name='n'/>"),
         "a < ö[] n[] "},
        {"case.pvtu",
         parallel(R"(<PPoints><PDataArray type="Float32" NumberOfComponents="3"/></PPoints><Piece Source="sub/q.vtu"/>
                     <Piece Source="größe 2.vtu"/>)"),
         "q[] größe 2[] "},
        {"void.pvtu", parallel(R"(<Piece Source="void.vtu"/><Piece Source="p.vtu"/><Piece Source="void.vtu"/>)"),
         "p[] "},
        {"absolute.pvtu", parallel("<Piece Source='" + absolute + "'/>"), "p[] "},
        {"sub/up.pvtu", parallel(R"(<Piece Source="../p.vtu"/>)"), "p[] "},
        {"nested.vtm", blocks(R"(<DataSet file="p.vtu"/><DataSet file="sub/up.pvtu"/>)"), nested},
        {"nested.pvtu", parallel(R"(<Piece Source="case.vtm"/>)"), nested},
        {"missing.vtm", blocks(R"(<DataSet file="p.vtu"/><DataSet file="gone.vtu"/>)"),
         failed + "Failed to open VTK file for reading"},
        {".vtu", cube().text(), ".vtu[] "},
        {"é\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xE2\x82 😀.vtu", cube().text(),
         "é\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD 😀[] "},
        {"empty.vtm", blocks(""), failed + "VTK unstructured file doesn't appear to contain any Piece data"}};
    const auto nameAndBlock = [](const krohost::Zone& zone) {
        const auto block = zone.auxiliaryData.find("Block.name");
        return zone.name + "[" + (block == zone.auxiliaryData.end() ? "" : block->second) + "]";
    };
    for (const auto& [file, text, zones] : rows)
        EXPECT_EQ(outcome({"FILENAME_FILE", folder.write(file, text)}, nameAndBlock), zones) << file;
}

TEST(Collections, GiveTheirMembersTheFirstOfTheirFieldData) {
    const TemporaryFolder folder;
    cube().write(folder / "p.vtu");
    std::string arrays;
    for (int array = 0; array < 120; ++array)
        arrays += "<DataArray type='Int8' format='ascii' Name='f" + std::to_string(array) + "'>7</DataArray>";
    const std::string path =
        folder.write("many.vtm", blocks("<FieldData>" + arrays + R"(</FieldData><DataSet file="p.vtu"/>)"));
    const auto pairs = [](const krohost::Zone& zone) {
        return std::to_string(zone.auxiliaryData.size()) + zone.auxiliaryData.at("f99");
    };
    EXPECT_EQ(outcome({"FILENAME_FILE", path}, pairs), "1007 ");
}

TEST(FieldData, ThatCannotBeReadAreLeftOut) {
    const TemporaryFolder folder;
    const auto timeAndTexts = [](const krohost::Zone& zone) {
        std::string text = (std::ostringstream{} << zone.solutionTime).str();
        for (const auto& [name, value] : zone.auxiliaryData)
            text += " " + name + "=" + value;
        return text;
    };
    const auto loaded = [&](const std::string& text) {
        return outcome({"FILENAME_FILE", folder.write("a.vtu", text)}, timeAndTexts);
    };
    const std::string time = "<DataArray Name='TimeValue' ", sound = time + "type='Float64'>4</DataArray>";
    const std::vector<std::pair<std::string, std::string>> rows{
        {time + "type='Float64'>1.#QNAN</DataArray>", "0 "},
        {time + "type='Int8'>300</DataArray>", "0 "},
        {time + ">n/a</DataArray>" + sound, "4 TimeValue=4 "},
        {time + "type='String'>1</DataArray>" + sound, "4 TimeValue=4 "},
        {time + "format='hex'>1</DataArray>" + sound, "4 TimeValue=4 "},
        {time + "NumberOfComponents='x'>1</DataArray>", "0 "},
        {time + "NumberOfComponents='70000'>1</DataArray>", "0 "},
        {time + "NumberOfComponents='40000'>1</DataArray>", "0 "},
        {time + "format='appended' offset='x'/>", "0 "},
        {time + "format='appended' offset='99999999999999999999'/>", "0 "},
        {time + "format='appended' offset='999999'/>", "0 "},
        {time + "format='binary'>?AAA</DataArray>", "0 "},
        {time + "format='binary'>/////wAA</DataArray>", "0 "},
        {time + ">" + std::string(0x10001, '0') + "</DataArray>", "0 "},
        {time + "type='Float64'>3</DataArray>" + sound, "3 TimeValue=3 "},
        {time + "type='Float64'>nan</DataArray>" + sound, "0 TimeValue=nan "}};
    for (const auto& [arrays, expected] : rows)
        EXPECT_EQ(loaded(cube().markup("<Piece", "<FieldData>" + arrays + "</FieldData><Piece").text()), expected)
            << arrays.substr(0, 100);

    const test::Encoding zlib{test::Format::AppendedRaw, true};
    const std::string text = cube().timeValue(2.5).encoding(zlib).text(),
                      stored = encodedArray(reals("TimeValue", ElementType::Float64, {2.5}), zlib);
    constexpr std::size_t tableByteCount = 4 * 4;
    for (std::size_t place = tableByteCount; place < stored.size(); ++place) {
        std::string damaged = text;
        damaged.at(damaged.find(stored) + place) ^= 0x55;
        EXPECT_EQ(loaded(damaged), "0 ") << place;
    }
}

TEST(SolutionTimes, MayHaveAnyTypeAndEncoding) {
    using test::Format;
    const TemporaryFolder folder;
    const auto time = [](const krohost::Zone& zone) { return zone.auxiliaryData.at("time"); };
    for (int type = 0; type < 10; ++type)
        for (const test::Encoding& encoding : {test::Encoding{}, {Format::AppendedRaw}, {Format::Base64, true, true}}) {
            const auto element = static_cast<ElementType>(type);
            const bool isReal = element == ElementType::Float32 || element == ElementType::Float64;
            cube()
                .fieldData(isReal ? reals("time", element, {5.5}) : integers("time", element, {5}))
                .encoding(encoding)
                .write(folder / "a.vtu");
            EXPECT_EQ(outcome({"FILENAME_FILE", folder / "a.vtu"}, time), isReal ? "5.5 " : "5 ") << encoding.name();
        }
}

TEST(SolutionTimes, ComeFromEachSourceWhereverATimeStands) {
    const TemporaryFolder folder;
    const char* own = R"(<FieldData><DataArray type="Float64" Name="TimeValue" NumberOfTuples="1" format="ascii">9
                         </DataArray></FieldData><DataSet file="p.vtu"/><DataSet file="step3.vtu"/>)";
    cube().write(folder / "p.vtu");
    cube().write(folder / "step4.vtu");
    cube().timeValue(1e-310).write(folder / "step3.vtu");
    cube().fieldData(reals("time", ElementType::Float32, {1.5})).base64().write(folder / "base64.vtu");
    cube().fieldData(integers("TIMEvalue", ElementType::Int8, {-7})).appendedRaw().write(folder / "raw.vtu");
    cube().fieldData(reals("Time", ElementType::Float64, {1, 2})).write(folder / "two.vtu");
    cube()
        .markup("<Cells>", R"(<FieldData><DataArray type="Int8" Name="time" format="ascii">6</DataArray></FieldData>
                              <Cells>)")
        .write(folder / "inPiece.vtu");
    cube().fieldData(reals("times", ElementType::Float64, {1})).write(folder / "other.vtu");
    cube()
        .markup("<UnstructuredGrid>", R"(<UnstructuredGrid><FieldData>
        <DataArray type="Float64" Name="TimeValue" format="appended"/></FieldData>)")
        .write(folder / "lost.vtu");
    folder.write("own.vtm", blocks(own));
    folder.write("members.pvtu",
                 parallel(R"(<Piece Source="p.vtu"/><Piece Source="base64.vtu"/><Piece Source="raw.vtu"/>)"));
    using Texts = std::vector<std::string>;
    const std::vector<std::tuple<Texts, Texts, const char*>> rows{
        {{"step3.vtu", "base64.vtu", "raw.vtu", "p.vtu"}, {}, "1e-310 1.5 -7 0 "},
        {{"two.vtu", "other.vtu", "lost.vtu", "p.vtu"}, {}, "0 0 0 0 "},
        {{"inPiece.vtu"}, {}, "6 "},
        {{"own.vtm", "step3.vtu"}, {}, "9 9 1e-310 "},
        {{"members.pvtu", "step4.vtu"}, {}, "1.5 1.5 1.5 0 "},
        {{"step4.vtu", "step4.vtu"}, {}, "4 4 "},
        {{"step4.vtu", "p.vtu"}, {}, "0 0 "},
        {{"step4.vtu"}, {"SOLUTIONTIMESOURCE", "fromfielddata"}, "0 "},
        {{"step3.vtu"}, {"SOLUTIONTIMESOURCE", "FROMFILENAME"}, "3 "},
        {{"step3.vtu", "p.vtu"}, {"SOLUTIONTIMESOURCE", "FROMFILENAME"}, "0 0 "},
        {{"step3.vtu", "own.vtm"}, {"SOLUTIONTIMESOURCE", "NONE"}, "0 0 0 "},
        {{"step3.vtu", "own.vtm"}, {"SOLUTION_TIMES", "3", "5", "x", "1e-9"}, "5 1e-09 1e-09 "},
        {{"step3.vtu"}, {"SOLUTIONTIMESOURCE", "AUTO", "SOLUTION_TIMES", "1", "0"}, "0 "}};
    const auto time = [](const krohost::Zone& zone) { return (std::ostringstream{} << zone.solutionTime).str(); };
    for (const auto& [files, more, times] : rows) {
        Texts instructions{"FileList_DataFiles", std::to_string(files.size())};
        for (const std::string& file : files)
            instructions.push_back(folder / file);
        instructions.insert(instructions.end(), more.begin(), more.end());
        EXPECT_EQ(outcome(instructions, time), times) << testing::PrintToString(files);
    }
}
