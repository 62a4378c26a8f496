#include "tests/krohost/runKrohost.h"
#include "tests/support/sound.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

namespace {

using nlohmann::json;
using namespace test;

/// A folder with files to convert. What there is of one is compared by the checksums that krohost shows.
class Convert : public InFolder {
protected:
    /// The zones, with names for numbers of variables and without what need not be kept.
    json zones(const std::string& file) const {
        json document = json::parse(run("info --json --demand " + file).output);
        json all = document["zones"];
        for (json& zone : all) {
            for (const char* unneeded : {"aux", "strandGroup"})
                zone.erase(unneeded);
            for (json& variable : zone["variables"])
                variable["number"] = document["variables"][variable["number"].get<std::size_t>() - 1]["name"];
        }
        return all;
    }

    void expectSameAfter(const std::string& file, const std::string& target, const std::string& options = "") const {
        const Outcome outcome = run("convert " + file + " --force -o " + target + ' ' + options);
        EXPECT_EQ(outcome.exitCode, 0) << file << ' ' << options << '\n' << outcome.errors;
        EXPECT_EQ(zones(file), zones(target)) << file << ' ' << options;
    }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator{folder.path()})
            if (entry.path().filename() != "errors")
                names.push_back(std::filesystem::relative(entry.path(), folder.path()).string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace

TEST_F(Convert, EveryKindOfCellStaysInItsSection) {
    for (const CellKind& kind : acceptedCells)
        for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order) {
            const MeshPiece cell = singleCell(kind.type, order);
            vtu().version({2, 0}).piece(cell).write(folder / "alone.vtu");
            expectSameAfter("alone.vtu", "copy.vtu");
            const MeshPiece among = sideBySide({cell, singleCell(1), cell});
            vtu().piece(among).piece(among).write(folder / "vertices.vtu");
            expectSameAfter("vertices.vtu", "copy.vtu");
        }
    std::vector<MeshPiece> solids;
    for (const int type : {12, 11, 72, 10, 71, 13, 73, 14, 12, 72, 11})
        solids.push_back(singleCell(type));
    vtu().piece(sideBySide(solids)).write(folder / "solids.vtu");
    expectSameAfter("solids.vtu", "copy.vtu");
    const std::vector<std::tuple<std::vector<int>, std::vector<std::int64_t>, const char*, const char*>> rows{
        {{5, 8, 5, 1}, {0, 1, 2, 3, 2, 1, 0, 1, 2, 3, 2}, "0 1 2 3 2 1 0 1 2 3 2", "5 8 5 1"},
        {{3, 68, 3}, {2, 2, 0, 1, 0, 0}, "2 2 0 1 0 0", "3 68 3"}, // no vertices
        {{1, 1, 1}, {2, 0, 1}, "2 0 1", "1 1 1"},
        {{1, 1, 1}, {0, 0, 0}, "0 0 0", "1 1 1"}};
    for (const auto& [types, nodes, nodeText, typeText] : rows) { // as they are and in their order
        std::vector<MeshPiece> cells;
        for (const int type : types)
            cells.push_back(singleCell(type));
        vtu().piece(sideBySide(cells)).values("connectivity", nodes).write(folder / "order.vtu");
        expectSameAfter("order.vtu", "copy.vtu", "--encoding ascii --strict");
        const std::string text = readFile(folder / "copy.vtu");
        EXPECT_NE(text.find(fmt::format("\n{} \n", nodeText)), text.npos) << text;
        EXPECT_NE(text.find(fmt::format("\n{} \n", typeText)), text.npos) << text;
    }
}

TEST_F(Convert, VariablesKeepTheirOrderAndVectorsAreJoined) {
    const auto values = [](const char* name, int components = 1) {
        return variedValues(name, ElementType::Int16, components == 1 ? 1 : 8, components);
    };
    MeshPiece cube = hexahedron().withPointData(values("v", 3)).withPointData(values("w", 2));
    vtu().piece(cube.withCellData(values("v_X")).withCellData(values("v"))).timeValue(2.5).write(folder / "cube.vtu");
    expectSameAfter("cube.vtu", "copy.vtu", "--encoding ascii");
    const std::string text = readFile(folder / "copy.vtu");
    EXPECT_NE(text.find(R"(Name="v" NumberOfComponents="3")"), text.npos) << text;
    EXPECT_NE(text.find(R"(Name="w_X" NumberOfComponents="1")"), text.npos) << text;
}

TEST_F(Convert, SeveralZonesBecomeACollectionWithMembersBesideIt) {
    vtu().piece(mixed()).write(folder / "a.vtu");
    vtu().piece(hexahedron()).write(folder / "b.vtu");
    folder.write("c.vtm", R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><Block name="007">
        <DataSet name="first" file="a.vtu"/><DataSet name="&lt;2&gt;" file="b.vtu"/></Block>
        <DataSet name="third" file="a.vtu"/></vtkMultiBlockDataSet></VTKFile>)");
    expectSameAfter("c.vtm", "d.vtm");
    EXPECT_EQ(files(), (std::vector<std::string>{"a.vtu", "b.vtu", "bad.vtu", "broken.vtu", "c.vtm", "d", "d.vtm",
                                                 "d/d_0.vtu", "d/d_1.vtu", "d/d_2.vtu"}));
    EXPECT_EQ(json::parse(run("--json d.vtm").output)["zones"][1]["aux"]["Block.name"], "007");
    const std::vector<std::string> larger = files(); // whose members that the next one lacks go with it, and no others
    EXPECT_EQ(run("convert bad.vtu --force -o d.vtm").exitCode + run("convert d/d_2.vtu -o d.vtm").exitCode, 1 + 2);
    EXPECT_EQ(files(), larger);
    std::filesystem::copy(folder / "b.vtu", folder / "d/d_4.vtu");
    EXPECT_EQ(run("convert a.vtu d/d_1.vtu --force -o d.vtm").exitCode, 2); // which would be replaced
    EXPECT_EQ(run("convert d/d_2.vtu --force -o d.vtm").exitCode, 0);
    EXPECT_EQ(files(), (std::vector<std::string>{"a.vtu", "b.vtu", "bad.vtu", "broken.vtu", "c.vtm", "d", "d.vtm",
                                                 "d/d_0.vtu", "d/d_2.vtu", "d/d_4.vtu"}));
    expectSameAfter("b.vtu a.vtu --times 0.1,3", "e.pvd");
}

TEST_F(Convert, AFailureLeavesNothingAndSaysWhy) {
    vtu().piece(hexahedron()).write(folder / "a.vtu");
    odd(vtu().piece(mixed())).write(folder / "odd.vtu");
    vtu().piece(hexahedron()).values("connectivity", {0, 1, 2, 3, 4, 5, 6, 99}).write(folder / "node.vtu");
    vtu().piece(singleCell(1)).values("connectivity", {-1}).write(folder / "vertex.vtu");
    const std::vector<std::string> before = files();
    const std::vector<std::tuple<const char*, int, const char*>> rows{
        {"a.vtu", 2, "--output is required"},
        {"a.vtu -o bad.vtu", 2, "The file \"bad.vtu\" cannot be written: it exists; --force replaces it\n"},
        {"a.vtu -o . --to vtu --force", 2, "The file \".\" cannot be written: it exists and is not a regular file\n"},
        {"a.vtu -o a.xyz", 2, "The format of \"a.xyz\" does not follow from its extension; name it with --to.\n"},
        {"a.vtu -o ...vtm", 2,
         "The collection \"...vtm\" cannot be written: its members would be in the folder \"..\".\n"},
        {"a.vtu -o \"$(printf 'b\\001.vtm')\"", 2, "\" cannot be written: XML cannot hold the names of its members.\n"},
        {"a.vtu -o \"$(printf 'b\\377.pvd')\"", 2, "\" cannot be written: XML cannot hold the names of its members.\n"},
        {"a.vtu -o b.vtu --encoding utf8", 2, "--encoding"},
        {"a.vtu -o b.vtu --to h5", 2, "--to"},
        {"a.vtu -o no/b.vtu", 1, "The file \"no/b.vtu\" cannot be written: No such file or directory\n"},
        {"a.vtu a.vtu -o b.vtu", 1, "A .vtu file holds one zone, there are 2; write a .vtm or, over time, a .pvd.\n"},
        {"a.vtu a.vtu --times 1,2 -o b.vtm", 1, "The zones have several solution times, for which a .vtm file has no"},
        {"bad.vtu -o b.vtu", 1, "Nothing was written, because variable 4 \"p\" of zone 1 \"bad\" cannot be loaded.\n"},
        {"node.vtu -o b.vtu", 1, "Zone 1 \"node\" has a cell with node 99, where there are 8 points.\n"},
        {"node.vtu -o b.cgns", 1, "Zone 1 \"node\" has a cell with node 99, where there are 8 points.\n"},
        {"vertex.vtu -o b.vtm", 1, "Zone 1 \"vertex\" has a cell with node -1, where there are 1 points.\n"},
        {"bad.vtu -o b.vtkhdf", 1, "VTK Data Loader: "},
        {"bad.vtu -o b.cgns", 1, "VTK Data Loader: "},
        {"bad.vtu -o b.csv", 1, "VTK Data Loader: "},
        {"odd.vtu -o b.vtu", 1,
         "Nothing was written, because it is not known in which order the values at cells of zone 1 \"odd\" come: the "
         "document is not well-formed XML"},
        {"broken.vtu -o b.vtu", 1, "krohost: the load stopped at \"broken.vtu: Parsing XML file...\"\n"},
        {"a.vtu a.vtu -o b.vtu --repair", 2, "--repair takes one file.\n"},
        {"broken.vtu -o b.vtu --repair", 1, "The file \"broken.vtu\" cannot be repaired: "},
        {"missing.vtu -o b.vtu", 3, "The file \"missing.vtu\" cannot be opened: "}};
    for (const auto& [arguments, exitCode, message] : rows)
        for (const std::string format : {"", " --json"}) {
            const Outcome outcome = run("convert " + (arguments + format));
            EXPECT_EQ(outcome.exitCode, exitCode) << arguments << '\n' << outcome.errors;
            EXPECT_NE(outcome.errors.find(message), std::string::npos) << arguments << '\n' << outcome.errors;
            EXPECT_EQ(files(), before) << arguments;
            const bool hasDocument = !format.empty() && exitCode == 1;
            EXPECT_TRUE(!hasDocument || json::parse(outcome.output)["converted"] == false) << arguments;
        }
}

TEST_F(Convert, AnInputIsNeverReplaced) {
    vtu().piece(hexahedron()).write(folder / "b_0.vtu");
    std::filesystem::create_directory(folder / "b");
    const auto names = [](const char* type, const char* rest) {
        return fmt::format(R"(<VTKFile type="{0}"><{0}>{1}</{0}></VTKFile>)", type, rest);
    };
    folder.write("b.vtm", names("vtkMultiBlockDataSet", R"(<DataSet file="b/b_0.vtu"/>)"));
    folder.write("odd.vtm", names("vtkMultiBlockDataSet", "<Block \u0370=\"\"/><DataSet file=\"b/b_0.vtu\"/>"));
    folder.write("c.pvd", names("Collection", R"(<DataSet file="b.vtm"/>)"));
    std::filesystem::rename(folder / "b_0.vtu", folder / "b/b_0.vtu");
    const Outcome made = runShell(folder, "ln b/b_0.vtu hard.vtu; ln -s b/b_0.vtu soft.vtu; cp '" ADD_ON "' addon.so; "
                                          "$krohost c.pvd --record layout.json; $krohost odd.vtm --record odd.json");
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    const std::string member = readFile(folder / "b/b_0.vtu");
    const std::string dump = "dump --variable X ";
    const std::vector<std::pair<std::string, const char*>> rows{{"convert b.vtm -o ", "b.vtm"},
                                                                {"convert c.pvd -o ", "b.vtm"},
                                                                {"convert c.pvd -o ", "hard.vtu"},
                                                                {"convert b/b_0.vtu -o ", "b.vtm"},
                                                                {dump + "c.pvd -o ", "c.pvd"},
                                                                {dump + "c.pvd -o ", "b/b_0.vtu"},
                                                                {dump + "b.vtm -o ", "soft.vtu"},
                                                                {dump + "b.vtm -o ", "./b/../b.vtm"},
                                                                {"b.vtm --record ", "b/b_0.vtu"},
                                                                {"replay layout.json --record ", "layout.json"},
                                                                {"replay layout.json --record ", "b.vtm"},
                                                                {"convert b/b_0.vtu --repair -o ", "hard.vtu"},
                                                                {"b.vtm --addon addon.so --record ", "addon.so"},
                                                                {"convert odd.vtm --to csv -o ", "b/b_0.vtu"},
                                                                {"replay odd.json --record ", "b/b_0.vtu"}};
    for (const auto& [command, output] : rows) {
        const Outcome outcome = run(command + output + " --force");
        const bool isMember = command == "convert b/b_0.vtu -o ", isUnknown = command.find("odd") != command.npos;
        EXPECT_EQ(outcome.exitCode, 2) << command << output;
        EXPECT_EQ(outcome.errors,
                  fmt::format("The file \"{}\" cannot be written: it {} one of the files that are read, {}\n",
                              isMember ? "b/b_0.vtu" : output, isUnknown ? "may be" : "is",
                              isUnknown ? "of which not all are known" : "which are never replaced"))
            << command << output;
        EXPECT_EQ(readFile(folder / "b/b_0.vtu"), member) << command << output;
    }
}

TEST_F(Convert, WhatIsLostIsSaidAndNotDoneWithStrict) {
    const std::int64_t wrap = std::int64_t{1} << 32;
    MeshPiece cube = hexahedron()
                         .withPointData(integers("id", ElementType::Int64, {0, 14950000000, 2, wrap + 3, 4, 5, 6, 7}))
                         .withPointData(integers("i8", ElementType::Int8, {0, 1, 2, 3, 4, 5, -6, 7}))
                         .withPointData(variedValues("w", ElementType::Float32, 8, 2));
    vtu().piece(cube).write(folder / "a.vtu");
    const std::string ids = "The host holds 2 of 8 values of the array \"id\" (nodal) of \"a.vtu\" otherwise: "
                            "14950000000 at 1 becomes 2065098112.";
    for (const std::string command : {"convert a.vtu -o b.vtu", "convert a.vtu -o b.cgns", "dump a.vtu --variable id",
                                      "info --demand a.vtu", "diff a.vtu a.vtu"}) {
        const Outcome outcome = run(command + " --json");
        const json losses = json::parse(outcome.output)["losses"];
        EXPECT_EQ(outcome.exitCode, 0) << command;
        EXPECT_EQ(outcome.errors.rfind("krohost: warning: " + ids, 0), 0) << outcome.errors;
        ASSERT_FALSE(losses.empty()) << command;
        EXPECT_EQ(losses[0]["message"].get<std::string>().rfind(ids, 0), 0) << command;
        EXPECT_EQ(losses[0]["first"],
                  json::parse(R"({"index": 1, "component": 0, "value": "14950000000", "held": "2065098112"})"));
        EXPECT_EQ(losses.size(), command.starts_with("dump") ? 1 : command.starts_with("convert") ? 3 : 2) << command;
        if (command.starts_with("info") || command.starts_with("diff"))
            continue;
        const Outcome strict = run(command + " --strict --force" + (command.starts_with("dump") ? " -o b.vtu" : ""));
        EXPECT_EQ(strict.exitCode, 1) << command;
        EXPECT_NE(strict.errors.find("\nNothing was written, because --strict allows no losses, of which there "),
                  std::string::npos);
        std::filesystem::remove(folder / "b.vtu");
    }
    EXPECT_EQ(run("check --deep a.vtu").output.find("a.vtu:"), 0);
    std::string damaged = sound().appendedRaw().compressed(64).text();
    damaged[damaged.find('_', damaged.find("<AppendedData")) + 1 + 6 * 4] ^= 0x55; // after the table of two blocks
    folder.write("damaged.vtu", damaged);
    for (const std::string command : {"convert damaged.vtu -o d.vtu", "dump damaged.vtu --variable pressure -o d.vtu"})
        for (const auto& [option, isWritten] : {std::pair{" --strict", false}, {"", true}}) {
            const Outcome outcome = run(command + option);
            EXPECT_EQ(outcome.exitCode, 1) << command;
            EXPECT_EQ(
                outcome.errors.find("krohost: warning: Values of the array \"pressure\" (nodal) of \"damaged.vtu\" "
                                    "are damaged: block 0 "),
                0)
                << outcome.errors;
            EXPECT_EQ(std::filesystem::remove(folder / "d.vtu"), isWritten) << command;
        }
    EXPECT_EQ(run("dump damaged.vtu --variable X").exitCode, 0);
    MeshPiece narrow = hexahedron(), wide = hexahedron(); // all points are held as those of the first piece
    narrow.points = integers("Points", ElementType::Int16, numbers(24), 3);
    wide.points = reals("Points", ElementType::Float64, std::vector<double>(24, 70000.5), 3);
    vtu().piece(narrow).piece(wide).write(folder / "p.vtu");
    EXPECT_NE(run("convert --strict p.vtu -o c.vtu").errors.find("70000.5 at 8, component 0, becomes 4464"),
              std::string::npos);
    EXPECT_EQ(run("convert a.vtu -o c.csv --strict").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "c.csv"));
    for (const char* name : {"m.vtu", "n.vtu"})
        vtu()
            .piece(hexahedron())
            .timeValue(9)
            .fieldData(reals("z", ElementType::Float64, {-0.0}))
            .fieldData(integers("u", ElementType::UInt64, {1}))
            .fieldData(integers("u", ElementType::UInt64, {1})) // the first of a name counts
            .inlineText("u", "18446744073709551615")
            .write(folder / name);
    folder.write("d.vtm", R"(<VTKFile type="vtkMultiBlockDataSet"><FieldData><DataArray Name="Time">5</DataArray>
        <DataArray Name="t" NumberOfTuples="2">5 6</DataArray><Array type="String" Name="t"/></FieldData>
        <DataSet file="m.vtu"/><DataSet file="n.vtu"/></VTKFile>)");
    std::string lost;
    const json document = json::parse(run("convert d.vtm -o e.vtm --json").output);
    for (const json& loss : document["losses"])
        lost += fmt::format("{}@{}:{} ", loss["array"].get<std::string>(), loss["file"].get<std::string>(),
                            loss["files"].get<int>());
    EXPECT_EQ(lost, "t@d.vtm:1 t@d.vtm:1 TimeValue@m.vtu:2 u@m.vtu:2 ");
    EXPECT_EQ(json::parse(run("--json e.vtm").output)["zones"][1]["aux"],
              json::parse(R"({"Time": "5", "u": "18446744073709551615", "z": "-0"})"));
    vtu()
        .piece(hexahedron())
        .fieldData(reals("TIMEVALUE", ElementType::Float32, {0.1}))
        .fieldData(reals("three", ElementType::Float64, {3}))
        .write(folder / "f.vtu");
    vtu().piece(hexahedron()).fieldData(reals("TimeValue", ElementType::Float32, {NAN})).write(folder / "nan.vtu");
    EXPECT_EQ(run("convert --strict f.vtu -o g.vtu").exitCode + run("convert nan.vtu -o h.vtu").exitCode, 0);
    vtu() // each of these once, in what is left out, and v and v_Z neither there nor split
        .piece(hexahedron()
                   .withPointData(variedValues("v", ElementType::Float32, 8, 2))
                   .withPointData(variedValues("v_Z", ElementType::Float32, 8)))
        .attribute("Piece", "Name", "orig")
        .markup("<PointData", "<PointData Scalars=\"v\"")
        .markup("</PointData>", "<InformationKey name=\"L2_NORM_RANGE\"/><InformationKey name=\"UNITS\"/></PointData>")
        .write(folder / "v.vtu");
    EXPECT_EQ(
        run("convert v.vtu -o v.vtkhdf --strand 3").errors,
        "krohost: warning: The arrays \"v_X\", \"v_Y\" and \"v_Z\" (nodal) of \"v.vtu\" are written as one vector "
        "\"v\".\n"
        "krohost: warning: That the array \"v\" (nodal) of \"v.vtu\" has the role \"Scalars\" is left out.\n"
        "krohost: warning: That the array \"v_Z\" (nodal) of \"v.vtu\" has the key \"UNITS\" is left out.\n"
        "krohost: warning: Strands are left out, of 1 zone.\n"
        "krohost: warning: Names are left out, of 1 zone.\n");
    const std::string types = readFile(folder / "g.vtu") + readFile(folder / "h.vtu");
    EXPECT_NE(types.find(R"("Float32" Name="TIMEVALUE")"), types.npos) << types;
    EXPECT_NE(types.find(R"("Float64" Name="three")"), types.npos) << types;
    EXPECT_EQ(types.find("TimeValue"), types.npos) << types;
}

