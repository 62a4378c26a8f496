#include "tests/krohost/runKrohost.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

TEST(AddOnPath, IsNamedOnTheCommandLineOrListedInTheEnvironmentOrBesideTheTool) {
    const test::TemporaryFolder folder;
    test::vtu().piece(test::hexahedron()).write(folder / "cube.vtu");
    const std::string addOn = ADD_ON;
    const std::string addOnFolder = addOn.substr(0, addOn.rfind('/'));
    const std::string here = "No add-on was found in KROHOST_ADDON_PATH. krohost looked for\n  missing.so\n"
                             "  ./vtk-data-loader.so\nName one with --addon FILE or in the environment variable";
    const std::vector<std::tuple<std::string, std::string, int, std::string>> rows{
        {"", "", 0, ""},
        {addOn, "", 0, ""},
        {"missing.so::" + addOnFolder, "", 0, ""},
        {"cube.vtu:" + addOn, "", 4, "cube.vtu: invalid ELF header\n"},
        {"missing.so:.", "", 4, here},
        {"missing.so", "--addon '" + addOn + "'", 0, ""},
        {"missing.so", "--addon '" + addOnFolder + "'", 0, ""},
        {addOn, "--addon missing.so", 4, "The add-on \"missing.so\" cannot be loaded: "}};
    for (const auto& [variable, option, exitCode, message] : rows) {
        const Outcome outcome =
            runShell(folder, "KROHOST_ADDON_PATH='" + variable + "' \"$krohost\" info cube.vtu " + option);
        EXPECT_EQ(outcome.exitCode, exitCode) << variable << ' ' << option << '\n' << outcome.errors;
        EXPECT_NE(outcome.errors.find(message), std::string::npos) << variable << ' ' << option << outcome.errors;
    }
}
