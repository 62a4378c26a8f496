// Stands between the add-on and the system.

#include "tests/load/faults.h"

#include "krohost/host/line/callAddOn.h"
#include "tests/support/failingAllocation.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace test {

namespace {

Fault armedFault{};
std::int64_t chancesLeft = 0; // until the armed fault happens; 0: not armed

bool happens(Fault fault) {
    using krohost::CodeScope;
    return chancesLeft > 0 && fault == armedFault && CodeScope::current() == CodeScope::Owner::addOn &&
           --chancesLeft == 0;
}

} // namespace

bool allocationFails(const void* caller) {
    // Qt ends the process when there is no memory for a string of its own.
    return chancesLeft > 0 && !isInLibrary(caller, {"libQt"}) && happens(Fault::allocation);
}

void arm(Fault fault, std::int64_t number) {
    armedFault = fault;
    chancesLeft = number;
}

bool disarm() {
    const bool hasHappened = chancesLeft == 0;
    chancesLeft = 0;
    return hasHappened;
}

} // namespace test

using test::Fault;
using test::happens;

ssize_t pread(int descriptor, void* bytes, std::size_t byteCount, off_t offset) {
    static const auto next = reinterpret_cast<decltype(&pread)>(dlsym(RTLD_NEXT, "pread"));
    if (happens(Fault::shortRead))
        byteCount = std::max<std::size_t>(byteCount / 2, 1);
    if (happens(Fault::emptyRead))
        byteCount = 0;
    for (const auto& [fault, code] : {std::pair{Fault::failedRead, EIO}, {Fault::interruptedRead, EINTR}})
        if (happens(fault)) {
            errno = code;
            return -1;
        }
    return next(descriptor, bytes, byteCount, offset);
}
