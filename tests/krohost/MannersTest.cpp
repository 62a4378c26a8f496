#include "tests/krohost/runKrohost.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::Not;

/// The files that the examples of the help name, and ways to use them.
class Manners : public InFolder {
protected:
    Manners() {
        const auto wing =
            test::vtu().piece(test::hexahedron().withPointData(reals("pressure", test::ElementType::Float64, values)));
        for (const char* name : {"wing.vtu", "step1.vtu", "step2.vtu", "wing.dat", "lz4.vtu"})
            wing.write(folder / name);
        folder.write("run.pvd", collection(2));
        folder.write("many.pvd", collection(60));
        run("wing.vtu --record layout.json");
    }

    /// Files with two zones a step.
    static std::string collection(int fileCount) {
        std::string text = R"(<VTKFile type="Collection"><Collection>)";
        for (int index = 0; index < fileCount; ++index)
            text += fmt::format(R"(<DataSet timestep="{}" part="{}" file="wing.vtu"/>)", index / 2 * 0.5, index % 2);
        return text + "</Collection></VTKFile>";
    }

    static inline const std::vector<double> values{1, 2, 3, 4, 5, 6, 7, 8};
};

} // namespace

TEST_F(Manners, APipeThatNobodyReadsEndsQuietly) {
    for (const char* trap : {"", "trap '' PIPE;"})
        for (const char* command : {"info", "dump --variable X"}) {
            const Outcome outcome =
                runShell(folder, fmt::format("mkfifo p; exec 3<>p 4>p 3>&-; rm p; {} \"$krohost\" {} wing.vtu >&4",
                                             trap, command));
            EXPECT_EQ(outcome.exitCode, 141) << trap << command;
            EXPECT_EQ(outcome.errors, "") << trap << command;
        }
}

TEST_F(Manners, StreamsThatAreClosedOrFullSpoilNoResult) {
    for (const double value : {1.0, 5e9})
        test::vtu()
            .piece(test::hexahedron().withCellData(reals("i", test::ElementType::Int64, {value})))
            .write(folder / fmt::format("{}.vtu", value));
    const std::string leftovers = "; echo $?; ls -A | grep krohost-",
                      closedPipe = "mkfifo p; exec 3<>p 4>p 3>&-; rm p; ";
    const std::vector<std::tuple<std::string, int, std::string>> rows{
        {"$krohost dump 5000000000.vtu --variable i --format npy -o i.npy 2>&-; head -c 6 i.npy | tail -c 5", 0,
         "NUMPY"},
        {"$krohost info wing.vtu >&-", 1, ""},
        {"$krohost missing.vtu 2>/dev/full", 3, ""},
        {"$krohost convert wing.vtu -o y.vtu --progress always >/dev/null 2>/dev/full" + leftovers, 1, "0\n"},
        {closedPipe + "$krohost convert wing.vtu -o z.vtu -v >/dev/null 2>&4" + leftovers, 1, "0\n"},
        {"for f in 1 5000000000; do $krohost convert $f.vtu --to csv -o i.old --force >i; done; tail -n 1 i-cells.old",
         0, "1,1,705032704\n"}};
    for (const auto& [command, exitCode, output] : rows) {
        const Outcome outcome = runShell(folder, command);
        EXPECT_EQ(outcome.exitCode, exitCode) << command << outcome.errors;
        EXPECT_EQ(outcome.output, output) << command << outcome.errors;
    }
}

TEST_F(Manners, StandardErrorIsAsTalkativeAsTheUserWants) {
    const std::vector<std::pair<const char*, testing::Matcher<std::string>>> rows{
        {"wing.vtu", ""},
        {"wing.dat --quiet", ""},
        {"wing.vtu --quiet --progress always", ""},
        {"wing.vtu -v", HasSubstr("krohost: VTK Data Loader took 0.")},
        {"wing.vtu -v", HasSubstr("krohost: the add-on is " ADD_ON "\n")},
        {"wing.vtu --progress always", HasSubstr("\r\x1b[K[                        ]   0 %")},
        {"missing.vtu -q", HasSubstr("The file \"missing.vtu\" cannot be opened")},
        {"missing.vtu --color always", HasSubstr("\x1b[31mThe file")}};
    for (const auto& [arguments, expected] : rows)
        EXPECT_THAT(run(arguments).errors, expected) << arguments;
}

TEST_F(Manners, ColoursAreForTerminals) {
    const std::string heading = "\x1b[1mVTK Data", plain = "VTK Data (";
    const std::vector<std::pair<std::string, bool>> rows{
        {"$krohost wing.vtu", false},
        {"$krohost wing.vtu --color always", true},
        {"NO_COLOR=1 $krohost wing.vtu --color always", true},
        {"export TERM=xterm; script -qec \"$krohost wing.vtu\" /dev/null", true},
        {"export TERM=xterm; script -qec \"$krohost wing.vtu --color never\" /dev/null", false},
        {"export TERM=xterm NO_COLOR=1; script -qec \"$krohost wing.vtu\" /dev/null", false},
        {"export TERM=dumb; script -qec \"$krohost wing.vtu\" /dev/null", false}};
    for (const auto& [command, isColoured] : rows) {
        const std::string output = runShell(folder, command).output;
        EXPECT_THAT(output, HasSubstr(isColoured ? heading : plain)) << command;
        EXPECT_EQ(output.find('\x1b') != output.npos, isColoured) << command;
    }
}

