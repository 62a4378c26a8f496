// Instruction lists, one item a line. What is understood must be the same after it was written and read again.

#include "fuzz/fuzz.h"

#include "loader/addon/VtkFileLoaderInstructions.h"

#include "krohost/host/runtime/Host.h"
#include "loader/sdk/exceptions.h"

#include <cmath>

namespace {

using veltra::vtk::VtkFileLoaderInstructions;

VtkFileLoaderInstructions parse(const veltra::toolbox::StringList& list) {
    return {std::make_shared<const std::string>("L"), list.get()};
}

bool isSame(const VtkFileLoaderInstructions& left, const VtkFileLoaderInstructions& right) {
    const auto isSamePath = [](const auto& one, const auto& other) { return *one == *other; };
    const auto isSameTime = [](double one, double other) { // to a microsecond
        return std::isnan(one) ? std::isnan(other) : one == other || std::abs(one - other) < 1e-6;
    };
    return std::ranges::equal(left.files, right.files, isSamePath) &&
           std::ranges::equal(left.solutionTimes, right.solutionTimes, isSameTime) &&
           left.solutionTimeSource == right.solutionTimeSource && left.strand == right.strand;
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    static const krohost::Host host;
    veltra::toolbox::StringList list;
    std::string_view text = asText(input);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        list.append(std::string(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    try {
        const VtkFileLoaderInstructions instructions = parse(list);
        instructions.write(list);
        if (instructions.files.empty())
            return "no files"; // written as a list of none, which nobody reads
        require(isSame(parse(list), instructions), "what is written is read again");
        return instructions.solutionTimes.empty() ? "files" : "files and times";
    } catch (const veltra::kroutilutil::InvalidInstructionsException& failure) {
        require(std::string_view(failure.what()).starts_with("L:"), "the loader is named");
        return sentence(failure.what());
    }
}
