#include "tests/krohost/runKrohost.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace {

using nlohmann::json;
using test::ElementType;

/// Adds a cube that has a "p" at both locations and a mesh of several shapes.
class Dump : public InFolder {
protected:
    Dump() {
        const auto cube = test::hexahedron()
                              .withPointData(reals("p", ElementType::Float32,
                                                   {0.1, NAN, INFINITY, -INFINITY, -0.0, 1e-7, 16777216, 3}))
                              .withPointData(integers("a,&quot;b&quot;", ElementType::Int16, {-1, 1, 2, 3, 4, 5, 6, 7}))
                              .withCellData(reals("p", ElementType::Float64, {0.1}));
        test::vtu().appendedRaw().piece(cube).write(folder / "cube.vtu");
        test::vtu().piece(test::mixed()).write(folder / "mixed.vtu");
    }

    Outcome run(const std::string& arguments) const { return runKrohost(folder, "dump " + arguments); }
};

} // namespace

TEST_F(Dump, TextIsExact) {
    const std::string zone = "# zone 1 \"cube\"\n", p = "# \"p\": nodal float32, 8 values\n";
    const std::string rows = "0  0.1\n1  nan\n2  inf\n3  -inf\n4  -0\n5  1e-07\n6  16777216\n7  3\n";
    const std::vector<std::pair<const char*, std::string>> table{
        {"cube.vtu --variable p --location nodal", zone + p + rows},
        {"cube.vtu --variable p --location nodal --range 6:", zone + p + "6  16777216\n7  3\n"},
        {"cube.vtu --variable p --location nodal --range :1 --zone 1 --max-memory 1K", zone + p + "0  0.1\n"},
        {"cube.vtu --variable p --location nodal --range 8: --zone cube", zone + p},
        {"cube.vtu --variable p --location cell --format csv", "p\n0.1\n"},
        {"cube.vtu --variable 'a,\"b\"' --variable X --range 6:8 --format csv", "\"a,\"\"b\"\"\",X\n6,1\n7,0\n"},
        {"mixed.vtu --node-map --section 4 --format csv", "node1,node2,node3,node4\n19,20,21,22\n"},
        {"mixed.vtu --node-map --section 2 --range 0:1",
         "# zone 1 \"mixed\"\n# section 2: prism, grid order 1, 1 elements of 6 nodes\n0  8  9  10  11  12  13\n"}};
    for (const auto& [arguments, output] : table) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.output, output) << arguments << '\n' << outcome.errors;
        EXPECT_EQ(outcome.exitCode, 0) << arguments;
    }
    EXPECT_EQ(runShell(folder, "$krohost dump mixed.vtu --node-map | grep -c '#'").output, "5\n"); // every section
}

TEST_F(Dump, JsonIsOneDocument) {
    const std::vector<std::pair<const char*, const char*>> table{
        {"cube.vtu --variable p --location nodal --range 0:3",
         R"({"loaded": true, "zone": {"number": 1, "name": "cube"}, "variables": [{"number": 4, "name": "p",
             "type": "float32", "location": "nodal", "count": 8, "first": 0, "values": [0.1, null, null]}],
             "losses": [], "error": null, "dialogs": [], "violations": []})"},
        {"mixed.vtu --node-map --section 4",
         R"({"loaded": true, "zone": {"number": 1, "name": "mixed"}, "sections": [{"number": 4,
             "shape": "tetrahedron", "gridOrder": 1, "nodesPerElement": 4, "elements": 1, "first": 0,
             "nodes": [[19, 20, 21, 22]]}], "losses": [], "error": null, "dialogs": [], "violations": []})"}};
    for (const auto& [arguments, document] : table)
        EXPECT_EQ(json::parse(run(std::string{arguments} + " --json").output), json::parse(document)) << arguments;
    EXPECT_NE(run("cube.vtu --variable p --location nodal --range 4:5 --json").output.find("[-0.0]"),
              std::string::npos);
    const Outcome failed = run("bad.vtu --variable p --json");
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(json::parse(failed.output)["variables"][0]["values"], nullptr);
    EXPECT_EQ(json::parse(failed.output)["dialogs"].size(), 1);
}

TEST_F(Dump, WhatIsNotClearOrNotThereIsRefused) {
    const std::string onTerminal = "script -qec '$krohost dump cube.vtu --variable X --format raw 2>/dev/stdout'";
    EXPECT_NE(runShell(folder, onTerminal + " /dev/null").output.find("not for terminals; name a file with -o"),
              std::string::npos);
    const std::vector<std::tuple<const char*, int, const char*>> table{
        {"cube.vtu", 2, "--variable or --node-map is required\n"},
        {"cube.vtu --variable X --range 0:9", 2, "The range 0:9 is too large: there are 8 values.\n"},
        {"mixed.vtu --node-map --section 1 --range 2:", 2, "The range 2: is too large: there are 1 elements.\n"},
        {"cube.vtu --variable X --range 3:2", 2, "--range: 3:2 is not a range\n"},
        {"cube.vtu --variable X --range -1:2", 2, "--range: -1:2 is not a range\n"},
        {"cube.vtu --variable p", 2, "There are 2 variables \"p\" in zone 1 \"cube\"; choose one with --location.\n"},
        {"cube.vtu --variable q", 2, "There is no variable \"q\"; there is "},
        {"cube.vtu --variable X --location cell", 2, "There is no cell variable \"X\"; there is "},
        {"cube.vtu mixed.vtu --variable X", 2, "There are 2 zones; choose one by its number with --zone.\n"},
        {"cube.vtu --variable X --zone wing", 2, "There is no zone \"wing\"; there are 1.\n"},
        {"mixed.vtu --node-map --format csv", 2,
         "There are 4 sections in zone 1 \"mixed\"; choose one with --section.\n"},
        {"mixed.vtu --node-map --section 5", 2, "There is no section 5 in zone 1 \"mixed\"; there are 4.\n"},
        {"mixed.vtu --variable X --variable material", 2,
         "Variables with 23 and 4 values are not columns of one table.\n"},
        {"cube.vtu --variable X --variable Y --format raw", 2, "The formats npy and raw take one variable.\n"},
        {"cube.vtu --variable X -o /dev/full", 1,
         "The file \"/dev/full\" cannot be written: No space left on device\n"},
        {"cube.vtu --variable X --max-memory 31", 1,
         "Not enough memory for variable 1 \"X\" of zone 1 \"cube\": 32 bytes are needed, 31 may be used\n"},
        {"cube.vtu --variable X --max-memory -1", 2, "--max-memory: Value -1 not in range"},
        {"bad.vtu --variable p -o kept", 1, "VTK Data Loader: "}};
    for (const auto& [arguments, exitCode, message] : table) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments << '\n' << outcome.errors;
        EXPECT_EQ(outcome.errors.find(message), 0) << arguments << '\n' << outcome.errors;
        EXPECT_EQ(outcome.output, "") << arguments;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "kept")); // nothing is written for data that are not there
}
