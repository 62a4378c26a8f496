#include "krohost/write/damage.h"

#include "krohost/vtu/decode.h"
#include "krohost/vtu/pieceArrays.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace krohost::write {

namespace {

constexpr const char* damaged = "damaged";

/// Arrays that share their data are decoded once.
class Verifier {
public:
    Verifier(const vtu::Document& document, Losses& losses) : document_{document}, losses_{losses} {}

    void verify(const vtu::Array& array) {
        const std::uint64_t needed = vtu::neededValueCount(array).value_or(UINT64_MAX);
        if (!array.type || needed == 0)
            return;
        const std::optional<vtu::Fault> fault = firstFault(array);
        if (!fault || fault->valueByte / vtu::byteCount(*array.type) >= needed)
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
        return firstFaults_.get(array, [&]() -> std::optional<vtu::Fault> {
            const vtu::Decoded decoded = vtu::decode(
                document_, array, [](auto) {}, pollInterrupt);
            return decoded.faults.empty() ? std::nullopt : std::optional{decoded.faults.front()};
        });
    }

    const vtu::Document& document_;
    Losses& losses_;
    vtu::Shared<std::optional<vtu::Fault>> firstFaults_;
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
