#include "krohost/convert/cgns.h"
#include "krohost/convert/hdfWriters.h"
#include "krohost/convert/vtkhdf.h"

#include <hdf5.h>

namespace {

// At the end of the process the library would close once more what it could not write to a full disk, and crash.
[[maybe_unused]] const herr_t leavesFilesAlone = H5dont_atexit();

// Nothing that is written needs code from HDF5's folders of plugins.
[[maybe_unused]] const herr_t takesNoPlugins = H5PLset_loading_state(0);

} // namespace

extern "C" __attribute__((visibility("default")))
const krohost::convert::HdfWriters krohostHdfWriters{krohost::convert::writeVtkhdf, krohost::convert::writeCgns};
