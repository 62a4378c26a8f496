#include "krohost/check/Finding.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace krohost::check {

namespace {

constexpr std::size_t findingLimit = 1000; // of each severity

} // namespace

void Findings::add(Severity severity, std::string_view code, const reader::Position& position, std::string message) {
    if (counts_[severity]++ < findingLimit)
        list_.push_back({severity, std::string(code), file_, position, std::move(message), {}});
}

std::vector<Finding> Findings::take() {
    const auto key = [](const Finding& finding) {
        return std::tuple{finding.position->line, finding.position->column, finding.position->byte};
    };
    std::stable_sort(list_.begin(), list_.end(),
                     [&](const Finding& left, const Finding& right) { return key(left) < key(right); });
    // Damage of header words shows both where they are compared and where the data are decoded; that values are
    // missing, also by the length of their text, before it is known how many there are.
    const auto isSame = [&](const Finding& left, const Finding& right) {
        const bool isCount = left.code == "value-count" && right.code == left.code && left.severity == right.severity;
        return key(left) == key(right) && (isCount || left.message == right.message);
    };
    const auto first = std::unique(list_.rbegin(), list_.rend(), isSame); // the last one knows most
    list_.erase(list_.begin(), first.base());
    for (const auto& [severity, count] : counts_)
        if (count > findingLimit)
            list_.push_back({severity, "more", file_, {}, fmt::format("{} findings more", count - findingLimit), {}});
    return std::move(list_);
}

} // namespace krohost::check
