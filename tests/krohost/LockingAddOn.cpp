// An add-on whose loader leaves the host locked.
#include "tests/krohost/callHost.h"

extern "C" __attribute__((visibility("default"))) void InitKroAddOn113() {
    registerLoader([](auto*, void*, void*) { return KroUtilLockOn(), KroBool{1}; }, nullptr);
}
