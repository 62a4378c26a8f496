#include "tests/krohost/runKrohost.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

void expectEnding(const Outcome& outcome, const std::string& command, int exitCode, const std::string& message) {
    EXPECT_EQ(outcome.exitCode, exitCode) << command << '\n' << outcome.errors;
    EXPECT_NE(outcome.errors.find(message), std::string::npos) << command << '\n' << outcome.errors;
}

/// Adds a sound file under two names.
class CommandLine : public InFolder {
protected:
    CommandLine() {
        const auto cube =
            test::vtu().piece(test::hexahedron().withCellData(reals("p", test::ElementType::Float64, {0.5})));
        cube.write(folder / "cube.vtu");
        cube.write(folder / "cube.dat");
    }
};

} // namespace

TEST_F(CommandLine, ExitCodesTellWhatHappened) {
    const std::vector<std::tuple<const char*, int, const char*>> rows{
        {"cube.vtu", 0, ""},
        {"info cube.vtu --demand -j 3 --node-bits 64", 0, ""},
        {"--json bad.vtu", 0, ""},
        {"bad.vtu --demand", 1, "VTK Data Loader: "},
        {"bench bad.vtu", 1, "VTK Data Loader: "},
        {"bench bad.vtu --json --variable X", 0, ""},
        {"bench cube.vtu --variable q", 2, "There is no variable \"q\"; there is \"X\", \"Y\", \"Z\", \"p\".\n"},
        {"bench broken.vtu", 1, "krohost: the load stopped at \"broken.vtu: Parsing XML file...\"\n"},
        {"broken.vtu", 1, "krohost: the load stopped at \"broken.vtu: Parsing XML file...\"\n"},
        {"cube.vtu --addon " LOCKING_ADD_ON, 1,
         "contract violation: LoaderSelectedCallback returned with the host locked\n"},
        {"cube.vtu cube.vtu --addon " LOCKING_ADD_ON, 1, "Box takes one file at a time.\n"},
        {"cube.dat", 0, "krohost: warning: no loader is for files such as \"cube.dat\"; taking \"VTK Data Loader\""},
        {"trace --only KroUtilX cube.vtu", 0, "krohost: warning: no call's name begins so\n"},
        {"cube.vtu >/dev/full", 1, "Standard output cannot be written: No space left on device\n"},
        {"--help >/dev/full", 1, "Standard output cannot be written: No space left on device\n"},
        {"cube.vtu --record /dev/full", 1, "The file \"/dev/full\" cannot be written: No space left on device\n"},
        {"cube.vtu --record bad.vtu", 2, "The file \"bad.vtu\" cannot be written: it exists; --force replaces it\n"},
        {"inof cube.vtu", 2, "There is no command or file \"inof\"; did you mean krohost info?\n"},
        {"cube.vtu --times 1,2", 2, "--times gives 2 times for 1 files.\n"},
        {"cube.vtu --demnad", 2, "\nDid you mean --demand?\nRun with --help for more information.\n"},
        {"", 2, "A file or a command is required"},
        {"info", 2, "FILE is required"},
        {"cube.vtu --node-bits 16", 2, "--node-bits"},
        {"cube.vtu --loader Other", 2,
         "There is no loader \"Other\"; there is \"VTK Data Loader\", \"TRIX Loader\".\n"},
        {"cube.vtu --times 1,nan", 2, "--times: nan is not a time"},
        {"diff cube.vtu cube.vtu --atol nan", 2, "--atol: nan is not a tolerance"},
        {"cube.vtu --times 1e-9 --record l.json", 0,
         "krohost: warning: The layout \"l.json\" does not keep all solution times: 1 of them, the first is 1e-09.\n"},
        {"replay cube.vtu --strand 1", 2, "--strand requires --append"},
        {"replay missing.json", 3, "The file \"missing.json\" cannot be opened: "},
        {"'missing*.vtu'", 3, "The file \"missing*.vtu\" cannot be opened: "},
        {"cube.vtu --append missing.vtu", 3, "The file \"missing.vtu\" cannot be opened: "},
        {"cube.vtu missing.vtu", 3, "The file \"missing.vtu\" cannot be opened: No such file or directory\n"},
        {".", 3, "The file \".\" cannot be opened: Is a directory\n"},
        {"cube.vtu --record /", 2, "The file \"/\" cannot be written: it exists and is not a regular file\n"},
        {"replay cube.vtu", 1, "The layout \"cube.vtu\" is malformed: it is not JSON from byte 1 on.\n"},
        {"cube.vtu --addon /missing.so", 4,
         "The add-on \"/missing.so\" cannot be loaded: /missing.so: cannot open shared object file: No such file"},
        {"cube.vtu --addon cube.vtu", 4, "cube.vtu: invalid ELF header\n"},
        {"cube.vtu --addon " LIBRARY_WITHOUT_ENTRY_POINT, 4, "undefined symbol: InitKroAddOn113\n"}};
    for (const auto& [arguments, exitCode, message] : rows)
        expectEnding(run(arguments), arguments, exitCode, message);
}

