/// What the targets share. A target gets any bytes, hands them to one entry of the add-on and compares what comes of it
/// with a slow and obvious way to the same.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Runs the target over one input. Every target defines it; the result says in a few words what came of the input, so
/// that it can be seen how deep stored inputs reach.
std::string outcome(Bytes input);

/// What a program calls: the outcome of one input, within what an input may cost. More memory than 64 MB or 1100 times
/// the input, whichever is more, and more than that read from files, is a finding. KRO_FUZZ_COST=FACTOR in the
/// environment is for these limits times FACTOR, and prints what each input costs.
std::string limitedOutcome(Bytes input);

/// Ends the process, with the claim on standard error, unless it holds.
void require(bool holds, std::string_view claim);

/// A message for the user without what differs from input to input: quoted texts and numbers.
std::string sentence(std::string_view message);

/// Writes a file of that name in a folder that is the process's own; the file of an earlier input goes.
std::filesystem::path scratchFile(const std::string& name, std::string_view bytes);

inline std::string_view asText(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// An input taken apart from its front. Behind its end there are zeros.
class Input {
public:
    explicit Input(Bytes bytes) : rest_(bytes) {}

    template <class T>
    T take() {
        T value{};
        const std::size_t count = std::min(sizeof value, rest_.size());
        std::memcpy(&value, rest_.data(), count);
        rest_ = rest_.subspan(count);
        return value;
    }
    std::uint8_t byte() { return take<std::uint8_t>(); }
    bool flag() { return byte() % 2 == 1; }
    /// At most `count` bytes.
    Bytes bytes(std::size_t count) {
        const Bytes taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    Bytes rest() const { return rest_; }
    bool empty() const { return rest_.empty(); }

private:
    Bytes rest_;
};

} // namespace fuzz