TEST_F(Manners, NamesCannotCommandATerminalOrForgeALine) {
    // What XML lets into a name, and what a file's own name may hold besides.
    const std::string inXml = "a&#10;FORGED&#x9;&#x9b;\u202e\u2066\u200f\u061c\u2028\u200b\ufeff&quot;\\ \u00e4";
    const std::string variable = "a\nFORGED\t\u009b\u202e\u2066\u200f\u061c\u2028\u200b\ufeff\"\\ \u00e4";
    const std::string file = "a\nFORGED\t\x1b[2J\a\x7f\u009b\u202e\xc2\xff\u00e4";
    setenv("v", variable.c_str(), 1);
    setenv("f", file.c_str(), 1);
    const auto mesh = test::hexahedron().withPointData(reals(inXml, test::ElementType::Float64, values));
    test::vtu().fieldData(reals(inXml, test::ElementType::Int8, {1})).piece(mesh).write(folder / (file + ".vtu"));
    folder.write("run.pvd", R"(<VTKFile type="Collection"><Collection><DataSet file=")" + file +
                                R"(.vtu"/><DataSet file="a&#10;FORGED)"
                                "\x1b"
                                R"(.vtu"/></Collection></VTKFile>)");
    folder.write("blocks.vtm", R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><DataSet name=")" + inXml +
                                   R"(" file="wing.vtu"/><DataSet name="b" file=")" + inXml +
                                   R"("/></vtkMultiBlockDataSet></VTKFile>)");
    folder.write("all.vtm", R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><Block name="k)" + inXml +
                                R"("><DataSet name=")" + inXml +
                                R"(" file="wing.vtu"/></Block></vtkMultiBlockDataSet></VTKFile>)");
    folder.write("odd.vtu", test::vtu()
                                .piece(mesh)
                                .attribute("VTKFile", "compressor", inXml)
                                .attribute("VTKFile", "version", inXml)
                                .attribute(inXml, "type", inXml)
                                .text());
    folder.write("layout.json", R"({"loader": "\nFORGED\u001b\u009b", "instructions": []})");
    folder.write("bad.json", R"({"loader": "VTK Data Loader", "instructions": ["\nFORGED\u001b\u009b"]})");
    folder.write("\nFORGED\x1b.json", "{");
    folder.write("\nFORGED\x1b.pvd",
                 R"(<VTKFile type="Collection"><Collection><DataSet timestep=")" + inXml + R"("/>)");
    std::vector<std::string> commands{"dump \"$f.vtu\" --variable \"$v\"",
                                      "dump \"$f.vtu\" --variable \"$v\" --json",
                                      "dump \"$f.vtu\" --variable \"$v\" --format csv",
                                      "dump \"$f.vtu\" --variable \"$f\"",
                                      "convert \"$f.vtu\" -o \"$f.csv\"",
                                      "convert \"$f.vtu\" -o \"$f.cgns\"",
                                      "convert \"$f.vtu\" -o \"$f\" --json",
                                      "convert wing.vtu -o x.vtu --compress \"$f\"",
                                      "replay layout.json",
                                      "replay bad.json --json",
                                      "replay \"\nFORGED\x1b.json\"",
                                      "\"\nFORGED\x1b.pvd\"",
                                      "addons --json --addon \"$f\"",
                                      "wing.vtu --\"$f\"",
                                      "inof\"$f\"",
                                      "completion \"$f\""};
    for (const std::string name : {"\"$f.vtu\"", "all.vtm", "blocks.vtm", "run.pvd", "odd.vtu"})
        for (const char* command :
             {"--demand --progress always -v ", "--json ", "trace ", "trace --json ", "trace --jsonl ",
              "check --deep --explain ", "check --explain --json ", "diff wing.vtu ", "diff --json wing.vtu ",
              "dump --node-map ", "convert --force -v -o \"$f.vtm\" ", "convert --repair --force -o \"$f-2.vtu\" "})
            commands.push_back(command + name);
    for (const std::string command : {"wing.vtu", "dump wing.vtu --variable X", "bench wing.vtu", "addons"})
        for (const char* option : {" ", " --loader ", " --times ", " --max-memory ", " --record ", " --append ",
                                   " --addon ", " --range ", " --format ", " --zone ", " --variable ", " -o "})
            commands.push_back(command + option + "\"$f/x\"");
    for (const std::string& arguments : commands) {
        const Outcome outcome = run(arguments);
        EXPECT_TRUE((outcome.exitCode >= 0 && outcome.exitCode <= 5)) << arguments << outcome.exitCode;
        std::string text = outcome.output + '\n' + outcome.errors;
        for (std::size_t at = text.find("\r\x1b[K"); at != text.npos; at = text.find("\r\x1b[K"))
            text.erase(at, 4); // krohost's own progress
        EXPECT_NO_THROW((void)nlohmann::json(text).dump()) << arguments << ": not UTF-8\n" << text;
        for (const char* piece : {"\nFORGED", "\t", "\x1b", "\a", "\x7f", "\u009b", "\u202e", "\u2066", "\u200f",
                                  "\u061c", "\u2028", "\u200b", "\ufeff"})
            EXPECT_EQ(text.find(piece), text.npos) << arguments << '\n' << text;
    }
    EXPECT_THAT(run("all.vtm").output, HasSubstr("Zone 1, a\\nFORGED\\t\\u009b\\u202e\\u2066"));
    EXPECT_EQ(nlohmann::json::parse(run("all.vtm --json").output)["zones"][0]["name"], variable);
}