TEST_F(CommandLine, TheAddOnIsNamedOrListedInTheEnvironmentOrBesideTheTool) {
    const std::string addOn = ADD_ON;
    const std::string addOnFolder = addOn.substr(0, addOn.rfind('/'));
    const std::string here = "No add-on was found in KROHOST_ADDON_PATH. krohost looked for \"missing.so\", "
                             "\"./vtk-data-loader.so\". Name one with --addon FILE or in the environment variable";
    const std::vector<std::tuple<std::string, int, std::string>> rows{
        {"KROHOST_ADDON_PATH= $krohost cube.vtu", 0, ""},
        {"KROHOST_ADDON_PATH=missing.so::" + addOnFolder + " $krohost cube.vtu", 0, ""},
        {"KROHOST_ADDON_PATH=cube.vtu:" + addOn + " $krohost cube.vtu", 4, "cube.vtu: invalid ELF header\n"},
        {"KROHOST_ADDON_PATH=missing.so:. $krohost cube.vtu", 4, here},
        {"KROHOST_ADDON_PATH=missing.so $krohost cube.vtu --addon " + addOn, 0, ""},
        {"KROHOST_ADDON_PATH=missing.so $krohost cube.vtu --addon " + addOnFolder, 0, ""},
        {"cp $krohost . && LD_LIBRARY_PATH=$(dirname " LIBRARY_WITHOUT_ENTRY_POINT
         ") KROHOST_ADDON_PATH= ./krohost cube.vtu",
         4,
         "/krohost/addons/vtk-data-loader.so\". Name one with --addon FILE or in the environment variable "
         "KROHOST_ADDON_PATH.\n"}};
    for (const auto& [command, exitCode, message] : rows)
        expectEnding(runShell(folder, command), command, exitCode, message);
}

TEST_F(CommandLine, AnInterruptHasAnExitCodeOfItsOwn) {
    // The tool has its signal handler when it has read some of the blanks, of which a pipe holds 65536.
    // Nobody ends what it reads.
    for (const auto& [command, exitCode] : {std::pair{"p.series; INT", 130},
                                            {"p.pvd; TERM", 143},
                                            {"replay p; HUP", 129},
                                            {"diff cube.vtu q.series; INT", 130},
                                            {"r.pvd; INT $!; kill -TERM", 130}}) { // of two at once the first counts
        const std::string text{command};
        const std::string arguments = text.substr(0, text.find(';')), signal = text.substr(text.find(';') + 2);
        const std::string fifo = arguments.substr(arguments.rfind(' ') + 1);
        const Outcome outcome = runShell(
            folder, fmt::format("mkfifo {0}; exec 3<>{0}; \"$krohost\" {1} 3>&- & printf '%100000s' >&3; kill -{2} $!; "
                                "wait $!",
                                fifo, arguments, signal));
        EXPECT_EQ(outcome.exitCode, exitCode) << command;
        EXPECT_EQ(outcome.errors, "Interrupted.\n") << command;
    }
    const Outcome unread = runShell(folder, "mkfifo f; $krohost dump cube.vtu --variable X -o f & "
                                            "until grep -q krohost /proc/$!/comm && grep -q 'SigCgt:.*[2367abef]$' "
                                            "/proc/$!/status; do :; done; "
                                            "kill -INT $!; wait $!");
    EXPECT_EQ(unread.exitCode, 130);
    EXPECT_TRUE(unread.errors.ends_with("Interrupted.\n")) << unread.errors;
}

