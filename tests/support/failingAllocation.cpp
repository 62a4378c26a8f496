// Stands between code and the C library's allocation: a program's own definitions come before those of the libraries.

#include "tests/support/failingAllocation.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

bool test::isInLibrary(const void* code, std::initializer_list<const char*> names) {
    dl_find_object object{};
    if (_dl_find_object(const_cast<void*>(code), &object) != 0)
        return false;
    const char* path = object.dlfo_link_map->l_name;
    return std::ranges::any_of(names, [&](const char* name) { return std::strstr(path, name) != nullptr; });
}

#define ALLOCATED(...) test::allocationFails(__builtin_return_address(0)) ? nullptr : (__VA_ARGS__)

#ifdef KRO_SANITIZED
// The sanitizers keep these for themselves.
const auto allocate = &std::malloc;
#else
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

void* malloc(std::size_t byteCount) {
    return ALLOCATED(__libc_malloc(byteCount));
}
void* calloc(std::size_t count, std::size_t byteCount) {
    return ALLOCATED(__libc_calloc(count, byteCount));
}
void* realloc(void* bytes, std::size_t byteCount) {
    return ALLOCATED(__libc_realloc(bytes, byteCount));
}
}
const auto allocate = &__libc_malloc;
#endif

void* operator new(std::size_t byteCount) {
    void* bytes = ALLOCATED(allocate(byteCount));
    return bytes ? bytes : throw std::bad_alloc();
}
void* operator new(std::size_t byteCount, const std::nothrow_t&) noexcept {
    return ALLOCATED(allocate(byteCount));
}
void operator delete(void* bytes) noexcept {
    std::free(bytes);
}
void operator delete(void* bytes, std::size_t) noexcept {
    std::free(bytes);
}
