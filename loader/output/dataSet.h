#pragma once

#include "loader/output/LoadedFiles.h"
#include "loader/output/SolutionTimeSource.h"

#include "loader/sdk/TaskProgress.h"
#include "loader/sdk/loaderUtilities.h"

#include <cstdint>
#include <memory>
#include <string>

namespace veltra::vtkfile {

/// How a load wants its dataset.
struct DataSetRequest {
    std::shared_ptr<const std::string> loaderName;
    std::string title;
    bool appends = false;          ///< to the current dataset, instead of making a new one
    std::int32_t strand = -1;      ///< -1 leaves it to the host
    bool hasExplicitTimes = false; ///< the zones carry their times
    vtk::SolutionTimeSource timeSource = vtk::SolutionTimeSource::Auto;
};

/// Makes the host's dataset from the zones of a load, or adds them to it, and refills `variables` with what the dataset
/// then holds. False when the host refuses something, which it shows itself, or when no zone came of it, which is shown
/// here.
///
/// Throws IOException, before the host has been asked for anything, when the records of a zone contradict each other or
/// two of its arrays have one name; then what registerZones() throws, and the zones registered before stay.
/// [main thread, host locked]
bool buildDataSet(const DataSetRequest& request, const LoadedFiles& loaded, kroutildataio_utils::VariableMap& variables,
                  ui::TaskProgress& progress);

} // namespace veltra::vtkfile
