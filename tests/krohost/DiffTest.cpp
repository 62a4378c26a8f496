#include "tests/krohost/runKrohost.h"
#include "tests/support/sound.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace {

using nlohmann::json;
using test::ElementType;

test::VtuBuilder cube(std::vector<double> p, ElementType type = ElementType::Float64) {
    return test::vtu().appendedRaw().piece(test::hexahedron().withPointData(reals("p", type, std::move(p))));
}

class Diff : public InFolder {
protected:
    Diff() {
        const std::vector<double> p{NAN, 1, 2, 3, 4, 5, INFINITY, 7};
        cube(p).write(folder / "a.vtu");
        cube(p).compressed().write(folder / "b2.vtu");
        cube({NAN, 1, 2.5, 3, 4, 5.5, INFINITY, 7}).write(folder / "near.vtu");
        cube({0, 1, 2, 3, 4, 5, -INFINITY, 7}).write(folder / "undefined.vtu");
        cube(p, ElementType::Float32).timeValue(4).write(folder / "single.vtu");
        cube(p).values("connectivity", {0, 1, 2, 3, 4, 5, 7, 6}).write(folder / "turned.vtu");
        test::vtu().piece(test::mixed()).write(folder / "mixed.vtu");
        const auto ids = [](std::vector<std::int64_t> values) {
            return test::vtu().piece(
                test::hexahedron().withPointData(integers("id", ElementType::Int64, std::move(values))));
        };
        const std::int64_t wrap = std::int64_t{1} << 32;
        ids({0, 1, 2, 3, 4, 5, 6, 7}).write(folder / "i.vtu");
        ids({0, 1, 2, wrap + 3, 4, 5, 6, 7}).write(folder / "j.vtu");
        test::odd(ids({0, 1, 2, wrap + 3, 4, 5, 6, 7})).write(folder / "odd.vtu");
        ids({0, 1, 2, 3, 4, 5, 6, INT32_MAX}).write(folder / "most.vtu");
        ids({0, 1, 2, 3, 4, 5, 6, std::int64_t{INT32_MAX} + 1}).write(folder / "over.vtu");
        ids({0, 1, 2, 3, 4, 5, 6, INT64_MAX - 1}).write(folder / "far.vtu");
        ids({0, 1, 2, 3, 4, 5, 6, INT64_MAX}).write(folder / "farther.vtu");
        ids({0, 1, 2, wrap + 3, 4, 5, 6, 7})
            .values("connectivity", {0, 1, 2, 3, 4, 5, 6, wrap + 7})
            .write(folder / "k.vtu");
    }

    Outcome run(const std::string& arguments) const { return runKrohost(folder, "diff " + arguments); }
};

} // namespace

