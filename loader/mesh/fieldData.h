#pragma once

#include "loader/xml/DataArray.h"

#include <string>
#include <utility>
#include <vector>

namespace veltra::vtkfile {

using NameValuePair = std::pair<std::string, std::string>;

/// The names and values of those field-data arrays that hold one value, as the shortest decimal text that reads back to
/// it. Arrays that have no name, that have the name of one before, or that cannot be read for whatever reason that is
/// theirs are left out. Throws FileAccessException, InterruptedException and std::bad_alloc.
std::vector<NameValuePair> readFieldData(const std::vector<DataArray>& arrays);

} // namespace veltra::vtkfile
