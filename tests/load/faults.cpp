// Stands between the add-on and the system: the program's own definitions come before those of the libraries.

#include "tests/load/faults.h"

#include "krohost/callAddOn.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
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

/// Whether the code at the address is Qt's, which ends the process when there is no memory for a string of its own.
bool isInQt(const void* code) {
    static const auto [begin, end] = [] {
        std::pair<std::uintptr_t, std::uintptr_t> range;
        dl_iterate_phdr(
            [](dl_phdr_info* library, std::size_t, void* found) {
                if (std::strstr(library->dlpi_name, "libQt") != nullptr)
                    for (int index = 0; index < library->dlpi_phnum; ++index)
                        if (const auto& segment = library->dlpi_phdr[index]; (segment.p_flags & PF_X) != 0) {
                            const std::uintptr_t first = library->dlpi_addr + segment.p_vaddr;
                            *static_cast<decltype(&range)>(found) = {first, first + segment.p_memsz};
                        }
                return 0;
            },
            &range);
        return range;
    }();
    const auto address = reinterpret_cast<std::uintptr_t>(code);
    return address >= begin && address < end;
}

bool allocationFails(const void* caller) {
    return chancesLeft > 0 && !isInQt(caller) && happens(Fault::allocation);
}

} // namespace

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

#ifdef KRO_SANITIZED
// The sanitizers keep these for themselves.
const auto allocate = &std::malloc;
#else
// Beneath the C libraries.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);

void* malloc(std::size_t byteCount) {
    return test::allocationFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(byteCount);
}
void* calloc(std::size_t count, std::size_t byteCount) {
    return test::allocationFails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, byteCount);
}
}
const auto allocate = &__libc_malloc;
#endif

void* operator new(std::size_t byteCount) {
    void* bytes = test::allocationFails(__builtin_return_address(0)) ? nullptr : allocate(byteCount);
    return bytes ? bytes : throw std::bad_alloc();
}
void* operator new(std::size_t byteCount, const std::nothrow_t&) noexcept {
    return test::allocationFails(__builtin_return_address(0)) ? nullptr : allocate(byteCount);
}
void operator delete(void* bytes) noexcept {
    std::free(bytes);
}
void operator delete(void* bytes, std::size_t) noexcept {
    std::free(bytes);
}
