#pragma once

#include "output/LoadedFiles.h"

#include <vector>

namespace veltra::vtkfile {

/// The names and values of those field-data arrays that hold one value, as the shortest decimal text that reads back to
/// it. Throws what reading an array throws.
std::vector<NameValuePair> readFieldData(const std::vector<DataArray>& arrays);

} // namespace veltra::vtkfile
