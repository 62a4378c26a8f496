#pragma once

#include "output/LoadedFiles.h"

#include <vector>

namespace veltra::vtkfile {

/// The names and values of those field-data arrays that hold one value, as the shortest decimal text that reads back to
/// it. Arrays that have no name or that the file does not hold are left out. Throws bad_lexical_cast and
/// bad_numeric_cast for text that is no number.
std::vector<NameValuePair> readFieldData(const std::vector<DataArray>& arrays);

} // namespace veltra::vtkfile
