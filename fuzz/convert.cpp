// A file, converted and dumped by krohost in this process: in one format after another by what is in the input, so
// that an input is always taken for the same. What comes out loads as what went in.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"
#include "fuzz/toolRun.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <filesystem>
#include <numeric>
#include <optional>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::vector<std::vector<std::string>> conversions{
    {"a.vtu"},    {"a.vtu", "--encoding", "ascii"},
    {"a.vtm"},    {"a.vtu", "--encoding", "base64", "--compress", "none", "--byte-order", "big"},
    {"a.vtkhdf"}, {"a.vtu", "--encoding", "appended-base64", "--header", "UInt32"},
    {"a.cgns"},   {"a.csv"}};

struct Outcome {
    std::string text;
    std::string bytes;   // of the first file, where there is one
    std::string changes; // what a conversion says of them
};

/// What is damaged is written, but it is no success.
bool tellsOfDamage(const fuzz::ToolRun& run) {
    return run.errors.find(" are damaged: ") != std::string::npos;
}

/// Everything in the folder goes before.
Outcome convert(const fs::path& source, const fs::path& folder, std::vector<std::string> arguments) {
    fs::remove_all(folder);
    fs::create_directory(folder);
    const fs::path target = folder / arguments.front();
    arguments.front() = target.string();
    arguments.insert(arguments.begin(), {"convert", source.string(), "-o"});
    const fuzz::ToolRun run = fuzz::runTool(std::move(arguments));
    fuzz::require(run.exitCode == 0 || run.exitCode == 1, "a conversion succeeds or fails");
    fuzz::require(run.exitCode == 0 || !run.errors.empty(), "a conversion that fails says why");
    const bool isWritten = run.exitCode == 0 || tellsOfDamage(run);
    fuzz::require(isWritten == fs::exists(target), "there is a file when and only when it was converted");
    fuzz::require(isWritten || fs::is_empty(folder), "a conversion that fails leaves nothing");
    return {isWritten ? "converted" : fuzz::sentence(run.errors.substr(0, run.errors.find('\n'))),
            isWritten ? test::readFile(target) : "", isWritten ? fuzz::sentence(run.errors) : ""};
}

/// Some of the formats put times or addresses into their files.
bool isRepeatable(const fs::path& target) {
    return target.extension() != ".vtkhdf" && target.extension() != ".cgns";
}

void dumpFirstVariable(const fs::path& source, std::size_t choice) {
    static constexpr std::array formats{"text", "csv", "npy", "raw"};
    const fs::path target = fuzz::scratchFile("dump", "");
    fs::remove(target);
    const fuzz::ToolRun run =
        fuzz::runTool({"dump", source.string(), "--variable", "X", "--location", "nodal", "--zone", "1", "--format",
                       formats[choice % formats.size()], "-o", target.string()});
    fuzz::require(run.exitCode >= 0 && run.exitCode <= 2, "a dump succeeds, fails or is not possible");
    fuzz::require((run.exitCode == 0 || tellsOfDamage(run)) == fs::exists(target),
                  "there is a file when and only when something was dumped");
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const auto choice = std::accumulate(input.begin(), input.end(), std::size_t{0});
    const fs::path source = scratchFile("mesh.vtu", asText(input)), folder = source.parent_path() / "out";
    const std::vector<std::string>& arguments = conversions[choice % conversions.size()];
    const std::optional<std::string> content = loadedContent(source);
    const Outcome plain = convert(source, folder, arguments);
    const fs::path target = folder / arguments.front();
    const bool isLoadable = target.extension() == ".vtu" || target.extension() == ".vtm";
    std::string text = arguments.front().substr(2) + ": " + plain.text;
    if (plain.text == "converted" && isLoadable && content) {
        const bool isSame = loadedContent(target) == content;
        require(isSame || !plain.changes.empty(),
                "a converted file loads as its source, or it is said what was changed");
        text += isSame ? ", the same" : ", but " + plain.changes;
    }
    std::vector<std::string> small = arguments;
    small.insert(small.end(), {"--max-memory", "300"});
    const Outcome sparing = convert(source, folder, small);
    require(sparing.text != "converted" || plain.text == "converted", "less memory makes nothing possible");
    require(sparing.text != "converted" || !isRepeatable(target) || sparing.bytes == plain.bytes,
            "the same is written with less memory");
    dumpFirstVariable(source, choice / conversions.size());
    return text;
}
