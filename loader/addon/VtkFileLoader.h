#pragma once

#include "interface/kro.h"

#include <memory>
#include <string>

namespace veltra::vtkfile {

/// Loads VTK XML files into the host's dataset. One object serves one registered loader; the host points at it.
class VtkFileLoader {
public:
    explicit VtkFileLoader(std::shared_ptr<const std::string> name);
    virtual ~VtkFileLoader();
    VtkFileLoader(const VtkFileLoader&) = delete;
    VtkFileLoader& operator=(const VtkFileLoader&) = delete;

    /// Both return whether the data were loaded, and show the user one error when they were not, unless the user
    /// stopped the load or the host has shown its own. They throw only for what precedes the load itself: malformed
    /// instructions and exhausted memory. [main thread]
    bool replay(const KroStringList* instructions);
    bool loadSelectedFiles(const KroStringList* fileNames);

    const std::shared_ptr<const std::string>& name() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace veltra::vtkfile
