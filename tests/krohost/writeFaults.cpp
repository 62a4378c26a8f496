// Preloaded into the tool: runs its command again and again, each time with one fault more below it, in a process of
// its own, and looks at what is left. The command writes the files named in FAULT_OUTPUTS (separated by colons), which
// are there before with other content unless FAULT_NEW is set. FAULT_STRIDE is which of the allocations fail.

#include "tests/krohost/injectedFaults.h"

#include <dlfcn.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr const char* kindNames[]{"memory", "open", "write", "close", "rename", "sync", "folder", "read", "signal"};

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
        for (int kind = memory; kind < kindCount; ++kind)
            if (!old_.empty() || (kind != memory && kind != reading)) // which were the same with old files
                sweep(static_cast<Kind>(kind));
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
        for (const fs::path output : outputs_) {
            const fs::path parent = output.parent_path();
            fs::remove_all(parent.empty() ? output : parent);
        }
        for (const fs::path output : outputs_)
            if (!oldContent.empty()) {
                fs::create_directories("." / output.parent_path());
                std::ofstream{output} << oldContent;
            }
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
        for (const auto& entry : fs::recursive_directory_iterator{"."})
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
    static const auto real = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    toolMain = main;
    return real(sweepMain, argumentCount, arguments, init, fini, linkerFini, stackEnd);
}
