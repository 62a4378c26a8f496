#include "loader/addon/registration.h"

#include "loader/addon/AddOn.h"
#include "loader/addon/messages.h"

#include "loader/output/errorDialog.h"

#include "loader/sdk/ArgList.h"

#include <exception>
#include <new>

namespace veltra::vtkfile {

namespace {

/// Runs a callback's load; what precedes it fails as one dialog.
template <class Load>
KroBool guardedCallback(void* clientData, Load load) noexcept {
    auto& loader = *static_cast<VtkFileLoader*>(clientData);
    const std::shared_ptr<const std::string> name = loader.name();
    try {
        return load(loader) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        showError(*name, callbackOutOfMemory);
    } catch (const std::exception& error) {
        showError(*name, callbackFailed, error.what());
    }
    return 0;
}

KroBool loaderCallback(const KroStringList* instructions, void* clientData) {
    return guardedCallback(clientData, [&](VtkFileLoader& loader) { return loader.replay(instructions); });
}

KroBool loaderSelectedCallback(const KroStringList* fileNames, void*, void* clientData) {
    return guardedCallback(clientData, [&](VtkFileLoader& loader) { return loader.loadSelectedFiles(fileNames); });
}

void stateChangeCallback(std::int32_t stateChange) {
    if (stateChange != Kro_StateChangeShutdown)
        return;
    addOn().vtkLoader.reset();
    addOn().trixLoader.reset();
}

bool addLoader(VtkFileLoader& loader, const char* extensions) {
    toolbox::ArgList arguments;
    return arguments.appendString("LoaderName", *loader.name()) &&
           arguments.appendString("FileNameExtensions", extensions) &&
           arguments.appendInt("LoaderCallbackVersion", Kro_LoaderCallbackVersion) &&
           arguments.appendFunction("LoaderCallback", loaderCallback) &&
           arguments.appendFunction("LoaderSelectedCallback", loaderSelectedCallback) &&
           arguments.appendPointer("ClientData", &loader) && arguments.appendInt("AllowMultiFileSelection", 1) &&
           arguments.appendInt("LoaderAdvancedOptions", 0) && KroUtilImportAddLoaderX(arguments.get()) == 1;
}

} // namespace

std::unique_ptr<VtkFileLoader> registerLoader(const char* name, const char* extensions) {
    try {
        auto loader = std::make_unique<VtkFileLoader>(std::make_shared<const std::string>(name));
        if (addLoader(*loader, extensions))
            return loader;
        showError(name, registrationRefused);
    } catch (const std::exception&) {
        showError(name, registrationOutOfMemory);
    }
    return nullptr;
}

void registerShutdown() {
    try {
        toolbox::ArgList arguments;
        // A host that refuses this frees the loaders with the process.
        static_cast<void>(arguments.appendFunction("CallbackFunction", stateChangeCallback) &&
                          arguments.appendInt("StateChangeMode", Kro_StateChangeModeAllChanges) &&
                          arguments.appendInt("StateChangeCallbackAPI", Kro_StateChangeCallbackApi) &&
                          KroUtilStateChangeAddCallbackX(arguments.get()));
    } catch (const std::exception&) {
        showError("VTK Data Loader", registrationOutOfMemory);
    }
}

} // namespace veltra::vtkfile
