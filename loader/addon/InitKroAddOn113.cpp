#include "loader/addon/AddOn.h"
#include "loader/addon/registration.h"

#include "interface/kro.h"

using namespace veltra::vtkfile;

/// The one symbol of the shared library: registers the add-on and its loaders with the host. [main thread]
extern "C" __attribute__((visibility("default"))) void InitKroAddOn113() {
    KroUtilLockOn();
    addOn().id = KroUtilAddOnRegister(Kro_AddOnApiLevel, "VTU/VTM/TRIX Data Loader", KRO_ADDON_VERSION, "Veltra");
    addOn().vtkLoader = registerLoader("VTK Data Loader", "*.pvtu *.vtm *.vtu");
    addOn().trixLoader = registerLoader("TRIX Loader", "*.trix");
    registerShutdown();
    KroUtilLockOff();
}