TEST_F(CommandLine, JsonHoldsTheDatasetAndWhatWasDemanded) {
    json document = json::parse(run("info --json --demand cube.vtu").output);
    EXPECT_EQ(document["zones"][0]["variables"][3]["crc32"], "8d3a01b8");
    document.erase("zones");
    EXPECT_EQ(document, json::parse(R"({"loader": "VTK Data Loader", "loaded": true, "title": "VTK Data",
        "error": null, "losses": [], "instructions": ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "cube.vtu"], "dialogs": [], "stoppedAt": null,
        "violations": [], "variables": [{"number": 1, "name": "X"}, {"number": 2, "name": "Y"},
                                        {"number": 3, "name": "Z"}, {"number": 4, "name": "p"}]})"));
    EXPECT_EQ(run("--json cube.vtu").output.find("crc32"), std::string::npos);
}

TEST_F(CommandLine, JsonIsWholeAfterFailures) {
    const json demand = json::parse(run("--json --demand bad.vtu").output);
    EXPECT_EQ(demand["dialogs"].size(), 1);
    EXPECT_EQ(demand["zones"][0]["variables"][3]["crc32"], nullptr);
    EXPECT_EQ(demand["zones"][0]["variables"][3]["min"], nullptr);
    EXPECT_EQ(json::parse(run("--json broken.vtu").output)["loaded"], false);
    const json missing = json::parse(run("--json missing.vtu").output);
    EXPECT_EQ(missing["loader"], nullptr);
    EXPECT_EQ(missing["dialogs"].size(), 1);
    EXPECT_EQ(json::parse(run("--json cube.vtu --addon missing.so").output)["zones"], json::array());
}

TEST_F(CommandLine, BenchMeasuresALoadAndWhatItStores) {
    const std::string output = run("bench --json -j 2 cube.vtu").output;
    const json all = json::parse(output);
    EXPECT_EQ(output.find('\n'), output.size() - 1);
    for (const char* figure : {"register_s", "demand_s", "wall_s", "cpu_s", "peak_kib", "bytes_read"})
        EXPECT_GT(all.value(figure, 0.0), 0) << figure;
    EXPECT_EQ(all["threads"], 2);
    EXPECT_EQ(all["bytes_stored"], 3 * 8 * 4 + 8 + 8 * 4); // coordinates, p and the node map
    const json one = json::parse(run("bench --json --variable p cube.vtu").output);
    EXPECT_EQ(one["bytes_stored"], 8);
    EXPECT_EQ(one["threads"], 1);
    EXPECT_NE(run("bench cube.vtu").output.find(" MB/s, threads: 1\n"), std::string::npos);
}

TEST_F(CommandLine, ATraceHasListsWhereTheyAreWanted) {
    const std::string demanded = run("trace cube.vtu --demand -j 2").output,
                      list = "KroUtilArgListAppendInt(arguments ";
    EXPECT_NE(demanded.find("KroUtilDataNodeSectionGetCount(zone 1, section 1) = 8\n"), demanded.npos) << demanded;
    EXPECT_EQ(demanded.find(list), demanded.npos);
    EXPECT_NE(run("trace --lists cube.vtu").output.find(list), demanded.npos);
}
