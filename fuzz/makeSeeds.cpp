// Writes the inputs that fuzzing starts from, a folder for each target:
//
//     fuzz_seeds DIR
//
// Inputs that a fuzzer found are added to these folders by hand.

#include "fuzz/inflateSeeds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <cmath>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace test;

using Inputs = std::map<std::string, std::string>;

/// Two pieces with a point, a cell and a field array in each encoding, and what is not mesh.
Inputs files() {
    Inputs files;
    const MeshPiece piece = singleCell(10)
                                .withPointData(variedValues("v", ElementType::Int64, 4, 3))
                                .withCellData(integers("c", ElementType::UInt8, {7}));
    for (const Encoding& encoding : allEncodings())
        if (!encoding.bigEndian)
            files[encoding.name()] = vtu().piece(piece).piece(piece).timeValue(1.5).encoding(encoding).text();
    files["mixed"] = vtu().piece(mixed()).piece(mixed()).appendedRaw().bigEndian().text();
    files["points"] = vtu().piece(singleCell(1)).version({2, 1}).text();
    files["high order"] = vtu().piece(singleCell(72, 3)).base64().compressed(100).text();
    files["no cells"] =
        "<VTKFile type='UnstructuredGrid'><UnstructuredGrid><Piece NumberOfPoints='1'><Points><DataArray "
        "NumberOfComponents='1'>1</DataArray></Points><Cells><DataArray Name='connectivity'/><DataArray "
        "Name='offsets'/><DataArray Name='types'/></Cells></Piece></UnstructuredGrid></VTKFile>";
    files["short"] = "<VTKFile type='UnstructuredGrid'><Piece NumberOfPoints='1'><PointData>"
                     "<DataArray>1</DataArray></PointData></Piece></VTKFile>";
    return files;
}

/// Some files once for each format, which the sum of their bytes chooses.
Inputs conversions() {
    Inputs inputs = files();
    for (const std::string name : {"mixed", "points", "high order"})
        for (std::size_t more = 1; more < 8; ++more)
            inputs[name + " " + std::to_string(more)] = inputs[name] + std::string(more, '\t');
    return inputs;
}

std::string blocks(const std::string& content) {
    return "<VTKFile type='vtkMultiBlockDataSet'><FieldData><DataArray Name='t'>7</DataArray></FieldData>"
           "<vtkMultiBlockDataSet>" +
           content + "</vtkMultiBlockDataSet></VTKFile>";
}

std::string parallel(const std::string& content) {
    return "<VTKFile type='PUnstructuredGrid'><PUnstructuredGrid>" + content + "</PUnstructuredGrid></VTKFile>";
}

Inputs documents() {
    Inputs documents = files();
    documents["markup"] = "\xEF\xBB\xBF<?xml version='1.0'?><!-- a > b --><VTKFile type='UnstructuredGrid' "
                          "b='&lt;>'><![CDATA[<x>]]]><?p <y> ?>"
                          "<DataArray> 1 2 </DataArray><DataArray/><n:c xmlns:n='u' n:d='e'/>text</VTKFile>";
    documents["entities"] =
        "<?xml version='1.0' encoding='ISO-8859-1'?><!DOCTYPE VTKFile [<!ENTITY e '<b>x</b>'><!-- > -->]>"
        "<VTKFile type='UnstructuredGrid' b='&e;'>&e;<DataArray>&e;</DataArray></VTKFile>";
    documents["ends early"] = "<VTKFile type='UnstructuredGrid'><DataArray>1";
    documents["parallel"] = parallel("<Piece Source='a.vtu'/>");
    documents["blocks"] = blocks("<Block name='b'><DataSet file='a.vtu' name='c'/></Block><DataSet file='/x'/>");
    return documents;
}

Inputs collections() {
    const std::string separator = "\n@@@@\n";
    const std::string member = vtu().piece(hexahedron()).timeValue(2).text();
    const std::string small = files()["no cells"];
    return {{"blocks", blocks("<Block name='b'><DataSet file='1.vtu' name='c'/></Block><DataSet file='2.vtu'/>") +
                           separator + member + separator + vtu().piece(singleCell(10)).base64().text()},
            {"parallel",
             parallel("<Piece Source='1.vtu'/><Piece Source='2.vtu'/>") + separator + small + separator + small},
            {"nested", blocks("<DataSet file='1.vtu'/>") + separator + blocks("<DataSet file='2.vtu'/>")},
            {"itself", parallel("<Piece Source='case.vtm'/>")},
            {"missing", blocks("<DataSet file='1.vtu'/><DataSet file='gone.vtu'/>") + separator + small},
            {"none", blocks("")}};
}

