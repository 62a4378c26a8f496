#include "krohost/convert/hdfWriters.h"

#include "krohost/convert/WriteError.h"

#include <fmt/format.h>

#include <dlfcn.h>

namespace krohost::convert {

namespace {

/// Beside the host's library; a name without a folder would be looked for elsewhere.
std::string moduleFile() {
    Dl_info library{};
    dladdr(reinterpret_cast<const void*>(&Host::isInterrupted), &library);
    const std::string name = std::filesystem::absolute(library.dli_fname); // which is text before its end is replaced:
    return name.substr(0, name.rfind('/') + 1) + "libkrohost-hdf.so";      // a path, short of memory, would not survive
}

} // namespace

const HdfWriters& hdfWriters() {
    void* module = dlopen(moduleFile().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* writers = module ? dlsym(module, "krohostHdfWriters") : nullptr;
    if (!writers)
        throw WriteError(fmt::format("The part of krohost that writes HDF5 cannot be loaded: {}", dlerror()));
    return *static_cast<const HdfWriters*>(writers);
}

} // namespace krohost::convert
