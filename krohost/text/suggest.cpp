#include "krohost/text/suggest.h"

#include "krohost/text/quoted.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <numeric>
#include <set>

namespace krohost {

namespace {

/// Letters to insert, drop or replace to come from one word to the other.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string> nearestName(const std::string& wanted, const std::vector<std::string>& names) {
    constexpr std::size_t longest = 64; // no name that is meant is longer, and the work grows with the square
    if (wanted.size() < 2 || wanted.size() > longest)
        return std::nullopt;
    std::size_t least = std::min(wanted.size() / 3 + 1, wanted.size() - 1);
    std::optional<std::string> nearest;
    for (const std::string& name : names)
        if (const std::size_t own = name.size() > longest ? longest : distance(wanted, name); own <= least) {
            if (!nearest || own < least)
                nearest = name;
            least = own;
        }
    return nearest;
}

std::string noSuch(const char* kind, const std::string& wanted, const std::vector<std::string>& names) {
    constexpr std::size_t shownCount = 40;
    if (names.empty())
        return fmt::format("There is no {} {}; there is none at all.", kind, quoted(wanted));
    std::vector<std::string> shown;
    std::set<std::string> known; // variables may share a name
    for (const std::string& name : names)
        if (known.insert(name).second)
            shown.push_back(quoted(name));
    if (const auto nearest = nearestName(wanted, names)) {
        const auto found = std::find(shown.begin(), shown.end(), quoted(*nearest));
        std::rotate(shown.begin(), found, found + 1);
    }
    const std::size_t moreCount = shown.size() - std::min(shown.size(), shownCount);
    shown.resize(shown.size() - moreCount);
    return fmt::format("There is no {} {}; there is {}{}.", kind, quoted(wanted), fmt::join(shown, ", "),
                       moreCount == 0 ? "" : fmt::format(" and {} more", moreCount));
}

} // namespace krohost
