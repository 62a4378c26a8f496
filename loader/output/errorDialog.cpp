#include "loader/output/errorDialog.h"

#include "interface/kro.h"
#include "loader/sdk/loaderUtilities.h"
#include "loader/sdk/utf8.h"

#include <exception>

namespace veltra::vtkfile {

void showError(const std::string& loaderName, const char* message, const char* reason) noexcept {
    try {
        const std::string text = kroutildataio_utils::composeErrorMessage({loaderName, std::string(message) + reason});
        KroUtilDialogErrMsg(validUtf8(text).c_str());
    } catch (const std::exception&) {
        KroUtilDialogErrMsg(message); // no memory to compose in, but the user still has to know
    }
}

} // namespace veltra::vtkfile
