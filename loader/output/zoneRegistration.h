#pragma once

#include "loader/mesh/Zone.h"
#include "loader/mesh/variables.h"

#include "loader/sdk/TaskProgress.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace veltra::vtkfile {

/// What the zones of a load have in common.
struct ZoneRegistration {
    std::shared_ptr<const std::string> loaderName;
    std::int32_t strand;              ///< -1 leaves it to the host
    const VariableMap& variables;     ///< of the dataset
    const std::vector<double>& times; ///< by the file through which a zone was reached; its own time comes first
};

/// Adds the zones to the current dataset, with their values and node maps to be loaded on demand. Zones without points
/// are passed over. False when the host refuses something; the zones before stay.
///
/// Throws IOException when a zone's mesh is malformed or cannot be read, and InterruptedException.
/// [main thread, host locked]
bool registerZones(const std::vector<Zone>& zones, const ZoneRegistration& registration, ui::TaskProgress& progress);

} // namespace veltra::vtkfile
