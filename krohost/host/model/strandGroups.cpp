#include "krohost/host/model/strandGroups.h"

#include <algorithm>

namespace krohost {

std::vector<std::int64_t> strandGroups(std::span<const double> solutionTimes, std::int64_t firstStrand) {
    std::vector<std::int64_t> strands;
    bool isSeries = false;
    std::int64_t place = 0;
    for (std::size_t index = 0; index < solutionTimes.size(); ++index) {
        const bool beginsNextStep = index > 0 && solutionTimes[index] != solutionTimes[index - 1];
        isSeries = isSeries || beginsNextStep;
        place = beginsNextStep ? 0 : place;
        strands.push_back(firstStrand + place++);
    }
    return isSeries ? strands : std::vector<std::int64_t>{};
}

std::int64_t highestStrand(const Dataset& dataset) {
    std::int64_t highest = 0;
    for (const Zone& zone : dataset.zones)
        highest = std::max(highest, zone.strandGroup.value_or(zone.strand));
    return highest;
}

void assignStrandGroups(Dataset& dataset, std::size_t firstZoneIndex) {
    std::vector<Zone*> zones;
    std::vector<double> times;
    for (std::size_t index = firstZoneIndex; index < dataset.zones.size(); ++index) {
        if (Zone& zone = dataset.zones[index]; zone.strand == -1) {
            zones.push_back(&zone);
            times.push_back(zone.solutionTime);
        }
    }
    const std::vector<std::int64_t> groups = strandGroups(times, highestStrand(dataset) + 1);
    for (std::size_t index = 0; index < groups.size(); ++index)
        zones[index]->strandGroup = groups[index];
}

} // namespace krohost
