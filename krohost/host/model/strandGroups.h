#pragma once

#include "krohost/host/model/Dataset.h"

#include <cstdint>
#include <span>
#include <vector>

namespace krohost {

/// Strands for zones whose loader left them to the host, from their solution times in the order of the load: successive
/// zones of one time form a step, and the zones at one place of all steps are one thing at successive times. Place k
/// (from 0) is strand `firstStrand` + k. Empty when the zones form no more than one step. [any thread]
std::vector<std::int64_t> strandGroups(std::span<const double> solutionTimes, std::int64_t firstStrand);

/// The highest strand that a zone has, from its loader or from the host; 0 when all are static.
std::int64_t highestStrand(const Dataset& dataset);

/// Gives the zones from `firstZoneIndex` on that have strand -1 the groups that follow from their times.
void assignStrandGroups(Dataset& dataset, std::size_t firstZoneIndex);

} // namespace krohost
