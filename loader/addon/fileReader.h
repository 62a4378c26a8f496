#pragma once

#include "loader/output/LoadedFiles.h"

#include "loader/sdk/TaskProgress.h"

#include <boost/filesystem/path.hpp>

#include <memory>

namespace veltra::vtkfile {

/// Reads a file that the user named, and the files that it refers to when it is a collection, and adds what they hold
/// to `loaded`: the file, and a zone for each file that has pieces of its own. Reads no arrays but field data.
///
/// Throws IOException, the exceptions of number conversion, and InterruptedException; `loaded` is then incomplete.
/// [main thread]
void readFile(const std::shared_ptr<const boost::filesystem::path>& path, ui::TaskProgress& progress,
              LoadedFiles& loaded);

} // namespace veltra::vtkfile
