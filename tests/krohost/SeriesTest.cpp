#include "tests/krohost/runKrohost.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using test::repeated;

std::string pvd(const std::string& dataSets) {
    return R"(<?xml version="1.0"?><VTKFile type="Collection"><Collection>)" + dataSets + "</Collection></VTKFile>";
}

/// Some steps of a series, and ways to name them.
class Series : public InFolder {
protected:
    Series() {
        const std::string mesh = test::vtu().piece(test::hexahedron()).text();
        for (const char* name : {"s1.vtu", "s2.vtu", "s10.vtu", "other/a.vtu", "other/b.vtu", "s[1].vtu"})
            folder.write(name, mesh);
        folder.write("broken/s3.vtu", "<VTKFile");
        folder.write("parts.pvd", pvd(R"(<DataSet timestep="3e-7" part="1" file="s2.vtu"/>
                                         <DataSet timestep=" 3e-7" part="0" file="other/a.vtu"/>
                                         <DataSet timestep="1e-7" part="0" file="s1.vtu"/>
                                         <DataSet timestep="1e-7" part="1" file="s10.vtu"/>)"));
        folder.write("other/c.series", R"({"file-series-version": "1.0", "files": [
                                           {"name": "b.vtu", "time": 0.5}, {"name": "../s1.vtu"}]})");
        folder.write("broken.pvd", pvd(R"(<DataSet timestep="0" file="s1.vtu"/>
                                          <DataSet timestep="1" file="broken/s3.vtu"/>)"));
        folder.write("gone.pvd", pvd(R"(<DataSet timestep="0" file="s1.vtu"/><DataSet file="other/gone.vtu"/>)"));
        folder.write("gone.json", R"({"loader": "VTK Data Loader", "instructions":
                                      ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "other/gone.vtu"]})");
        folder.write("unknown.json", R"({"loader": "L", "instructions": []})");
        folder.write("list.json", R"({"loader": ["L"], "instructions": []})");
        folder.write("twice.json", R"({"loader": "L", "instructions": [], "loader": "M"})");
        folder.write("number.json", R"({"loader": "L", "instructions": [1]})");
        folder.write("half.json", R"({"loader": "L"})");
    }

    /// The zones as "name strand group time", or the exit code and what was said.
    std::string zones(const std::string& arguments) const {
        const Outcome outcome = run(arguments + " --json");
        if (outcome.exitCode != 0)
            return std::to_string(outcome.exitCode) + " " + outcome.errors;
        const json document = json::parse(outcome.output);
        std::string text;
        for (const json& zone : document["zones"])
            text += zone["name"].get<std::string>() + " " + zone["strand"].dump() + " " + zone["strandGroup"].dump() +
                    " " + zone["solutionTime"].dump() + "\n";
        return text;
    }
};

} // namespace

TEST_F(Series, IsWhatTheUserNames) {
    const std::string loadFailed =
        "1 VTK Data Loader: An error occurred while reading data from the VTK file.\nReason: ";
    const std::string gone = loadFailed + "Failed to open VTK file for reading\n"
                                          "krohost: the load stopped at \"other/gone.vtu: Opening file...\"\n";
    const std::vector<std::pair<const char*, std::string>> rows{
        {"other/a.vtu other/b.vtu", "a -1 null 0.0\nb -1 null 0.0\n"},
        {"'s[1-9]*.vtu'", "s1 -1 1 1.0\ns2 -1 1 2.0\ns10 -1 1 10.0\n"},
        {"'s[1].vtu'", "s[1] -1 null 1.0\n"},
        {"parts.pvd", "s1 -1 1 1e-07\ns10 -1 2 1e-07\na -1 1 3e-07\ns2 -1 2 3e-07\n"},
        {"other/c.series", "s1 -1 1 0.0\nb -1 1 0.5\n"},
        {"other/c.series --time-source None", "s1 -1 null 0.0\nb -1 null 0.0\n"},
        {"--times -1.5,1e-9 s1.vtu s2.vtu", "s1 -1 1 -1.5\ns2 -1 1 1e-09\n"},
        {"--times 1,2,2,3 s1.vtu s1.vtu s1.vtu s1.vtu", "s1 -1 1 1.0\ns1 -1 1 2.0\ns1 -1 2 2.0\ns1 -1 1 3.0\n"},
        {"--times 2,1,2 s1.vtu s1.vtu s1.vtu", "s1 -1 1 2.0\ns1 -1 1 1.0\ns1 -1 1 2.0\n"},
        {"s2.vtu --loader 'TRIX Loader'", "s2 -1 null 2.0\n"},
        {"s1.vtu --strand 4", "s1 4 null 1.0\n"},
        {"s1.vtu --append other/b.vtu --strand 2", "s1 -1 null 1.0\nb 2 null 0.0\n"},
        {"--times 5 s1.vtu --append other/b.vtu", "s1 -1 null 5.0\nb 1 null 0.0\n"},
        {"s1.vtu s2.vtu --append other/c.series", "s1 -1 1 1.0\ns2 -1 1 2.0\ns1 2 null 0.0\nb 2 null 0.5\n"},
        {"s1.vtu --append s1.vtu s2.vtu --strand -1", "s1 -1 null 1.0\ns1 -1 1 1.0\ns2 -1 1 2.0\n"},
        {"broken.pvd", loadFailed + "Premature end of document.\n"
                                    "krohost: the load stopped at \"broken/s3.vtu: Parsing XML file...\"\n"},
        {"gone.pvd", gone},
        {"replay gone.json", gone},
        {"s1.vtu --append broken/s3.vtu", loadFailed + "Premature end of document.\n"},
        {"s1.vtu --append s2.vtu --strand 99999999999", "2 Could not convert: --strand = 99999999999\n"
                                                        "Run with --help for more information.\n"},
        {"replay unknown.json", "1 There is no loader \"L\"; there is \"VTK Data Loader\", \"TRIX Loader\".\n"}};
    for (const auto& [arguments, expected] : rows)
        EXPECT_EQ(zones(arguments), expected) << arguments;
    for (const std::string name : {"list.json", "twice.json", "number.json", "half.json"})
        EXPECT_EQ(zones("replay " + name), "1 The layout \"" + name +
                                               "\" is malformed: it must hold a text \"loader\" and a list of texts "
                                               "\"instructions\".\n");
    for (const char* arguments : {"--json gone.pvd", "replay --json gone.json"})
        EXPECT_EQ(json::parse(run(arguments).output)["stoppedAt"], "other/gone.vtu: Opening file...") << arguments;
}

