#pragma once

#include "loader/mesh/Zone.h"
#include "loader/mesh/fieldData.h"

#include <boost/filesystem/path.hpp>

#include <memory>
#include <vector>

namespace veltra::vtkfile {

/// A file that the user named.
struct LoadedFile {
    std::shared_ptr<const boost::filesystem::path> path;
    std::vector<NameValuePair> fieldData; ///< its own, then that of its members in their order
};

/// What the files of a load hold.
struct LoadedFiles {
    std::vector<LoadedFile> files;
    std::vector<Zone> zones; ///< in the order of the files
};

} // namespace veltra::vtkfile
