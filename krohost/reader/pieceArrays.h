/// Which arrays of a file's pieces belong together, and how much of them a host needs.
#pragma once

#include "krohost/reader/Document.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace krohost::reader {

/// What the pieces of a file have of one array. A host takes the first piece's points and connectivity, and its values
/// at points and at cells, with what continues these in the later pieces.
struct PiecewiseArray {
    std::vector<const Array*> parts; ///< one for each piece that has it, the first one always

    const Array& first() const { return *parts.front(); }
    bool isConnectivity() const;
};
std::vector<PiecewiseArray> piecewiseArrays(const Document& document);

/// For each array of a first piece's list the one of a later piece's that continues it; null where there is none. It
/// has the same name, and of several with that name it is the one with the same type and number of components; else it
/// has the same type and a name that differs in case only. No array continues two.
std::vector<const Array*> continuations(const std::vector<Array>& first, const std::vector<Array>& later);

/// The names of the variables that an array becomes, component by component.
std::vector<std::string> variableNames(const Array& array);

/// More components than this no array has.
constexpr std::uint64_t componentLimit = 32767;

/// How many values count, those beyond being passed over. Not known of connectivity and field data unless they have no
/// tuples, nor where it is more than can be.
std::optional<std::uint64_t> neededValueCount(const Array& array);

/// What arrays that share their data have in common, found out once. Inline data are nobody else's.
template <class Result>
class Shared {
public:
    template <class Make>
    Result get(const Array& array, const Make& make) {
        if (array.format != Format::appended)
            return make();
        const auto key = std::pair{array.begin, array.type};
        const auto found = results_.find(key);
        return found != results_.end() ? found->second : results_.emplace(key, make()).first->second;
    }

private:
    std::map<std::pair<std::uint64_t, std::optional<ElementType>>, Result> results_;
};

} // namespace krohost::reader