TEST_F(Manners, ManyZonesAreSummedUp) {
    const std::string summary = run("--demand many.pvd").output;
    for (const char* part :
         {"60 zones, 4 variables\n", "\nNodes     480, 8 in each zone\n",
          "\nTimes     0 to 14.5, 30 different\nStrands   1 to 2, 2 different\n",
          "\n   60  bricks          4    480        60      1  hexahedron\n", "\n 0.5      2     16         2      3\n",
          "\n... and 18 more\n", "\n       4  pressure  nodal     float64     60     480    1    8\n",
          "\n   5  wing  bricks      8         1         1       1     1\n"
          "... and 55 more; --all shows every zone\n"})
        EXPECT_THAT(summary, HasSubstr(part));
    EXPECT_THAT(summary, Not(HasSubstr("\nZone 1, ")));
    EXPECT_THAT(run("--all many.pvd").output, HasSubstr("\nZone 60, wing\n"));
}

TEST_F(Manners, ATraceIsFilteredAndTakenApart) {
    const std::string text = run("trace --only KroUtilVar --only KroUtilDataSetG,Loader wing.vtu").output;
    EXPECT_EQ(text, "-> LoaderSelectedCallback([\"wing.vtu\"])\nKroUtilDataSetGetNumVars() = 4\n"
                    "KroUtilDataSetGetNumVars() = 4\nKroUtilDataSetGetNumZones() = 1\n"
                    "KroUtilDataSetGetNumZones() = 1\n<- LoaderSelectedCallback = 1\n");
    std::istringstream lines{run("trace --jsonl --only KroUtilAddOn,Init wing.vtu").output};
    for (const char* expected :
         {R"({"number": 1, "kind": "enter", "name": "InitKroAddOn113", "arguments": "", "result": null})",
          R"({"number": 3, "kind": "call", "name": "KroUtilAddOnRegister", "result": "add-on 1",
              "arguments": "110, \"VTU/VTM/TRIX Data Loader\", \"1.0.0\", \"Veltra\""})",
          R"({"number": 8, "kind": "return", "name": "InitKroAddOn113", "arguments": null, "result": null})",
          R"({"kind": "end", "error": null, "dialogs": [], "violations": []})"}) {
        std::string line;
        std::getline(lines, line);
        EXPECT_EQ(nlohmann::json::parse(line), nlohmann::json::parse(expected));
    }
}

TEST_F(Manners, AddOnsAreShownWithTheirFiles) {
    const std::string output = run("addons").output;
    EXPECT_THAT(output, HasSubstr("VTU/VTM/TRIX Data Loader 1.0.0 (Veltra)\n  " ADD_ON "\n"));
    EXPECT_THAT(output, HasSubstr("\nTRIX Loader      *.trix              several\n"));
}

TEST_F(Manners, EveryExampleOfTheHelpWorks) {
    EXPECT_THAT(run("--version").output, testing::StartsWith("krohost 1."));
    std::istringstream help{run("--help").output};
    std::vector<std::string> commands{""};
    bool isCommand = false;
    for (std::string line; std::getline(help, line) && !(isCommand && line.empty());) {
        if (isCommand)
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
        isCommand = isCommand || line == "Subcommands:";
    }
    EXPECT_GE(commands.size(), 6);
    for (const std::string& command : commands) {
        std::istringstream text{run(command + " --help").output};
        EXPECT_THAT(text.str(), HasSubstr("Exit codes:\n    0  done\n")) << command;
        int exampleCount = 0;
        for (std::string line; std::getline(text, line);) {
            if (!line.starts_with("  krohost "))
                continue;
            ++exampleCount;
            const std::string example = line.substr(2, line.find("   ", 2) - 2);
            // What an earlier example has written would not be replaced.
            const Outcome outcome =
                runShell(folder, "krohost() { \"$krohost\" \"$@\"; }; rm -rf $(echo '" + example +
                                     "' | sed -En 's/.*(-o|--record) ([^ ]*).*/\\2/p'); " + example);
            EXPECT_EQ(outcome.exitCode, 0) << example << '\n' << outcome.errors;
        }
        EXPECT_GE(exampleCount, 2) << command;
    }
}