TEST_F(Convert, NamesAreMadeSafeAndStayDifferent) {
    MeshPiece cube = hexahedron();
    for (const char* name :
         {"/", ".", "..", "_", "a&#9;b", "a\\tb", "=1+1", "-x", "n234567890123456789012345678901234", "t", "t ", " t"})
        cube = cube.withPointData(variedValues(name, ElementType::Float32, 8));
    vtu().piece(cube).write(folder / "a.vtu");
    for (const std::string output : {"b.vtkhdf", "b.cgns"}) {
        const std::string errors = run("convert a.vtu -o " + output).errors;
        for (const char* renaming :
             {"\".\" is called \"__2\" in", "\"..\" is called \"__\" in", "\" is called \"a_b\" in"})
            EXPECT_NE(errors.find(renaming), std::string::npos) << errors;
        for (const char* renaming :
             {"n2345678901234567890123456789012\" in", "\"t \" is called \"t_2\" in", "\" t\" is called \"t_3\" in"})
            EXPECT_EQ(errors.find(renaming) != std::string::npos, output == "b.cgns") << errors;
    }
    const std::string header =
        "zone,node,X,Y,Z,/,.,..,_,a\\tb,a\\\\tb,\"'=1+1\",\"'-x\",n234567890123456789012345678901234,t,t , t\n";
    EXPECT_NE(run("convert a.vtu -o b.csv").errors.find("\"=1+1\" is called \"'=1+1\" in the table"),
              std::string::npos);
    EXPECT_EQ(readFile(folder / "b.csv").substr(0, header.size()), header);
    const Outcome outcome = runShell(folder, "for c in '\\001' '\\357\\277\\277' '\\377'; do n=$(printf \"c$c.vtu\");"
                                             " cp a.vtu $n && $krohost convert $n -o c.vtm --force && "
                                             "$krohost --demand c.vtm && $krohost convert $n -o c.vtu --force --repair "
                                             "&& $krohost --demand c.vtu || exit 1; done");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 5) // a loader has U+FFFD for a byte
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("\" is called \"c_\" in the file"), std::string::npos) << outcome.errors;
    EXPECT_EQ(run("dump a.vtu --format csv --range :0 --variable '=1+1'").output, "\"'=1+1\"\n");
}

