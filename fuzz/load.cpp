// A file, loaded by the add-on with everything that can be demanded of it.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"

std::string fuzz::outcome(Bytes input) {
    return loadInHost(scratchFile("mesh.vtu", asText(input)));
}
