#pragma once

namespace veltra::vtk {

/// Where the solution times of a load come from when its instructions give none. Recorded by name, not by number.
enum class SolutionTimeSource {
    FromFieldData = 0,
    FromFileName = 1,
    Auto = 2, ///< from field data if any file has a time there, else from the file names
    None = 3
};

} // namespace veltra::vtk