TEST_F(Diff, SaysWhatDiffers) {
    std::string unknown; // of what a file holds that is not read to its end
    for (const char* what :
         {"node map", "nodal variable \"X\"", "nodal variable \"Y\"", "nodal variable \"Z\"", "nodal variable \"id\""})
        unknown += std::string{"zone 1 \"odd\": "} + what +
                   ": cannot be compared, the host does not hold the values of the files\n";
    const std::string p = "zone 1 \"a\": nodal variable \"p\": ";
    const std::vector<std::tuple<const char*, int, std::string>> table{
        {"a.vtu a.vtu", 0, ""},
        {"a.vtu b2.vtu", 0, ""}, // only the files' names differ, and with them the zones' names and times
        {"'a*.vtu' 'b[0-9].vtu' --max-memory 128", 0, ""},
        {"a.vtu near.vtu", 5,
         p + "2 of 8 values differ, largest absolute difference 0.5 at 2 (2, 2.5), largest relative difference 0.2 at "
             "2 (2, 2.5)\n"},
        {"near.vtu a.vtu --rtol 0.15", 5,
         "zone 1 \"near\": nodal variable \"p\": 1 of 8 values differ, largest absolute difference 0.5 at 2 (2.5, 2), "
         "largest relative difference 0.2 at 2 (2.5, 2)\n"},
        {"a.vtu near.vtu --rtol 0.2", 0, ""},
        {"a.vtu near.vtu --atol 0.5", 0, ""},
        {"a.vtu undefined.vtu --rtol 9 --atol 9", 5,
         p + "2 of 8 values differ, largest absolute difference inf at 0 (nan, 0), largest relative difference inf at "
             "0 (nan, 0)\n"},
        {"a.vtu single.vtu", 5,
         "zone 1 \"a\": solution time: 0.0 in A, 4.0 in B\nzone 1 \"a\": aux data \"TimeValue\": only in B\n" + p +
             "\"float64\" in A, \"float32\" in B\n"},
        {"a.vtu turned.vtu", 5, "zone 1 \"a\": section 1: 2 of 8 node numbers differ, first at element 0, node 7\n"},
        {"a.vtu 'b2.vtu' --times 1", 0, ""},
        {"a.vtu '[ab]*2.vtu' --strand 3", 0, ""},
        {"a.vtu 'near.vtu' --node-bits 64 --atol 1", 0, ""},
        {"j.vtu j.vtu", 0, ""}, // the host holds 4294967299 as 3
        {"i.vtu j.vtu", 5,
         "zone 1 \"i\": nodal variable \"id\": 1 of 8 values differ, largest absolute difference 4294967296 at 3 (3, "
         "4294967299), largest relative difference 0.9999999993015081 at 3 (3, 4294967299)\n"},
        {"j.vtu i.vtu --rtol 1", 0, ""},
        {"odd.vtu i.vtu", 5, unknown},
        {"most.vtu over.vtu --atol 1", 0, ""},
        {"over.vtu most.vtu", 5,
         "zone 1 \"over\": nodal variable \"id\": 1 of 8 values differ, largest absolute difference 1 at 7 "
         "(2147483648, "
         "2147483647), largest relative difference 4.656612873077393e-10 at 7 (2147483648, 2147483647)\n"},
        {"far.vtu farther.vtu", 5,
         "zone 1 \"far\": nodal variable \"id\": 1 of 8 values differ, largest absolute difference 1 at 7 "
         "(9223372036854775806, 9223372036854775807), largest relative difference 1.0842021724855044e-19 at 7 "
         "(9223372036854775806, 9223372036854775807)\n"},
        {"j.vtu k.vtu", 5,
         "zone 1 \"j\": node map: cannot be compared, the host does not hold the values of the files\n"},
        {"a.vtu bad.vtu", 1, p + "not compared, not loaded from B\n"},
        {"a.vtu broken.vtu", 1, ""},
        {"a.vtu missing.vtu", 3, ""},
        {"a.vtu", 2, ""},
        {"a.vtu near.vtu --rtol -1", 2, ""}};
    for (const auto& [arguments, exitCode, output] : table) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.output, output) << arguments << '\n' << outcome.errors;
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments << '\n' << outcome.errors;
    }
}

TEST_F(Diff, SaysWhatOnlyOneOfThemHas) {
    const std::string text = run("mixed.vtu a.vtu").output;
    for (const char* line : {"type: \"mixed\" in A, \"bricks\" in B\n", "nodes: 23 in A, 8 in B\n",
                             "sections: 4 in A, 1 in B\n", "nodal variable \"pressure\": only in A\n",
                             "cell variable \"material\": only in A\n", "nodal variable \"p\": only in B\n"})
        EXPECT_NE(text.find(std::string{"zone 1 \"mixed\": "} + line), std::string::npos) << text;
    folder.write("two.series", R"({"files": [{"name": "a.vtu", "time": 1}, {"name": "near.vtu", "time": 2}]})");
    EXPECT_EQ(run("two.series a.vtu").output, "dataset: zones: 2 in A, 1 in B\nzone 1 \"a\": strand: 1 in A, -1 in "
                                              "B\nzone 1 \"a\": solution time: 1.0 in A, 0.0 in B\n");
}

TEST_F(Diff, JsonHoldsTheSame) {
    EXPECT_EQ(json::parse(run("--json a.vtu b2.vtu").output),
              json::parse(R"({"loaded": true, "same": true, "structure": [], "variables": [], "nodeMaps": [],
                              "notCompared": [], "losses": [], "error": null, "dialogs": [], "violations": []})"));
    EXPECT_EQ(json::parse(run("--json a.vtu near.vtu").output)["variables"],
              json::parse(R"([{"zone": 1, "name": "p", "location": "nodal", "count": 8, "differing": 2,
                               "absolute": {"difference": 0.5, "index": 2, "a": 2.0, "b": 2.5},
                               "relative": {"difference": 0.2, "index": 2, "a": 2.0, "b": 2.5}}])"));
    EXPECT_EQ(json::parse(run("--json a.vtu single.vtu").output)["structure"][2],
              json::parse(R"({"zone": 1, "what": "nodal variable \"p\"", "a": "float64", "b": "float32"})"));
    EXPECT_EQ(json::parse(run("--json a.vtu turned.vtu").output)["nodeMaps"][0]["firstNode"], 7);
    EXPECT_EQ(json::parse(run("--json a.vtu bad.vtu").output)["notCompared"][0]["notLoadedFrom"], "B");
    EXPECT_EQ(json::parse(run("--json a.vtu broken.vtu").output)["loaded"], false);
}
