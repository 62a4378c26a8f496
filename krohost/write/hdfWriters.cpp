#include "krohost/write/hdfWriters.h"

#include "krohost/write/WriteError.h"

#include <fmt/format.h>

#include <dlfcn.h>

namespace krohost::write {

const HdfWriters& hdfWriters() {
    void* module = dlopen("libkrohost-hdf.so", RTLD_NOW | RTLD_LOCAL);
    void* writers = module ? dlsym(module, "krohostHdfWriters") : nullptr;
    if (!writers)
        throw WriteError(fmt::format("The part of krohost that writes HDF5 cannot be loaded: {}", dlerror()));
    return *static_cast<const HdfWriters*>(writers);
}

} // namespace krohost::write