TEST_F(Convert, ASmallBudgetOfMemoryChangesNoValue) {
    for (const std::string format : {"csv", "vtu", "vtkhdf"}) {
        EXPECT_EQ(run("convert " SAMPLES "/points.vtu -o a." + format).exitCode, 0);
        EXPECT_EQ(run("convert --max-memory 5600 " SAMPLES "/points.vtu -o b." + format).exitCode, 0);
        EXPECT_TRUE(format == "vtkhdf" || readFile(folder / ("a." + format)) == readFile(folder / ("b." + format)));
    }
    const Outcome outcome = run("convert --max-memory 4K " SAMPLES "/points.vtu -o c.csv");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.rfind("Not enough memory for variable 3 \"Z\" of zone 1 \"points\": ", 0), 0)
        << outcome.errors;
}

TEST_F(Convert, AFullDiskLeavesNothing) {
    std::filesystem::copy(SAMPLES "/wing.vtu", folder / "wing.vtu");
    const std::vector<std::string> before = files();
    for (const std::string target : {"b.vtu", "b.vtm", "b.vtkhdf", "b.cgns", "b.csv"}) {
        const Outcome outcome =
            runShell(folder, "ulimit -f 16; \"$krohost\" convert wing.vtu --compress none -o " + target);
        EXPECT_EQ(outcome.exitCode, 1) << target;
        EXPECT_EQ(outcome.errors.rfind("The file \"b", 0), 0) << outcome.errors;
        EXPECT_EQ(files(), before) << target;
    }
}

