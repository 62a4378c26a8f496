#include "krohost/cli/report/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace krohost::cli {

namespace {

std::pair<std::int32_t, std::int32_t> key(Target target) {
    return {target.zone, target.variable};
}

} // namespace

const StorageSummary* Report::find(Target target, std::size_t partIndex) const {
    const auto found =
        std::lower_bound(demands.begin(), demands.end(), target,
                         [](const DemandResult& result, Target wanted) { return key(result.target) < key(wanted); });
    const bool exists = found != demands.end() && found->target == target && partIndex < found->parts.size();
    return exists ? &found->parts[partIndex] : nullptr;
}

std::string hexadecimal(std::uint32_t checksum) {
    return fmt::format("{:08x}", checksum);
}

} // namespace krohost::cli
