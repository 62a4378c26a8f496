// Runs a target over stored inputs, which stands in for the fuzzer where there is none:
//
//     fuzz_TARGET [--expect FILE] FILE_OR_FOLDER...
//     fuzz_TARGET --mutate COUNT FILE_OR_FOLDER...
//
// prints how many inputs there were and how often each outcome came; with --expect, fails where FILE holds another
// text. With --mutate, each input is a document, and COUNT changed ones are taken in its place, always the same ones.

#include "fuzz/fuzz.h"

#include "fuzz/mutate.h"
#include "tests/support/TemporaryFolder.h"

#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

std::vector<std::filesystem::path> inputsIn(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> inputs;
    if (!std::filesystem::is_directory(path))
        inputs.push_back(path);
    else
        for (const auto& entry : std::filesystem::directory_iterator(path))
            inputs.push_back(entry.path());
    std::ranges::sort(inputs);
    return inputs;
}

/// Every input itself, or so many changed ones in its place.
std::string replay(std::span<const std::string> paths, std::uint32_t mutationCount) {
    std::size_t inputCount = 0;
    std::map<std::string, std::size_t> counts;
    const auto take = [&](const std::string& bytes) {
        ++counts[fuzz::limitedOutcome({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})];
        ++inputCount;
    };
    for (const std::string& path : paths)
        for (const std::filesystem::path& input : inputsIn(path)) {
            const std::string bytes = test::readFile(input);
            for (std::uint32_t seed = 0; seed < mutationCount; ++seed)
                take(fuzz::mutated(bytes, seed));
            if (mutationCount == 0)
                take(bytes);
        }
    std::string report = std::to_string(inputCount) + " inputs\n";
    for (const auto& [outcome, count] : counts)
        report += std::to_string(count) + " " + outcome + "\n";
    return report;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    try {
        const bool expects = words.size() > 1 && words[0] == "--expect";
        const bool isMutating = words.size() > 1 && words[0] == "--mutate";
        const std::string report = replay(std::span(words).subspan(expects || isMutating ? 2 : 0),
                                          isMutating ? static_cast<std::uint32_t>(std::stoul(words[1])) : 0);
        std::cout << report;
        if (!expects || report == test::readFile(words[1]))
            return 0;
        std::cerr << "this is not what " << words[1] << " holds\n";
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
    }
    return 1;
}