TEST_F(Convert, TheReportSaysWhatWasWritten) {
    vtu().piece(mixed()).write(folder / "a.vtu");
    const json document = json::parse(run("convert a.vtu -o b.csv --json").output);
    EXPECT_EQ(document["converted"], true);
    EXPECT_EQ(document["zones"], 1);
    const std::size_t nodal = readFile(folder / "b.csv").size(), cell = readFile(folder / "b-cells.csv").size();
    EXPECT_EQ(document["files"],
              (json{{{"path", "b.csv"}, {"bytes", nodal}}, {{"path", "b-cells.csv"}, {"bytes", cell}}}));
    EXPECT_EQ(document["bytes"], nodal + cell);
    EXPECT_EQ(run("convert a.vtu -o c.csv").output,
              "c.csv: 1 zone in 2 files, " + std::to_string(nodal + cell) + " bytes\n");
    vtu().piece(hexahedron()).write(folder / "d.vtu");
    for (const auto& [options, isThere] :
         {std::pair{"c.csv", true}, {"e.csv --force", true}, {"c.csv --force", false}}) {
        folder.write("e-cells.csv", "zone,cell,mine\n"); // belongs to no table of nodes
        run(fmt::format("convert d.vtu -o {}", options));
        EXPECT_EQ(std::filesystem::exists(folder / "c-cells.csv"), isThere) << options;
        EXPECT_TRUE(std::filesystem::exists(folder / "e-cells.csv")) << options;
    }
}