std::string words(const std::vector<std::uint64_t>& values, bool wide, bool bigEndian) {
    std::string bytes;
    for (const std::uint64_t value : values)
        bytes += wide ? valueBytes(value, bigEndian) : valueBytes(static_cast<std::uint32_t>(value), bigEndian);
    return bytes;
}

Inputs headers() {
    const std::vector<std::pair<std::string, std::vector<std::uint64_t>>> rows{{"none", {}},
                                                                               {"eight", {8}},
                                                                               {"blocks", {2, 16, 8, 12, 9}},
                                                                               {"no block", {0, 0, 0}},
                                                                               {"too many", {1u << 30, 16, 8}},
                                                                               {"too large", {2, ~0ull, 8, 12, 9}},
                                                                               {"too long", {2, 16, 8, 12, ~0ull}},
                                                                               {"exact", {2, 16, 8, 12, 12}},
                                                                               {"one more", {2, 16, 8, 12, 13}}};
    Inputs inputs;
    for (const auto& [name, values] : rows)
        for (const int setting : {0, 1, 2, 3}) {
            const char kind = values.size() > 1 ? 9 : 8;
            inputs[name + std::to_string(setting)] =
                std::string{static_cast<char>(setting % 2), static_cast<char>(setting / 2), kind} +
                words(values, setting % 2 == 1, setting / 2 == 1) + std::string(24, 'x');
        }
    return inputs;
}

Inputs base64s() {
    Inputs inputs;
    char chunk = 0; // or one less
    for (const std::string text :
         {"", " \n", "</DataArray>", "Zm9vYmFy", "Zg==Zm8=Zm9v", "\n Z g\n=\t= \n Zm9v ", "Zm8= \n<Zm9v", "Z", "Zm9vZm",
          "Zm9vZ\n<", "Zm9vZg=", "Zm9v!m9v", "Zm9vZm9\a", "Zm9v\x7F", "Zm9v====", "Zm9vZ===", "Zm9vZg=v"}) {
        inputs["end " + std::to_string(inputs.size())] = std::string{'\x40', chunk} + text;
        chunk = static_cast<char>((chunk + 1) % 5);
    }
    inputs.merge(
        Inputs{{"groups", "\x20\x05" + base64("any carnal pleasure") + "\n" + base64("a") + base64("ab") + " < "},
               {"no room", "\x05\x03" + base64("any carnal pleas")},
               {"blanks", "\x40\x40 Y\tW\n5\r5 \v\f"},
               {"foreign", "\x40\x07YWJj!WJj"},
               {"padding", "\x40\x07YWJj=WJjYW=j"},
               {"cut", "\x40\x07YWJjYW"},
               {"long", "\xFF\xFD" + base64(std::string(4000, 'x'))}});
    return inputs;
}

Inputs numberTexts() {
    Inputs inputs;
    for (char type = 0; type < 10; ++type) {
        const std::string key = std::to_string(type), first(1, type);
        inputs["sound" + key] = first + "1 2\n+3 0 127 00000000000000000000009 7";
        inputs["range" + key] =
            first + (type < 8 ? "5-6 18446744073709551616" : "1.5e-3-2 inf NaN 1e-400 -1e-400 1e400");
        inputs["foreign" + key] = first + (type < 8 ? "-0 1.5" : ".5 5. -infinity nan(x) 1e5 0x10");
        inputs["limits" + key] =
            first +
            "-129 -128 127 128 +255 256 -32769 -32768 32767 32768 65535 65536 -2147483649 -2147483648 2147483647 "
            "2147483648 4294967295 4294967296 -9223372036854775809 -9223372036854775808 9223372036854775807 "
            "9223372036854775808 18446744073709551615 18446744073709551616 -1 -999 +999 -0 -00 007 10-09-1 "
            "-7-8-9 \t\v\f\r\n3.4028235e38 3.5e38 +1e39 -1e400 1e309 -1e99999999999999999999 5e-324 1e-45 1e-46 "
            "-1e-60 +1e-400 0.0e-99999999999 1.5e-3 1E5 2. -.5";
        inputs["words" + key] =
            first +
            "+ - +-5 -+5 ++5 --5 --1 -1x 9999999x 5.0 A 1e3 0x10 1,5 . e5 1e 1e+ 1.5. 1.5.2 0x1p3 1e309x one in "
            "inf -INF +Infinity infi nan -nan NaN +NAN +-nan nano " +
            std::string(80, 'x');
    }
    return inputs;
}

