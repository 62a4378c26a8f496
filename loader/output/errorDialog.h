#pragma once

#include <string>

namespace veltra::vtkfile {

/// Shows the user one error of a loader: the loader's name, the message and, where there is one, the reason, which the
/// message then introduces. [any thread]
void showError(const std::string& loaderName, const char* message, const char* reason = "") noexcept;

} // namespace veltra::vtkfile
