#include "tests/krohost/runKrohost.h"
#include "tests/support/sound.h"
#include "tests/support/text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace {

using namespace std::string_literals;
using nlohmann::json;
using test::ElementType;
using test::repeated;
using test::sound;
using test::vtu;
using test::VtuBuilder;
using test::with;
using test::withMarkup;
using test::withText;

VtuBuilder zlib() {
    return sound().appendedRaw().compressed(64);
}

/// What else the loader does with a file that has a finding, and the finding's code.
enum class Loader { refuses, failsOnDemand, passesOver };
constexpr const char* loaderCodes[]{"load", "demand", ""};

struct Row {
    std::string file;
    std::string codes; ///< with a blank between two
    std::string place; ///< where this is in the file for the first time, the finding is
    Loader loader = Loader::refuses;
};

/// LINE:COLUMN of the first occurrence.
std::string lineAndColumn(const std::string& text, const std::string& place) {
    const std::size_t at = text.find(place);
    const std::string before = text.substr(0, at);
    return fmt::format("{}:{}", 1 + std::ranges::count(before, '\n'), at - (before.rfind('\n') + 1) + 1);
}

json check(const test::TemporaryFolder& folder, const std::string& arguments) {
    return json::parse(runKrohost(folder, "check --json " + arguments).output);
}

/// Whether a finding is one that a load or demand makes, without a place in a file.
bool isOfLoad(const json& finding) {
    return finding["line"].is_null();
}

std::string codes(const json& findings) {
    std::string text;
    for (const json& finding : findings)
        text += finding["code"].get<std::string>() + ' ';
    return text;
}

/// Checks all rows in one run, of which each file is a load of its own.
void expectFindings(const std::vector<Row>& rows, const char* options) {
    const test::TemporaryFolder folder;
    for (std::size_t index = 0; index < rows.size(); ++index)
        folder.write(fmt::format("row{}.vtu", index), rows[index].file);
    const json document = check(folder, options + " 'row*.vtu'"s);
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const Row& row = rows[index];
        std::string findings, loading;
        const std::string place = lineAndColumn(row.file, row.place);
        for (const json& finding : document["findings"]) {
            if (finding["file"] != fmt::format("row{}.vtu", index))
                continue;
            if (isOfLoad(finding))
                loading = finding["code"];
            else {
                findings += (findings.empty() ? "" : " ") + finding["code"].get<std::string>();
                EXPECT_EQ(fmt::format("{}:{}", finding["line"].get<int>(), finding["column"].get<int>()), place)
                    << findings << ", row " << index;
            }
        }
        EXPECT_EQ(findings, row.codes) << "row " << index;
        EXPECT_EQ(loading, loaderCodes[static_cast<int>(row.loader)]) << row.codes << ", row " << index;
    }
}

const char* const pressure = "<DataArray type=\"Float32\" Name=\"pressure\"";
const char* const points = "<DataArray type=\"Float32\" Name=\"Points\"";
const char* const connectivity = "<DataArray type=\"Int64\" Name=\"connectivity\"";
const char* const offsets = "<DataArray type=\"Int64\" Name=\"offsets\"";
const char* const material = "<DataArray type=\"UInt8\" Name=\"material\"";
const char* const types = "<DataArray type=\"UInt8\" Name=\"types\"";

test::MeshPiece withArray(test::Array array) {
    return test::mixed().withPointData(std::move(array));
}

} // namespace

