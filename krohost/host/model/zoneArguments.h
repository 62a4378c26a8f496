#pragma once

#include "krohost/ArgumentList.h"
#include "krohost/Dataset.h"

#include <cstddef>

namespace krohost {

/// The zone that the arguments of KroUtilDataSetAddZoneX describe, without a number and without callbacks, for a
/// dataset with `variableCount` variables. Throws ContractViolation for arguments that break the contract. [any thread]
Zone readZone(const KroArgList* list, std::size_t variableCount);

} // namespace krohost