TEST_F(Convert, RepairKeepsTheCellsOfTheHighestDimension) {
    const MeshPiece mesh = sideBySide({singleCell(12), singleCell(5), singleCell(1), singleCell(3), singleCell(10)});
    const MeshPiece wanted = sideBySide({singleCell(12), singleCell(1), singleCell(10)});
    vtu().piece(mesh.withCellData(integers("id", ElementType::Int64, {1, 2, 3, 4, 5}))).write(folder / "a.vtu");
    EXPECT_EQ(run("a.vtu").exitCode, 1);
    const Outcome outcome = run("convert --repair a.vtu -o b.vtu --encoding ascii");
    EXPECT_EQ(outcome.errors,
              "krohost: warning: Cells left out: 1 of type 3, whose dimension is 1 where others have 3.\n"
              "krohost: warning: Cells left out: 1 of type 5, whose dimension is 2 where others have 3.\n");
    EXPECT_EQ(outcome.exitCode, 1); // since not all of the mesh is there
    vtu().piece(wanted.withCellData(integers("id", ElementType::Int64, {1, 3, 5}))).write(folder / "c.vtu");
    const auto variable = [](const json& zone, const char* name) {
        const auto& all = zone["variables"];
        return *std::find_if(all.begin(), all.end(), [&](const json& entry) { return entry["number"] == name; });
    };
    const json repaired = zones("b.vtu")[0], expected = zones("c.vtu")[0];
    EXPECT_EQ(variable(repaired, "id"), variable(expected, "id"));
    ASSERT_EQ(repaired["sections"].size(), 3);
    EXPECT_EQ(repaired["sections"][2]["shape"], "tetrahedron");
    const json document = json::parse(run("convert --repair a.vtu -o b.vtu --force --json").output);
    EXPECT_EQ(document["converted"], true);
    EXPECT_EQ(document["error"], document["losses"][0]["message"]);
    EXPECT_EQ(document["losses"][1],
              (json{{"what", "dropped"},
                    {"message", "Cells left out: 1 of type 5, whose dimension is 2 where others have 3."},
                    {"array", nullptr},
                    {"location", "cells"},
                    {"file", "a.vtu"},
                    {"files", 1},
                    {"count", 1},
                    {"first", nullptr}}));
}