TEST(Check, ExplainsWhatALoaderRefusesAndWhere) {
    const std::string soundText = sound().text();
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const auto wideBlocks = [](const std::vector<std::int64_t>& values) {
        return sound().appendedRaw().compressed().header64().values("types", values);
    };
    expectFindings(
        {{"", "xml", ""},
         {"\xFF\xFE<\0"s, "utf-16", ""},
         {"<other/>", "file-type", "<other"},
         {vtu(), "no-data", "<VTKFile"},
         {soundText.substr(0, soundText.find("<Cells") + 6), "xml", "<Cells"},
         {withMarkup("</Cells>", "<!-- --\n_ --->\1</Cell>"), "xml", "Cell>"},
         {with("VTKFile", "type", std::nullopt), "file-type", "<VTKFile"},
         {with("VTKFile", "type", "StructuredGrid"), "file-type", "<VTKFile"},
         {with("VTKFile", "version", "1.x"), "version", "<VTKFile"},
         {with("VTKFile", "version", "1..0"), "version", "<VTKFile"},
         {with("VTKFile", "version", "99999999999.0"), "version", "<VTKFile"},
         {with("VTKFile", "byte_order", "Middle"), "byte-order", "<VTKFile"},
         {with("VTKFile", "compressor", "vtkLZ4DataCompressor"), "compressor", "<VTKFile"},
         {with("VTKFile", "header_type", "UInt16"), "header-type", "<VTKFile"},
         {with("pressure", "format", "hex"), "array-format", pressure},
         {with("pressure", "type", "float32"), "array-type", "<DataArray Name=\"pressure\""},
         {with("types", "format", "hex").inlineText("pressure", repeated("1\n 2", 60'000)), "array-format", types},
         {with("types", "format", "hex").inlineText("pressure", repeated("1 ", 99'999)), "array-format", types},
         {with("Piece", "NumberOfPoints", "abc"), "number", "<Piece"},
         {with("pressure", "NumberOfComponents", "32768"), "number", pressure},
         {sound().appendedRaw().attribute("AppendedData", "encoding", "zip"), "appended-encoding", "<AppendedData"},
         {withMarkup("</UnstructuredGrid>", "<AppendedData encoding=\"raw\"></AppendedData></UnstructuredGrid>"),
          "appended-prefix", "</AppendedData"},
         {sound().appendedRaw().markup("</Cells>\n</Piece>\n</UnstructuredGrid>\n", ""), "appended-data-place",
          "<AppendedData"},
         {with("Piece", "a:b", "c"), "xml", "<Piece"},
         {withMarkup("<UnstructuredGrid>", "<DataSet file=\"a.vtu\"/>"
                                           "<UnstructuredGrid>"),
          "stray-element", "<DataSet"},
         {with("Piece", "a", std::string(0x10000, 'x')), "tag-too-long", "<Piece"},
         {with("Piece", "a", std::string(999, '=')), "tag-characters", "<Piece"}, // with those of two attributes
         {with("Points", "NumberOfComponents", "4"), "points", points},
         {withMarkup("</Points>", "<DataArray NumberOfComponents=\"0\"/></Points>"), "points",
          "<DataArray NumberOfComponents=\"0\""},
         {withMarkup("\"types\"", "\"kinds\""), "cell-arrays", "<Piece"},
         {with("types", "type", "Float32"), "cell-arrays", "<DataArray Name=\"types\""},
         {withMarkup("</Cells>", "<DataArray type=\"Int64\" Name=\"faces\">1 2 3</DataArray></Cells>"), "cell-arrays",
          "<Piece"},
         {vtu().piece(test::hexahedron()).piece(test::singleCell(10)), "pieces-differ", "<Piece NumberOfPoints=\"4\""},
         {vtu().piece(withArray(test::variedValues("velocity_Z", ElementType::Int8, 23))), "duplicate-variable",
          "<DataArray type=\"Int8\" Name=\"velocity_Z\""},
         {withText("Points", "1 2 3"), "value-count", points},
         {withText("types", "12 13 42 10"), "cell-type", types},
         {withText("types", "12 13 14 9"), "mixed-dimensions", types},
         {sound().values("offsets", {8, 14, 20, 24}), "cell-nodes", offsets},
         {sound().appendedRaw().headerWord("Points", 0, 1000000), "data-beyond-file", points},
         {zlib().headerWord("Points", 0, 1000000), "table-beyond-file", points},
         {wideBlocks(test::numbers(4)).headerWord("types", 2, most), "size-overflow", types},
         {wideBlocks(test::numbers(4)).headerWord("types", 3, most), "data-beyond-file", types},
         {wideBlocks(test::numbers(80000)).headerWord("types", 1, most), "size-overflow", types},
         {sound().base64().headerWord("pressure", 0, 88), "value-count", pressure, Loader::failsOnDemand},
         {sound().appendedRaw().attribute("Points", "offset", "99999"), "outside-file", points}},
        "--explain");
}

TEST(Check, GoesDeepIntoWhatALoaderPassesOver) {
    constexpr auto least = std::numeric_limits<std::int64_t>::min(), most = std::numeric_limits<std::int64_t>::max();
    const double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
    std::vector<double> odd(23, 1.0);
    odd[3] = nan, odd[7] = odd[8] = infinity;
    std::string damaged = zlib().text();
    damaged[damaged.find('_', damaged.find("<AppendedData")) + 1 + 6 * 4] ^= 0x55; // after the table of two blocks
    expectFindings(
        {{damaged, "damaged-block", pressure, Loader::passesOver},
         {zlib().headerWord("pressure", 2, 24), "wrong-block-size", pressure, Loader::failsOnDemand},
         {withText("pressure", "1 x"), "foreign-text", pressure, Loader::failsOnDemand},
         {withText("pressure", "1e-99 1e39"), "foreign-text", pressure, Loader::failsOnDemand},
         {sound().base64().inlineText("pressure", "XAAA?AAA"), "foreign-text", pressure, Loader::failsOnDemand},
         {sound().values("types", {12, 13, 14, 10, 42}), "value-count", types, Loader::passesOver},
         {sound().values("material", test::numbers(5)).base64(), "value-count", material, Loader::passesOver},
         {sound().values("connectivity", test::numbers(24)), "connectivity", connectivity, Loader::passesOver},
         {vtu().piece(withArray(reals("p", ElementType::Float64, odd))).appendedRaw(), "not-finite",
          "<DataArray type=\"Float64\" Name=\"p\"", Loader::passesOver},
         {with("pressure", "NumberOfTuples", "22"), "tuple-count", pressure, Loader::passesOver},
         {sound().values("offsets", {8, 14, 19, 3}), "offsets", offsets},
         {sound().values("offsets", {least, most, 19, 23}), "offsets cell-nodes", offsets},
         {sound().values("connectivity", test::numbers(22)).base64(), "connectivity", connectivity,
          Loader::failsOnDemand}},
        "--deep");
    const auto piece = [](int components) {
        return test::hexahedron().withPointData(test::variedValues("w", ElementType::Float32, 8, components));
    };
    expectFindings({{withText("pressure", "1 2 3"), "value-count", pressure, Loader::failsOnDemand}, // once
                    {vtu().piece(piece(1)).piece(piece(2)), "surplus-components",
                     "<DataArray type=\"Float32\" Name=\"w\" NumberOfComponents=\"2\"", Loader::passesOver}},
                   "--deep --explain");
}

TEST(Check, NodeNumbersAreComparedInTheHostAndInTheFile) {
    const test::TemporaryFolder folder;
    std::vector<std::int64_t> nodes = test::numbers(23);
    nodes[5] = 23;
    sound().values("connectivity", nodes).write(folder / "a.vtu");
    EXPECT_EQ(codes(check(folder, "a.vtu")["findings"]), "node-map ");
    EXPECT_EQ(codes(check(folder, "a.vtu --deep")["findings"]), "node-map node-number ");
}

TEST(Check, FindsNothingInSoundFiles) {
    const test::TemporaryFolder folder;
    int number = 0;
    for (const test::Encoding& encoding : test::allEncodings())
        sound().piece(test::mixed()).timeValue(0.5).encoding(encoding).write(folder / fmt::format("{}.vtu", number++));
    const auto writeOdd = [&](const std::string& encoding, const std::string& name, const std::string& between) {
        const std::string text = withMarkup("<UnstructuredGrid>", "<UnstructuredGrid>" + between)
                                     .appendedRaw()
                                     .attribute("pressure", "Name", name)
                                     .text();
        const std::string declaration = "<?xml version=\"1.0\"";
        folder.write(fmt::format("{}.vtu", number++), text.starts_with(declaration)
                                                          ? declaration + encoding + text.substr(declaration.size())
                                                          : declaration + encoding + "?>\n" + text);
    };
    for (const auto& between : {"<!-- a -- \xFF --->"s, " & &nbsp; ]]> \1 \0"s, "<?xml a?><?a:b c?>"s,
                                "<![CDATA[<\xFF]]]>"s, "<!--" + std::string(9 << 20, '-') + "-->"})
        writeOdd("", "p", between);
    writeOdd(" encoding=\"utf8\"", "\u03C0", "");
    writeOdd(" encoding=\"windows-1252\"", "\x80", "");
    for (const char* files : {"'*.vtu'", "'" SAMPLES "/*.vtu'"}) {
        const json document = check(folder, std::string("--explain --deep ") + files);
        EXPECT_EQ(document["findings"], json::array()) << document.dump(1);
        EXPECT_GT(document["counts"]["zones"], 10);
        EXPECT_EQ(document["counts"]["arrays"], document["counts"]["loadedArrays"]);
    }
}

TEST(Check, LooksIntoTheMembersOfACollection) {
    const test::TemporaryFolder folder;
    with("VTKFile", "byte_order", "Middle").write(folder / "bad.vtu");
    folder.write("inner.vtm", "<VTKFile type=\"vtkMultiBlockDataSet\"><DataSet file=\"bad.vtu\"/></VTKFile>");
    const std::string missing = std::string(100, 'n') + ".vtu";
    folder.write("all.vtm", "<VTKFile type=\"vtkMultiBlockDataSet\">\n<DataSet file=\"bad.vtu\"/>\n"
                            "<DataSet file=\"" +
                                missing + "\"/><DataSet file=\"inner.vtm\"/> <DataSet/>\n</VTKFile>");
    const Outcome outcome = runKrohost(folder, "check --explain all.vtm");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output,
              "all.vtm: error: the file was not loaded [load]\n"
              "all.vtm:3:1: error: there is no file \"" +
                  missing +
                  "\" [missing-member]\n"
                  "all.vtm:3:151: error: DataSet names no file (accepted: the attribute file) [member-without-file]\n"
                  "bad.vtu:2:1: error: the byte_order \"Middle\" of VTKFile is not read (accepted: \"LittleEndian\", "
                  "\"BigEndian\", or no such attribute) [byte-order]\n"
                  "inner.vtm:1:1: error: a collection names another collection (accepted: grids) [nested-collection]\n"
                  "0 arrays in 0 zones loaded, 5 problems\n");
}

TEST(Check, SumsUpAndSaysWhyInItsExitCode) {
    const test::TemporaryFolder folder;
    sound().write(folder / "sound.vtu");
    withText("pressure", "x").write(folder / "bad.vtu");
    test::odd(sound()).write(folder / "odd.vtu");
    const Outcome odd = runKrohost(folder, "check --explain odd.vtu");
    EXPECT_EQ(odd.exitCode, 0);
    EXPECT_NE(odd.output.find("odd.vtu:3:19: warning: the document is not well-formed XML: "), std::string::npos)
        << odd.output;
    auto many = test::hexahedron();
    for (int number = 0; number <= 1000; ++number)
        many =
            many.withPointData(reals(std::to_string(number), test::ElementType::Float32, std::vector<double>(8, NAN)));
    test::vtu().piece(many).write(folder / "nan.vtu");
    const Outcome nan = runKrohost(folder, "check --deep nan.vtu");
    EXPECT_EQ(nan.exitCode, 0);
    EXPECT_NE(nan.output.find("warning: 1 findings more"), std::string::npos) << nan.output.substr(0, 500);
    const Outcome strict = runKrohost(folder, "dump --strict --variable X odd.vtu");
    EXPECT_EQ(strict.exitCode, 1);
    EXPECT_EQ(strict.errors.find("krohost: warning: What is lost of \"odd.vtu\" cannot be told: "), 0);
    const Outcome bad = runKrohost(folder, "check bad.vtu sound.vtu -j 2");
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.output, "bad.vtu: error: variable 4 \"pressure\" of zone 1 \"bad\" was not loaded [demand]\n"
                          "17 of 18 arrays in 2 zones loaded, 1 problem\n");
    EXPECT_NE(bad.errors.find("VTK Data Loader: "), std::string::npos);
}
