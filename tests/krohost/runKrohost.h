#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

struct Outcome {
    int exitCode;
    std::string output;
    std::string errors;
};

/// Runs the tool in a folder, where it leaves a file "errors".
inline Outcome runKrohost(const std::filesystem::path& folder, const std::string& arguments, const std::string& addOn) {
    const std::string command =
        "cd '" + folder.string() + "' && KROHOST_ADDON_PATH='" + addOn + "' '" KROHOST "' " + arguments + " 2>errors";
    FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome{};
    for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe))
        outcome.output += static_cast<char>(character);
    outcome.exitCode = WEXITSTATUS(pclose(pipe));
    std::ifstream errors{folder / "errors"};
    outcome.errors.assign(std::istreambuf_iterator<char>{errors}, {});
    return outcome;
}
