// Preloaded into the tool: runs its command again and again, each time with one fault more below it, in a process of
// its own, and looks at what is left. The command writes the files named in FAULT_OUTPUTS (separated by colons), which
// are there before with other content unless FAULT_NEW is set. FAULT_KINDS are the faults, FAULT_STRIDE which of them.

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <sstream>
#include <string>
#include <vector>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}

namespace {

enum Kind { memory, opening, writing, closing, renaming, syncing, folder, reading, signalled, kindCount };
constexpr const char* kindNames[]{"memory", "open", "write", "close", "rename", "sync", "folder", "read", "signal"};

/// Shared by the processes.
struct State {
    Kind kind = kindCount;
    long left = 0; // chances until the fault
    bool hasBegun = false;
    bool hasHappened = false;
};
State* state = nullptr;

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
/// allocate for them as well.
bool isInOther(const void* code) {
    Dl_info library{};
    if (dladdr(code, &library) == 0)
        return false;
    const auto isPartOfName = [&](const char* name) { return std::strstr(library.dli_fname, name) != nullptr; };
    constexpr const char* others[]{"libQt", "libcgns", "libhdf5", "libc.so", "libz.so"};
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

namespace {

namespace fs = std::filesystem;
using Main = int (*)(int, char**, char**);

Main toolMain = nullptr;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::vector<std::string> words(const char* name) {
    std::vector<std::string> list;
    std::istringstream stream{environment(name)};
    for (std::string word; std::getline(stream, word, ':');)
        list.push_back(word);
    return list;
}

std::string content(const std::string& path) {
    std::ifstream stream{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

class Sweep {
public:
    Sweep(int argumentCount, char** arguments, char** variables)
        : argumentCount_{argumentCount}, arguments_{arguments}, variables_{variables} {}

    int run() {
        reset("");
        if (runOnce(kindCount, 0) != 0)
            return say("the sound run failed: " + content("errors"));
        for (const std::string& output : outputs_)
            sound_[output] = content(output);
        for (const std::string& name : words("FAULT_KINDS"))
            sweep(static_cast<Kind>(std::find(kindNames, kindNames + kindCount, name) - kindNames));
        std::printf("\n");
        return failureCount_ == 0 ? 0 : 1;
    }

private:
    static bool isTemporary(const fs::path& path) { return path.filename().string().starts_with(".krohost"); }
    static int say(const std::string& text) {
        std::printf("%s\n", text.c_str());
        return 1;
    }

    void sweep(Kind kind) {
        const long stride = std::atol(("0" + environment("FAULT_STRIDE")).c_str());
        long count = 0;
        for (long number = 1;; number += kind == memory ? std::max(stride, 1L) : 1) {
            reset(old_);
            const int status = runOnce(kind, number);
            if (!state->hasHappened)
                break;
            ++count;
            const std::string problem = look(status);
            if (!problem.empty() && ++failureCount_ < 20)
                say(std::string{kindNames[kind]} + ' ' + std::to_string(number) + ": " + problem + ": " +
                    content("errors").substr(0, 300));
        }
        std::printf("%s %ld ", kindNames[kind], count);
    }

    void reset(const std::string& oldContent) const {
        *state = {};
        for (const auto& entry : fs::directory_iterator{"."})
            if (isTemporary(entry.path()))
                fs::remove_all(entry.path());
        for (const std::string& output : outputs_) {
            fs::remove(output);
            if (oldContent.empty())
                continue;
            if (const fs::path parent = fs::path{output}.parent_path(); !parent.empty())
                fs::create_directories(parent);
            std::ofstream{output} << oldContent;
        }
        if (oldContent.empty())
            for (const std::string& output : outputs_)
                if (const fs::path parent = fs::path{output}.parent_path(); !parent.empty())
                    fs::remove(parent);
    }

    int runOnce(Kind kind, long number) const {
        std::fflush(stdout);
        *state = {kind, number};
        const pid_t child = fork();
        if (child == 0) {
            static_cast<void>(!std::freopen("errors", "w", stderr));
            static_cast<void>(!std::freopen("/dev/null", "w", stdout));
            std::exit(toolMain(argumentCount_, arguments_, variables_));
        }
        int status = 0;
        waitpid(child, &status, 0);
        return status;
    }

    /// What is wrong after a run with a fault; empty when nothing is.
    std::string look(int status) const {
        if (!WIFEXITED(status))
            return "ended by signal " + std::to_string(WTERMSIG(status));
        const int code = WEXITSTATUS(status);
        std::size_t newCount = 0, oldCount = 0;
        for (const std::string& output : outputs_) {
            const std::string found = content(output);
            const bool isHdf = output.ends_with("hdf") || output.ends_with("cgns"); // which tell the time
            newCount += found == sound_.at(output) || (isHdf && found.size() == sound_.at(output).size());
            oldCount += old_.empty() ? !fs::exists(output) : found == old_;
        }
        for (const auto& entry : fs::directory_iterator{"."})
            if (isTemporary(entry.path()))
                return "left " + entry.path().string();
        if (newCount != outputs_.size() && (code == 0 || oldCount != outputs_.size()))
            return "left half of it, with exit code " + std::to_string(code);
        const bool isStopped = state->kind == signalled && code == 128 + SIGTERM;
        if (code != 0 && code != 1 && code != 3 && code != 4 && !isStopped)
            return "exit code " + std::to_string(code);
        return code != 0 && content("errors").empty() ? "said nothing" : "";
    }

    int argumentCount_;
    char** arguments_;
    char** variables_;
    std::vector<std::string> outputs_ = words("FAULT_OUTPUTS");
    std::string old_ = environment("FAULT_NEW").empty() ? "old" : "";
    std::map<std::string, std::string> sound_;
    int failureCount_ = 0;
};

int sweepMain(int argumentCount, char** arguments, char** variables) {
    unsetenv("LD_PRELOAD");
    state = new (mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) State;
    dlopen(environment("KROHOST_ADDON_PATH").c_str(), RTLD_NOW | RTLD_LOCAL); // once for all
    return Sweep{argumentCount, arguments, variables}.run();
}

} // namespace

extern "C" int __libc_start_main(Main main, int argumentCount, char** arguments, void (*init)(), void (*fini)(),
                                 void (*linkerFini)(), void* stackEnd) {
    NEXT(__libc_start_main);
    toolMain = main;
    return real(sweepMain, argumentCount, arguments, init, fini, linkerFini, stackEnd);
}
