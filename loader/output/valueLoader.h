#pragma once

#include "loader/xml/DataArray.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace veltra::vtkfile {

/// Has a variable of a zone loaded on demand from one component of an array. `arrays` holds the array's records, one
/// for each piece of the zone in their order, and is shared by the array's components. `zone` and `variable` are the
/// host's numbers. False when the host refuses or memory is exhausted. [main thread, host locked]
bool registerValueLoader(std::shared_ptr<const std::string> loaderName, std::int32_t zone, std::int32_t variable,
                         std::uint16_t component, std::shared_ptr<const std::vector<DataArray>> arrays) noexcept;

} // namespace veltra::vtkfile
