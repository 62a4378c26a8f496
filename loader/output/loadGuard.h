#pragma once

#include "loader/output/errorDialog.h"
#include "loader/output/messages.h"

#include "interface/kro.h"
#include "loader/sdk/exceptions.h"

#include <new>
#include <string>

namespace veltra::vtkfile {

/// What differs between the load callbacks when they fail.
struct LoadFailureHandling {
    const char* badAsciiNumberText;
    bool interruptIsSilent; ///< otherwise an interrupt counts as an unknown error
};

/// Runs the body of a load callback. Whatever it throws becomes one dialog, or none for a silent interrupt, and the
/// result 0.
template <class Body>
KroBool guardedLoad(const std::string& loaderName, const LoadFailureHandling& handling, Body body) noexcept {
    try {
        body();
        return 1;
    } catch (const bad_lexical_cast& error) {
        showError(loaderName, handling.badAsciiNumberText, error.what());
    } catch (const bad_numeric_cast& error) {
        showError(loaderName, asciiNumberOutOfRange, error.what());
    } catch (const std::bad_alloc& error) {
        showError(loaderName, insufficientStreamMemory, error.what());
    } catch (const IOException& error) {
        showError(loaderName, inputFileError, error.what());
    } catch (const InterruptedException&) {
        if (!handling.interruptIsSilent)
            showError(loaderName, unknownReadError);
    } catch (...) {
        showError(loaderName, unknownReadError);
    }
    return 0;
}

} // namespace veltra::vtkfile
