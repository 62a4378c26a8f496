#pragma once

#include "mesh/Zone.h"

namespace veltra::vtkfile {

/// Whether cells that are all vertices are the zone's points one by one, so that values at cells are values at points.
/// Reads their connectivity. Throws IOException when that cannot be read, bad_lexical_cast, bad_numeric_cast and
/// InterruptedException. [any thread]
bool areVerticesThePoints(const FilePtr& file, const Zone& zone);

} // namespace veltra::vtkfile
