// Stands between the libraries and the system: the program's own definitions come before those of the libraries.

#include "fuzz/cost.h"

#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>

namespace {

std::atomic<std::int64_t> heldNow, mostHeld, readNow;
std::int64_t heldAtBegin = 0;

void took(std::size_t byteCount) {
    const std::int64_t held = heldNow += static_cast<std::int64_t>(byteCount);
    std::int64_t peak = mostHeld;
    while (held > peak && !mostHeld.compare_exchange_weak(peak, held)) {
    }
}

void gave(std::size_t byteCount) {
    heldNow -= static_cast<std::int64_t>(byteCount);
}

} // namespace

namespace fuzz {

void Cost::begin() {
    heldAtBegin = heldNow;
    mostHeld = heldAtBegin;
    readNow = 0;
}

Cost Cost::sinceBegin() {
    return {static_cast<std::uint64_t>(mostHeld - heldAtBegin), static_cast<std::uint64_t>(readNow)};
}

} // namespace fuzz

ssize_t pread(int descriptor, void* bytes, std::size_t byteCount, off_t offset) {
    static const auto next = reinterpret_cast<decltype(&pread)>(dlsym(RTLD_NEXT, "pread"));
    const ssize_t count = next(descriptor, bytes, byteCount, offset);
    readNow += std::max<ssize_t>(count, 0);
    return count;
}

ssize_t read(int descriptor, void* bytes, std::size_t byteCount) {
    static const auto next = reinterpret_cast<decltype(&read)>(dlsym(RTLD_NEXT, "read"));
    const ssize_t count = next(descriptor, bytes, byteCount);
    readNow += std::max<ssize_t>(count, 0);
    return count;
}

extern "C" {
#ifdef KRO_SANITIZED

int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                              void (*onFree)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void*);

[[maybe_unused]] const int areInstalled = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t byteCount) { took(byteCount); },
    [](const volatile void* bytes) { gave(bytes != nullptr ? __sanitizer_get_allocated_size(bytes) : 0); });

#else

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t byteCount) {
    void* bytes = __libc_malloc(byteCount);
    took(malloc_usable_size(bytes));
    return bytes;
}
void* calloc(std::size_t count, std::size_t byteCount) {
    void* bytes = __libc_calloc(count, byteCount);
    took(malloc_usable_size(bytes));
    return bytes;
}
void* realloc(void* before, std::size_t byteCount) {
    const std::size_t byteCountBefore = malloc_usable_size(before);
    void* bytes = __libc_realloc(before, byteCount);
    if (bytes != nullptr || byteCount == 0)
        gave(byteCountBefore);
    took(malloc_usable_size(bytes));
    return bytes;
}
void free(void* bytes) {
    gave(malloc_usable_size(bytes));
    __libc_free(bytes);
}

#endif
}
