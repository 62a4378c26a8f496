#pragma once

#include "loader/addon/VtkFileLoader.h"

#include <memory>
#include <string>

namespace veltra::vtkfile {

/// Registers a data loader for files that match `extensions`. Empty when the host refuses it or memory is exhausted,
/// which the user is shown. [main thread, host locked]
std::unique_ptr<VtkFileLoader> registerLoader(const char* name, const char* extensions);

/// Has the loaders destroyed when the host ends. [main thread, host locked]
void registerShutdown();

} // namespace veltra::vtkfile