TEST_F(Convert, RepairTellsOfFieldDataAndKeepsOldHexahedra) {
    VtuBuilder file = vtu().version({1, 0}).piece(singleCell(72, 2)).piece(singleCell(72, 3));
    file.fieldData(integers("n", ElementType::Int8, {7})).write(folder / "a.vtu");
    file.fieldData(integers("bad", ElementType::Int8, {1})).inlineText("bad", "x").write(folder / "b.vtu");
    vtu()
        .piece(hexahedron().withPointData(variedValues("p", ElementType::Int8, 8)))
        .attribute("p", "ComponentName0", "x")
        .markup("</PointData>", "<Array type=\"String\" Name=\"p\"/></PointData>")
        .markup("</Cells>", "<DataArray type=\"Int64\" Name=\"faces\">1</DataArray></Cells>")
        .write(folder / "more.vtu");
    const Outcome outcome = run("convert --repair b.vtu -o c.vtu");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "krohost: warning: Field data left out: \"bad\", which cannot be read or is empty.\n");
    const Outcome more = run("convert --repair more.vtu -o d.vtu");
    EXPECT_EQ(more.exitCode, 0);
    EXPECT_EQ(more.errors, "krohost: warning: Left out: the array of texts \"p\" (nodal).\n"
                           "krohost: warning: Left out: the array \"faces\" (cells).\n"
                           "krohost: warning: Left out: the names of components of the array \"p\" (nodal).\n");
    vtu() // of these the loader takes none
        .piece(hexahedron())
        .attribute("Piece", "Name", "orig")
        .fieldData(reals("TimeValue", ElementType::Float64, {4, 5}))
        .fieldData(integers("C", ElementType::Int8, {1, 2, 3, 4, 5, 6}, 3))
        .fieldData(integers("none", ElementType::Int8, {7}))
        .attribute("none", "NumberOfTuples", "0")
        .attribute("TimeValue", "NumberOfTuples", "1")
        .attribute("C", "NumberOfTuples", std::nullopt)
        .write(folder / "e.vtu");
    EXPECT_EQ(run("convert --repair e.vtu -o f.vtu --encoding ascii").errors,
              "krohost: warning: Field data left out: \"none\", which cannot be read or is empty.\n");
    EXPECT_NE(readFile(folder / "f.vtu").find("1 2 3 4 5 6"), std::string::npos);
    EXPECT_EQ(zones("f.vtu")[0], zones("e.vtu")[0]); // in name and time too
    json original = zones("a.vtu"), repaired = zones("c.vtu");
    for (json* list : {&original, &repaired})
        list->at(0).erase("name");
    EXPECT_EQ(original, repaired);
}

