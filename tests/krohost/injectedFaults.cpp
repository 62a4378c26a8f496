// Stands between the tool and the system: a preloaded library's definitions come before those of the others.

#include "tests/krohost/injectedFaults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

State* state = nullptr;

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}

namespace {

/// A full disk stays full.
bool isDiskFull() {
    return state && state->hasHappened && state->kind == writing;
}

bool fails(Kind kind) {
    if (!state || !state->hasBegun || state->hasHappened || state->kind != kind || --state->left > 0)
        return false;
    return state->hasHappened = true;
}

/// Qt, CGNS and HDF5 end the process when they have no memory, or do not look whether they have. The C library and zlib
/// allocate for them as well, and the loader of libraries ends it where it has none for a thread's own data.
bool isInOther(const void* code) {
    Dl_info library{};
    if (dladdr(code, &library) == 0)
        return false;
    const auto isPartOfName = [&](const char* name) { return std::strstr(library.dli_fname, name) != nullptr; };
    constexpr const char* others[]{"libQt", "libcgns", "libhdf5", "libc.so", "libz.so", "ld-linux"};
    return std::any_of(std::begin(others), std::end(others), isPartOfName);
}

bool memoryFails(const void* caller) {
    return state && state->hasBegun && !state->hasHappened && state->kind == memory && !isInOther(caller) &&
           fails(memory);
}

template <class Function>
Function next(Function, const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
#define NEXT(name) static const auto real = next(&name, #name)

int failWith(int errorNumber) {
    errno = errorNumber;
    return -1;
}

bool isStandard(std::FILE* file) {
    return file == stdout || file == stderr;
}

} // namespace

extern "C" {

void* malloc(std::size_t byteCount) {
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(byteCount);
}
void* calloc(std::size_t count, std::size_t byteCount) {
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, byteCount);
}
void* realloc(void* bytes, std::size_t byteCount) {
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_realloc(bytes, byteCount);
}

/// The tool sets its signal handlers when it has read its command line, and only then is a fault of interest.
int sigaction(int number, const struct sigaction* action, struct sigaction* old) {
    NEXT(sigaction);
    if (state && number == SIGINT)
        state->hasBegun = true;
    return real(number, action, old);
}

std::FILE* fopen(const char* path, const char* mode) {
    NEXT(fopen);
    if (!fails(opening))
        return real(path, mode);
    errno = EMFILE;
    return nullptr;
}

int open(const char* path, int flags, ...) {
    NEXT(open);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return fails(opening) ? failWith(EMFILE) : real(path, flags, mode);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* file) {
    NEXT(fwrite);
    if (!isStandard(file) && fails(signalled))
        raise(SIGTERM);
    if (isStandard(file) || (!isDiskFull() && !fails(writing)))
        return real(bytes, size, count, file);
    real(bytes, size, count / 2, file);
    errno = ENOSPC;
    return count / 2;
}

ssize_t write(int descriptor, const void* bytes, std::size_t byteCount) {
    NEXT(write);
    if (isDiskFull() || fails(writing)) {
        static_cast<void>(!real(descriptor, bytes, byteCount / 2));
        return failWith(ENOSPC);
    }
    return real(descriptor, bytes, byteCount);
}

ssize_t pwrite(int descriptor, const void* bytes, std::size_t byteCount, off_t offset) {
    NEXT(pwrite);
    if (fails(signalled))
        raise(SIGTERM);
    if (isDiskFull() || fails(writing)) {
        static_cast<void>(!real(descriptor, bytes, byteCount / 2, offset));
        return failWith(ENOSPC);
    }
    return real(descriptor, bytes, byteCount, offset);
}

ssize_t pread(int descriptor, void* bytes, std::size_t byteCount, off_t offset) {
    NEXT(pread);
    return fails(reading) ? failWith(EIO) : real(descriptor, bytes, byteCount, offset);
}

int fclose(std::FILE* file) {
    NEXT(fclose);
    const bool isFailing = fails(closing);
    const int result = real(file);
    return isFailing ? failWith(ENOSPC) : result;
}

int close(int descriptor) {
    NEXT(close);
    const bool isFailing = fails(closing);
    const int result = real(descriptor);
    return isFailing ? failWith(EIO) : result;
}

int rename(const char* from, const char* to) {
    NEXT(rename);
    return fails(renaming) ? failWith(EIO) : real(from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    NEXT(renameat2);
    return fails(renaming) ? failWith(EIO) : real(fromFolder, from, toFolder, to, flags);
}
int link(const char* from, const char* to) {
    NEXT(link);
    return fails(renaming) ? failWith(EPERM) : real(from, to);
}
int fsync(int descriptor) {
    NEXT(fsync);
    return fails(syncing) ? failWith(EIO) : real(descriptor);
}
int mkdir(const char* path, mode_t mode) {
    NEXT(mkdir);
    return fails(folder) ? failWith(ENOSPC) : real(path, mode);
}
char* mkdtemp(char* pattern) {
    NEXT(mkdtemp);
    if (!fails(folder))
        return real(pattern);
    errno = ENOSPC;
    return nullptr;
}
}

void* operator new(std::size_t byteCount) {
    void* bytes = memoryFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(byteCount);
    return bytes ? bytes : throw std::bad_alloc();
}
void* operator new(std::size_t byteCount, const std::nothrow_t&) noexcept {
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(byteCount);
}
void operator delete(void* bytes) noexcept {
    std::free(bytes);
}
void operator delete(void* bytes, std::size_t) noexcept {
    std::free(bytes);
}