Inputs instructionLists() {
    const std::string start = "STANDARDSYNTAX\n1.0\n";
    return {{"one", start + "FILENAME_FILE\na b.vtu"},
            {"all", start + "SOLUTIONTIMESOURCE\nFROMFILENAME\nSTRAND_ID\n3\nFILELIST_DATAFILES\n2\na\nb\n"
                            "SOLUTION_TIMES\n2\n0.5\n1e3"},
            {"no file", start + "STRAND_ID\n3"},
            {"preamble", "STANDARDSYNTAX\n2.0"},
            {"count", start + "FILELIST_DATAFILES\n9\na"},
            {"source", start + "SOLUTIONTIMESOURCE\nx"},
            {"strand", start + "STRAND_ID\nx"},
            {"keyword", start + "X"},
            {"bad count", start + "SOLUTION_TIMES\n-1"}};
}

std::string bytesOf(const std::vector<int>& values) {
    return {values.begin(), values.end()};
}

Inputs cellLists() {
    Inputs inputs;
    for (int encoding = 0; encoding < 25; encoding += 3) // hexahedra, wedges, vertices; and many, beyond a block
        inputs["some" + std::to_string(encoding)] = bytesOf({encoding, 9, 1, 6, 0, 3, 8, 0, 2, 0, 0, 1, 6, 0, 4});
    std::vector<int> many{4, 255, 1};
    for (int run = 0; run < 10; ++run)
        many.insert(many.end(), {6 + run % 3, 0, 255});
    inputs["many"] = bytesOf(many);
    inputs["dimensions"] = bytesOf({0, 0, 0, 6, 0, 0, 2, 0, 0});
    inputs["type"] = bytesOf({0, 0, 0, 215, 0, 0});
    inputs["nodes"] = bytesOf({0, 0, 0, 6, 200, 0});
    inputs["none"] = bytesOf({0, 0, 0});
    std::vector<int> kinds{0, 0, 0};
    for (const int type : {5, 6, 7, 8, 9, 12, 14, 18, 19, 20})
        for (const int order : {0, 1, 2, 3})
            kinds.insert(kinds.end(), {type, type < 18 ? 0 : order, 0});
    inputs["kinds"] = bytesOf(kinds);
    return inputs;
}

Inputs names() {
    return {{"plain", "wing \u00fc \U0001f600 \\ \"x\""},
            {"lines", "a\nb\t\n\nc\r"},
            {"controls", "\x1b[2J\a\x7f\u009b"},
            {"direction", "\u202ea\u2066\u200f\u061c"},
            {"unseen", "\u200b\u2028\ufeff\u00ad\U000e0041"},
            {"cut", "\x05"
                    "abcd\u00e4\u20ac"},
            {"not UTF-8", "\xc3\x28\xff\xed\xa0\x80\xf4\x90\x80\x80\xc0\x80"}};
}

Inputs nodeMaps() {
    Inputs inputs;
    for (int kind = 0; kind < 256; kind += 17) {
        const int encoding = kind / 10;
        std::vector<int> bytes{kind, kind, encoding, 4, 1};
        for (const int pointCount : {20, 150}) {
            bytes.insert(bytes.end(), {pointCount, kind, 11});
            for (int cell = 0; cell < 11; ++cell)
                bytes.insert(bytes.end(), {cell * 23 + kind, cell});
        }
        inputs["sound" + std::to_string(kind)] = bytesOf(bytes);
        bytes.push_back(kind + 1);
        inputs["damaged" + std::to_string(kind)] = bytesOf(bytes);
    }
    return inputs;
}

Inputs valueLists() {
    Inputs inputs;
    for (int type = 0; type < 10; ++type)
        for (int stored = 0; stored < 5; ++stored) {
            const Array array = variedValues("a", static_cast<ElementType>(type), 7);
            const Encoding raw{Format::AppendedRaw, false, stored % 2 == 1};
            inputs[std::to_string(type) + std::to_string(stored)] =
                bytesOf({type, stored, (type + stored) % 4, stored, stored / 2}) + encodedArray(array, raw).substr(4);
        }
    for (int stored = 0; stored < 5; ++stored) // a component that the tuples do not have
        inputs["none" + std::to_string(stored)] = bytesOf({4, stored, stored % 4, 1, 2}) + inputs["40"].substr(5);
    const Array limits = reals("a", ElementType::Float64,
                               {-2147483648.0, 2147483648.0, -2147483649.0, 1e300, std::nan(""), 70000.7, -1.9});
    for (int stored = 0; stored < 5; ++stored)
        inputs["limits" + std::to_string(stored)] =
            bytesOf({9, stored, 0, 0, 0}) + encodedArray(limits, {Format::AppendedRaw}).substr(4);
    return inputs;
}

