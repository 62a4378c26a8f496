#include "krohost/convert/damage.h"

#include "krohost/reader/decode.h"
#include "krohost/reader/pieceArrays.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace krohost::convert {

namespace {

constexpr const char* damaged = "damaged";

/// Arrays that share their data are decoded once.
class Verifier {
public:
    Verifier(const reader::Document& document, Losses& losses) : document_{document}, losses_{losses} {}

    void verify(const reader::Array& array) {
        const std::uint64_t needed = reader::neededValueCount(array).value_or(UINT64_MAX);
        if (!array.type || needed == 0)
            return;
        const std::optional<reader::Fault> fault = firstFault(array);
        if (!fault || fault->valueByte / reader::byteCount(*array.type) >= needed)
            return;
        const std::string location = locationWord(array.association), file = document_.path.string();
        losses_.add({.what = damaged,
                     .message = fmt::format("Values of the array \"{}\" ({}) of \"{}\" are damaged: {}.", array.name,
                                            location, file, fault->message()),
                     .array = array.name,
                     .location = location,
                     .file = file});
    }

private:
    std::optional<reader::Fault> firstFault(const reader::Array& array) {
        return firstFaults_.get(array, [&]() -> std::optional<reader::Fault> {
            const reader::Decoded decoded = reader::decode(
                document_, array, [](auto) {}, pollInterrupt);
            return decoded.faults.empty() ? std::nullopt : std::optional{decoded.faults.front()};
        });
    }

    const reader::Document& document_;
    Losses& losses_;
    reader::Shared<std::optional<reader::Fault>> firstFaults_;
};

} // namespace

void addDamage(const reader::Document& document, const std::function<bool(const reader::Array&)>& isUsed,
               Losses& losses) {
    if (document.compressor == reader::Compressor::none)
        return; // header words are held against the file when it is loaded
    Verifier verifier{document, losses};
    for (const reader::PiecewiseArray& array : reader::piecewiseArrays(document))
        if (!array.isConnectivity() && isUsed(array.first()))
            for (const reader::Array* part : array.parts)
                verifier.verify(*part);
    for (const reader::Array* array : document.arrays()) {
        const bool isOfVariable =
            array->association != reader::Association::cells && array->association != reader::Association::fieldData;
        if (!isOfVariable && isUsed(*array))
            verifier.verify(*array);
    }
}

const Loss* firstDamage(const Losses& losses) {
    const auto found =
        std::find_if(losses.list().begin(), losses.list().end(), [](const Loss& loss) { return loss.what == damaged; });
    return found == losses.list().end() ? nullptr : &*found;
}

} // namespace krohost::convert
