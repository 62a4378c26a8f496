#include "krohost/check/Finding.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace krohost::check {

void Findings::add(Severity severity, std::string_view code, const vtu::Position& position, std::string message) {
    constexpr std::size_t findingLimit = 1000;
    if (list_.size() < findingLimit)
        list_.push_back({severity, std::string(code), file_, position, std::move(message), {}});
    else
        ++leftOutCount_;
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
    if (leftOutCount_ > 0)
        list_.push_back({Severity::error, "more", file_, {}, fmt::format("{} findings more", leftOutCount_), {}});
    return std::move(list_);
}

} // namespace krohost::check
