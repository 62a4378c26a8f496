#pragma once

#include "loader/mesh/Zone.h"
#include "loader/mesh/sections.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace veltra::vtkfile {

/// Has the node map of a zone, which the host knows by `zoneNumber`, loaded on demand. `sections` are those that the
/// zone was registered with. False when the host refuses or memory is exhausted. [main thread, host locked]
bool registerNodeMapLoader(std::shared_ptr<const std::string> loaderName, std::int32_t zoneNumber, const Zone& zone,
                           std::vector<Section> sections);

} // namespace veltra::vtkfile