TEST_F(Series, ThatIsMalformedIsRefusedWithTheReason) {
    const std::vector<std::tuple<const char*, std::string, const char*>> rows{
        {"bad.pvd", "<VTKFile", "is malformed: unclosed token at byte 0"},
        {"bad.pvd", "", "is malformed: no element found at byte 0"},
        {"bad.pvd", pvd("<DataSet file='\xFF'/>"), "is malformed: not well-formed (invalid token) at byte 75"},
        {"bad.pvd", pvd(R"(<DataSet timestep="nan" file="s1.vtu"/>)"),
         R"(is malformed: the timestep "nan" is not a number)"},
        {"bad.pvd", pvd("<DataSet file='" + std::string(3 << 20, 'x') + "'/>"),
         "is malformed: markup is longer than 1048576 bytes at byte 60"},
        {"bad.pvd", pvd(repeated(R"(<DataSet file="s1.vtu"/>)", 200000) + "<DataSet/>"),
         "is malformed: its DataSet 200001 has no file"},
        {"bad.pvd", pvd(""), "names no files"},
        {"bad.pvd", pvd(R"(<DataSet timestep="x" file="s1.vtu"/>)"),
         R"(is malformed: the timestep "x" is not a number)"},
        {"bad.pvd", pvd(R"(<DataSet timestep="1"/>)"), "is malformed: its DataSet 1 has no file"},
        {"bad.pvd", "<VTKFile type='UnstructuredGrid'/>", "is malformed: it is not a VTKFile of the type Collection"},
        {"bad.series", R"({"files": [)", "is malformed: it is not JSON from byte 12 on"},
        {"bad.series", R"({"files": [{"name": "s1.vtu", "time": "x"}]})",
         "is malformed: the time of its file 1 is not a number"},
        {"bad.series", R"({"files": [{}]})", "is malformed: its file 1 has no name"},
        {"bad.series", R"({"files": ["s1.vtu"]})", "is malformed: its file 1 has no name"},
        {"bad.series", R"({"files": [{"name": 1}]})", "is malformed: its file 1 has no name"},
        {"bad.series", R"({"files": [{"name": "a", "name": "b"}]})", "is malformed: its file 1 has two names"},
        {"bad.series", R"({"files": [], "files": []})", R"(is malformed: it has two lists "files")"},
        {"bad.series", R"({"files": [{"name": "a", "time": 1e999}]})",
         "is malformed: it holds a number that is too large"},
        {"bad.series", R"({"files": [{"name": "a", "time": NaN}]})", "is malformed: it is not JSON from byte 34 on"},
        {"bad.series", "{\"files\": [{\"name\": \"\xFF\"}]}", "is malformed: it is not JSON from byte 22 on"},
        {"bad.series", repeated("[", 1000000), "is malformed: it is nested more than 100 deep"},
        {"bad.series", R"({"files": [)" + repeated(R"({"name": "s1.vtu"}, )", 200000) + "{}]}",
         "is malformed: its file 200001 has no name"},
        {"bad.series", "[]", R"(is malformed: it has no list "files")"}};
    for (const auto& [name, text, reason] : rows) {
        folder.write(name, text);
        EXPECT_EQ(zones(name), std::string{"1 The time series \""} + name + "\" " + reason + ".\n");
    }
}

TEST_F(Series, IsTheSameWhenItsRecordIsReplayed) {
    for (const std::string arguments : {"s1.vtu", "s1.vtu s2.vtu --time-source none", "other/c.series",
                                        "s1.vtu --strand 4", "s1.vtu --append s2.vtu --strand 3"}) {
        const std::string appended = arguments.substr(std::min(arguments.find(" --append"), arguments.size()));
        const Outcome first = run("info --json --demand --force --record layout.json " + arguments);
        const Outcome replayed = run("replay --json --demand layout.json" + appended);
        EXPECT_EQ(first.exitCode, 0) << first.errors;
        EXPECT_EQ(replayed.output, first.output) << arguments;
    }
}
