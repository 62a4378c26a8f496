#pragma once

#include "krohost/convert/Loss.h"
#include "krohost/convert/conversion.h"
#include "krohost/host/model/Dataset.h"

#include <filesystem>
#include <vector>

namespace krohost::convert {

/// What of these files is not, or is otherwise, in what a conversion of the dataset loaded from them writes, as far as
/// it is known beforehand: values, arrays, vectors, field data, names of blocks and zones, coordinates. Reads the
/// files' tags, and the values of types that the host does not have. Throws WriteError and Interrupted.
Losses conversionLosses(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs, FileFormat format);

} // namespace krohost::convert
