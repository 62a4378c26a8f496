#pragma once

#include "loader/addon/VtkFileLoader.h"

#include "interface/kro.h"

#include <memory>

namespace veltra::vtkfile {

/// What the add-on keeps for the whole process. The entry point fills it; the host's shutdown empties the loaders.
struct AddOn {
    KroAddOn* id = nullptr;                    ///< null until the entry point has run
    std::unique_ptr<VtkFileLoader> vtkLoader;  ///< empty when the host refused it
    std::unique_ptr<VtkFileLoader> trixLoader; ///< the same
};

/// The one object. [main thread]
AddOn& addOn();

} // namespace veltra::vtkfile
