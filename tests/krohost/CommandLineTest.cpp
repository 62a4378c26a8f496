#include "tests/krohost/runKrohost.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// Runs the tool with the fake add-on, in a folder of its own where the files named for the scenarios exist.
Outcome run(const std::string& arguments, const std::string& addOn = FAKE_ADD_ON) {
    const test::TemporaryFolder folder;
    for (const char* scenario : {"box", "fails", "no nodes", "interrupts", "throws"})
        folder.write(std::string{scenario} + ".fake", "");
    return runKrohost(folder.path(), arguments, addOn);
}

} // namespace

TEST(CommandLine, ExitCodesTellWhatHappened) {
    const std::vector<std::tuple<const char*, int, const char*>> rows{
        {"box.fake", 0, ""},
        {"info box.fake --demand -j 3 --node-bits 64", 0, ""},
        {"--json fails.fake", 0, ""},
        {"fails.fake --demand", 1, "Fake Loader: no values\n"},
        {"'no nodes.fake'", 1, "contract violation: KroUtilDataSetAddZoneX: the argument \"IMax\" is 0"},
        {"throws.fake --demand", 1, "contract violation: an exception left DataValueLoad: fell over\n"},
        {"box.fake box.fake", 1, "Fake Loader takes one file at a time.\n"},
        {"", 2, "subcommand is required"},
        {"info", 2, "FILE is required"},
        {"box.fake --node-bits 16", 2, "--node-bits"},
        {"box.fake --loader Other", 2, "There is no loader \"Other\"; there is \"Fake Loader\".\n"},
        {"box.fake --times 1,nan", 2, "--times: nan is not a time"},
        {"replay box.fake --strand 1", 2, "--strand requires --append"},
        {"replay missing.json", 3, "The file \"missing.json\" cannot be opened: "},
        {"'missing*.fake'", 3, "The file \"missing*.fake\" cannot be opened: "},
        {"box.fake --append missing.fake", 3, "The file \"missing.fake\" cannot be opened: "},
        {"box.fake --record /", 1, "The layout \"/\" cannot be written: Is a directory.\n"},
        {"replay box.fake", 1, "The layout \"box.fake\" is malformed: it is not JSON from byte 1 on.\n"},
        {"box.fake missing.fake", 3, "The file \"missing.fake\" cannot be opened: No such file or directory\n"},
        {".", 3, "The file \".\" cannot be opened: Is a directory\n"},
        {"box.fake --addon missing.so", 4, "missing.so\" cannot be loaded: "},
        {"interrupts.fake --demand", 130, "Interrupted.\n"}};
    for (const auto& [arguments, exitCode, message] : rows) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments << '\n' << outcome.errors;
        EXPECT_NE(outcome.errors.find(message), std::string::npos) << arguments << '\n' << outcome.errors;
    }
}

TEST(CommandLine, JsonHoldsTheDatasetAndWhatWasDemanded) {
    const Outcome outcome = run("info --json --demand box.fake");
    const json expected = json::parse(R"({
        "loader": "Fake Loader", "loaded": true, "title": "Fake Data", "instructions": ["box.fake"],
        "dialogs": [], "stoppedAt": null, "violations": [],
        "variables": [{"number": 1, "name": "X"}, {"number": 2, "name": "p"}],
        "zones": [{"number": 1, "name": "wing", "zoneType": 8, "nodes": 10, "elements": 3, "strand": -1,
                   "strandGroup": null, "solutionTime": 0.1, "aux": {},
                   "sections": [{"number": 1, "shape": "hexahedron", "shapeCode": 4, "gridOrder": 1,
                                 "nodesPerElement": 8, "elements": 1, "crc32": "790723dc"},
                                {"number": 2, "shape": "tetrahedron", "shapeCode": 3, "gridOrder": 1,
                                 "nodesPerElement": 4, "elements": 2, "crc32": "790723dc"}],
                   "variables": [{"number": 1, "type": "float64", "location": "nodal", "count": 10, "min": 0.0,
                                  "max": 4.5, "crc32": "d37a9bcc"},
                                 {"number": 2, "type": "float32", "location": "cell", "count": 3, "min": 1.0,
                                  "max": 2.0, "crc32": "676dbed5"}]}]})");
    EXPECT_EQ(json::parse(outcome.output), expected);
    EXPECT_EQ(run("--json box.fake").output.find("crc32"), std::string::npos);
}

TEST(CommandLine, JsonIsWholeAfterFailures) {
    const json demand = json::parse(run("--json --demand fails.fake").output);
    EXPECT_EQ(demand["dialogs"], json{"Fake Loader: no values"});
    EXPECT_EQ(demand["zones"][0]["variables"][1]["crc32"], nullptr);
    EXPECT_EQ(demand["zones"][0]["variables"][1]["min"], nullptr);
    EXPECT_EQ(json::parse(run("--json 'no nodes.fake'").output)["loaded"], false);
    const json missing = json::parse(run("--json missing.fake").output);
    EXPECT_EQ(missing["loader"], nullptr);
    EXPECT_EQ(missing["dialogs"].size(), 1);
    EXPECT_EQ(json::parse(run("--json box.fake", "missing.so").output)["zones"], json::array());
}

TEST(CommandLine, TableAndTraceAreForPeople) {
    const std::string table = run("box.fake").output;
    EXPECT_NE(table.find("   1  wing  mixed     10         3         2      -1   0.1\n"), std::string::npos) << table;
    EXPECT_NE(table.find("         2  p     cell      float32       3\n"), std::string::npos) << table;
    const std::string trace = run("trace box.fake --demand -j 2").output;
    EXPECT_EQ(trace.rfind("-> InitKroAddOn113()\nKroUtilLockOn()\n", 0), 0) << trace;
    EXPECT_NE(trace.find("KroUtilDataNodeSectionGetCount(zone 1, section 2) = 8\n"), std::string::npos) << trace;
    EXPECT_EQ(trace.find("KroUtilArgListAppendInt"), std::string::npos);
    EXPECT_NE(run("trace --lists box.fake").output.find("KroUtilArgListAppendInt(arguments "), std::string::npos);
}
