// Stands between the tool and the system: a preloaded library's definitions come before those of the others.

#include "tests/krohost/injectedFaults.h"

#include "tests/support/failingAllocation.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

State* state = nullptr;

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

template <class Real, class... Offset>
ssize_t writeSome(Real real, int descriptor, const void* bytes, std::size_t byteCount, Offset... offset) {
    if (!isDiskFull() && !fails(writing))
        return real(descriptor, bytes, byteCount, offset...);
    static_cast<void>(!real(descriptor, bytes, byteCount / 2, offset...));
    return failWith(ENOSPC);
}

} // namespace

/// Qt, CGNS and HDF5 end the process when they have no memory, or do not look whether they have. The C library and zlib
/// allocate for them as well, and the loader of libraries ends it where it has none for a thread's own data.
bool test::allocationFails(const void* caller) {
    return state && state->hasBegun && !state->hasHappened && state->kind == memory &&
           !isInLibrary(caller, {"libQt", "libcgns", "libhdf5", "libc.so", "libz.so", "ld-linux"}) && fails(memory);
}

/// A function of the system that fails instead of doing anything.
#define FAILING(result, failure, name, kind, errorNumber, parameters, arguments)                                       \
    result name parameters {                                                                                           \
        NEXT(name);                                                                                                    \
        if (!fails(kind))                                                                                              \
            return real arguments;                                                                                     \
        errno = errorNumber;                                                                                           \
        return failure;                                                                                                \
    }

extern "C" {

FAILING(std::FILE*, nullptr, fopen, opening, EMFILE, (const char* path, const char* mode), (path, mode))
FAILING(ssize_t, -1, pread, reading, EIO, (int descriptor, void* bytes, std::size_t byteCount, off_t offset),
        (descriptor, bytes, byteCount, offset))
FAILING(int, -1, rename, renaming, EIO, (const char* from, const char* to), (from, to))
FAILING(int, -1, renameat2, renaming, EIO,
        (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
        (fromFolder, from, toFolder, to, flags))
FAILING(int, -1, link, renaming, EPERM, (const char* from, const char* to), (from, to))
FAILING(int, -1, fsync, syncing, EIO, (int descriptor), (descriptor))
FAILING(int, -1, mkdir, folder, ENOSPC, (const char* path, mode_t mode), (path, mode))
FAILING(char*, nullptr, mkdtemp, folder, ENOSPC, (char* pattern), (pattern))

/// The tool sets its signal handlers when it has read its command line, and only then is a fault of interest.
int sigaction(int number, const struct sigaction* action, struct sigaction* old) {
    NEXT(sigaction);
    if (state && number == SIGINT)
        state->hasBegun = true;
    return real(number, action, old);
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
    return writeSome(real, descriptor, bytes, byteCount);
}

ssize_t pwrite(int descriptor, const void* bytes, std::size_t byteCount, off_t offset) {
    NEXT(pwrite);
    if (fails(signalled))
        raise(SIGTERM);
    return writeSome(real, descriptor, bytes, byteCount, offset);
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
}