TEST_F(Convert, RepairBelievesNothingOfAFileAndSaysWhatItCannotDo) {
    const VtuBuilder cube = vtu().piece(hexahedron());
    const VtuBuilder raw = VtuBuilder{cube}.appendedRaw();
    const std::vector<VtuBuilder> files{
        VtuBuilder{cube}.attribute("Piece", "NumberOfPoints", "1152921504606846976"),
        VtuBuilder{cube}.attribute("Piece", "NumberOfCells", "1152921504606846976"),
        VtuBuilder{cube}.attribute("Points", "NumberOfComponents", "1152921504606846976"),
        VtuBuilder{cube}.attribute("Points", "NumberOfComponents", "2305843009213693952"), // times 8 is 0
        VtuBuilder{cube}.attribute("Points", "NumberOfComponents", "2305843009213693953"),
        VtuBuilder{cube}.attribute("Points", "NumberOfComponents", "-1"),
        VtuBuilder{cube}.attribute("Piece", "NumberOfPoints", "three"),
        VtuBuilder{cube}.attribute("Piece", "NumberOfCells", "1.5"),
        VtuBuilder{cube}.attribute("Piece", "NumberOfPoints", "9223372036854775808"),
        VtuBuilder{cube}.piece(hexahedron()).attribute("Piece", "NumberOfCells", "9223372036854775807"),
        VtuBuilder{raw}.attribute("Points", "offset", "x"),
        VtuBuilder{raw}.attribute("VTKFile", "byte_order", "Middle"),
        VtuBuilder{raw}.attribute("VTKFile", "header_type", "UInt16"),
        VtuBuilder{cube}.attribute("VTKFile", "version", "new"),
        VtuBuilder{cube}.values("types", {42}), // no cell is left
        VtuBuilder{cube}.values("connectivity", {0, 1, 2, 3, 4, 5, 6, 8}),
        VtuBuilder{cube}.values("offsets", {std::int64_t{1} << 62}),
        VtuBuilder{cube}.values("offsets", {-8})};
    for (const VtuBuilder& file : files) {
        file.write(folder / "a.vtu");
        const Outcome outcome = run("convert --repair a.vtu -o b.vtu");
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors.rfind("The file \"a.vtu\" ", 0), 0) << outcome.errors;
        EXPECT_FALSE(std::filesystem::exists(folder / "b.vtu"));
    }
    const auto values = [](const char* name) { return variedValues(name, ElementType::Int8, 8); };
    vtu().piece(hexahedron().withPointData(values("X"))).write(folder / "a.vtu");
    const Outcome twice = run("convert --repair a.vtu -o b.vtu");
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_TRUE(twice.errors.ends_with("Nothing was written, because the repaired file would not load either.\n"))
        << twice.errors;
    EXPECT_FALSE(std::filesystem::exists(folder / "b.vtu"));
}
