#pragma once

#include "loader/output/SolutionTimeSource.h"

#include "interface/kro.h"
#include "loader/sdk/StringList.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace veltra::vtk {

/// What a load is to do: the parsed form of the instruction list that the host records in layouts and macros.
struct VtkFileLoaderInstructions {
    VtkFileLoaderInstructions() = default;

    /// Parses a recorded list, of which it understands everything or nothing: throws InvalidInstructionsException.
    VtkFileLoaderInstructions(const std::shared_ptr<const std::string>& loaderName, const KroStringList* list);

    /// Fills `list`, emptied first, with the form that the constructor parses. Times lose what is finer than a
    /// microsecond. Throws std::bad_alloc.
    void write(toolbox::StringList& list) const;

    std::vector<std::shared_ptr<const boost::filesystem::path>> files; ///< in load order
    std::vector<double> solutionTimes;                                 ///< one per file, or none
    SolutionTimeSource solutionTimeSource = SolutionTimeSource::Auto;
    std::optional<std::int32_t> strand; ///< when present, the load adds to the current dataset
};

} // namespace veltra::vtk
