#include "krohost/write/damage.h"

#include "krohost/vtu/decode.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace krohost::write {

namespace {

constexpr const char* damaged = "damaged";

/// Arrays that share their data are decoded once.
class Verifier {
public:
    Verifier(const vtu::Document& document, Losses& losses) : document_{document}, losses_{losses} {}

    void verify(const vtu::Array& array) {
        if (!array.type || neededByteCount(array) == 0)
            return;
        const std::optional<vtu::Fault> fault = firstFault(array);
        if (!fault || fault->valueByte >= neededByteCount(array))
            return;
        const std::string location = locationWord(array.section), file = document_.path.string();
        losses_.add({.what = damaged,
                     .message = fmt::format("Values of the array \"{}\" ({}) of \"{}\" are damaged: {}.", array.name,
                                            location, file, fault->message()),
                     .array = array.name,
                     .location = location,
                     .file = file});
    }

private:
    std::optional<vtu::Fault> firstFault(const vtu::Array& array) {
        const auto [found, isNew] = firstFaults_.try_emplace(array.begin);
        if (isNew) {
            const vtu::Decoded decoded = vtu::decode(
                document_, array, [](auto) {}, pollInterrupt);
            if (!decoded.faults.empty())
                found->second = decoded.faults.front();
        }
        return found->second;
    }

    /// Of connectivity and of field data all values count.
    static std::uint64_t neededByteCount(const vtu::Array& array) {
        const bool isCounted =
            array.section != vtu::Section::fieldData && !vtu::equalsIgnoringCase(array.name, "connectivity");
        std::uint64_t count = 0;
        const bool isOverflow = __builtin_mul_overflow(array.tupleCount, array.componentCount.value_or(0), &count) ||
                                __builtin_mul_overflow(count, vtu::byteCount(*array.type), &count);
        return isOverflow || (!isCounted && count > 0) ? UINT64_MAX : count;
    }

    const vtu::Document& document_;
    Losses& losses_;
    std::map<std::uint64_t, std::optional<vtu::Fault>> firstFaults_; // by where the data begin
};

} // namespace

void addDamage(const vtu::Document& document, const std::function<bool(const vtu::Array&)>& isUsed, Losses& losses) {
    if (document.compressor == vtu::Compressor::none)
        return; // header words are held against the file when it is loaded
    Verifier verifier{document, losses};
    for (const vtu::PiecewiseArray& array : vtu::piecewiseArrays(document))
        if (!array.isConnectivity() && isUsed(array.first()))
            for (const vtu::Array* part : array.parts)
                verifier.verify(*part);
    for (const vtu::Array* array : document.arrays()) {
        const bool isOfVariable = array->section != vtu::Section::cells && array->section != vtu::Section::fieldData;
        if (!isOfVariable && isUsed(*array))
            verifier.verify(*array);
    }
}

const Loss* firstDamage(const Losses& losses) {
    const auto found =
        std::find_if(losses.list().begin(), losses.list().end(), [](const Loss& loss) { return loss.what == damaged; });
    return found == losses.list().end() ? nullptr : &*found;
}

} // namespace krohost::write
