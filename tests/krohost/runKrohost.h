#pragma once

#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct Outcome {
    int exitCode;
    std::string output;
    std::string errors;
};

/// Runs a shell command in a folder, where it leaves a file "errors". In the command, $krohost is the tool.
inline Outcome runShell(const test::TemporaryFolder& folder, const std::string& command) {
    const std::string all = "cd '" + folder.path().string() + "' && export KROHOST_ADDON_PATH='" ADD_ON "' krohost='" +
                            KROHOST "' && { " + command + "\n} 2>errors";
    FILE* pipe = popen(all.c_str(), "r");
    Outcome outcome{};
    for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe))
        outcome.output += static_cast<char>(character);
    outcome.exitCode = WEXITSTATUS(pclose(pipe));
    outcome.errors = test::readFile(folder / "errors");
    return outcome;
}

inline Outcome runKrohost(const test::TemporaryFolder& folder, const std::string& arguments) {
    return runShell(folder, "\"$krohost\" " + arguments);
}

/// A folder with a file whose nodal "p" cannot be read and one that cannot be loaded, and the tool run there.
class InFolder : public testing::Test {
protected:
    InFolder() {
        const auto cube = test::hexahedron().withPointData(test::reals("p", test::ElementType::Float64, {}));
        test::vtu().piece(cube).inlineText("p", "x").write(folder / "bad.vtu");
        folder.write("broken.vtu", "<VTKFile>");
    }

    Outcome run(const std::string& arguments) const { return runKrohost(folder, arguments); }

    test::TemporaryFolder folder;
};
