#pragma once

#include "loader/output/LoadedFiles.h"
#include "loader/output/SolutionTimeSource.h"

#include <string>
#include <vector>

namespace veltra::vtkfile {

/// Whether field data of this name are a solution time: "time" or "timevalue" in any letter case.
bool isTimeName(const std::string& name);

/// One solution time for each file that the user named; 0 for a file without one where others have one, and for all
/// when `source` yields none. [main thread, host locked]
std::vector<double> solutionTimes(const std::vector<LoadedFile>& files, vtk::SolutionTimeSource source);

} // namespace veltra::vtkfile