/// Files that need repair, or cannot be repaired.
Inputs brokenFiles() {
    const VtuBuilder sound = vtu().piece(mixed());
    return {{"two dimensions", vtu().piece(sideBySide({singleCell(12), singleCell(5), singleCell(1)})).text()},
            {"no cell left", vtu().piece(hexahedron()).values("types", {42}).text()},
            {"a word", VtuBuilder(sound).attribute("Piece", "NumberOfPoints", "three").text()},
            {"components", VtuBuilder(sound).attribute("Points", "NumberOfComponents", "2305843009213693953").text()},
            {"points", VtuBuilder(sound).attribute("Piece", "NumberOfPoints", "9223372036854775808").text()},
            {"old order", vtu().version({1, 0}).piece(singleCell(72, 2)).piece(singleCell(72, 3)).base64().text()},
            {"sharing", VtuBuilder(sound).appendedRaw().compressed(20).attribute("velocity", "offset", "0").text()},
            {"table", VtuBuilder(sound).appendedRaw().compressed(20).headerWord("pressure", 0, 4).text()}};
}

Inputs filesAnd(Inputs inputs) {
    inputs.merge(files());
    return inputs;
}

Inputs repairs() {
    Inputs inputs = filesAnd(brokenFiles());
    inputs["field data"] =
        vtu().piece(mixed()).fieldData(integers("f", ElementType::Int8, {1})).inlineText("f", "x").text();
    return inputs;
}

Inputs seriesTexts() {
    const std::string pvd = std::string(1, '\0') + "<VTKFile type='Collection'><Collection>",
                      end = "</Collection></VTKFile>";
    const std::string files = "\x01{\"a\": [[]], \"files\": [";
    return {{"pvd", pvd + "<DataSet timestep='2' part='1' file='a'/><DataSet timestep=' 1e-3' file='b'/>" + end},
            {"pvd without file", pvd + "<DataSet timestep='2'/>" + end},
            {"pvd with a word", pvd + "<DataSet timestep='nan' file='a'/>" + end},
            {"pvd of nothing", pvd + end},
            {"pvd cut", pvd},
            {"no pvd", std::string(1, '\0') + "<VTKFile type='UnstructuredGrid'/>"},
            {"series", files + R"({"name": "b", "time": 2}, {"time": -1.5e3, "name": "a", "x": {}}]})"},
            {"series twice", files + R"({"name": "b", "name": "c"}]})"},
            {"series without name", files + R"({"time": 2}]})"},
            {"series with a text", files + R"({"name": "b", "time": "2"}]})"},
            {"series too large", files + R"({"name": "b", "time": 1e400}]})"},
            {"series cut", files},
            {"no series", "\x01[1, null]"},
            {"layout", "\x02{\"loader\": \"L\", \"instructions\": [\"a\", \"b\"], \"more\": 1}"},
            {"layout of numbers", "\x02{\"loader\": \"L\", \"instructions\": [1]}"},
            {"layout twice", "\x02{\"loader\": \"L\", \"loader\": \"L\"}"},
            {"name", "\x03run2/flow_-0.25e-3.vtu"},
            {"name too large", "\x03"
                               "flow1e999.vtu"},
            {"name without", "\x03"
                             "flow.vtu"}};
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: fuzz_seeds DIR\n";
        return 2;
    }
    const std::map<std::string, Inputs> inputsOfTargets{{"base64", base64s()},
                                                        {"check", filesAnd(brokenFiles())},
                                                        {"collection", collections()},
                                                        {"convert", conversions()},
                                                        {"document", documents()},
                                                        {"file_model", documents()},
                                                        {"header", headers()},
                                                        {"inflate", inflateSeeds()},
                                                        {"instructions", instructionLists()},
                                                        {"load", files()},
                                                        {"names", names()},
                                                        {"node_map", nodeMaps()},
                                                        {"numbers", numberTexts()},
                                                        {"own_reader", filesAnd(brokenFiles())},
                                                        {"repair", repairs()},
                                                        {"sections", cellLists()},
                                                        {"series", seriesTexts()},
                                                        {"values", valueLists()}};
    try {
        for (const auto& [target, inputs] : inputsOfTargets)
            for (const auto& [name, bytes] : inputs) {
                std::string fileName = name;
                std::ranges::replace(fileName, ' ', '-');
                std::erase(fileName, ',');
                const std::filesystem::path folder = std::filesystem::path(arguments[1]) / target;
                std::filesystem::create_directories(folder);
                writeFile(folder / fileName, bytes);
            }
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    return 0;
}
