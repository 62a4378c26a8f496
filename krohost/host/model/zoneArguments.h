#pragma once

#include "krohost/host/model/ArgumentList.h"
#include "krohost/host/model/Dataset.h"

#include <cstddef>

namespace krohost {

/// The zone that the arguments of KroUtilDataSetAddZoneX describe, without a number and without callbacks, for a
/// dataset with `variableCount` variables. Throws ContractViolation for arguments that break the contract. [any thread]
Zone readZone(const KroArgList* list, std::size_t variableCount);

} // namespace krohost
