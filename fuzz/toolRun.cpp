#include "fuzz/toolRun.h"

#include "fuzz/fuzz.h"

#include "krohost/cli/CommandLine.h"
#include "krohost/cli/run.h"

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <variant>

namespace fuzz {

namespace {

/// Takes what goes to a standard stream as long as it lives. The descriptor stays, on which sanitizers report.
class Captured {
public:
    explicit Captured(std::FILE*& stream) : stream_(stream), own_(open_memstream(&bytes_, &byteCount_)) {
        std::swap(stream_, own_);
    }
    ~Captured() {
        std::swap(stream_, own_);
        std::fclose(own_);
        std::free(bytes_);
    }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::string text() {
        std::fflush(stream_);
        return {bytes_, byteCount_};
    }

private:
    char* bytes_ = nullptr;
    std::size_t byteCount_ = 0;
    std::FILE*& stream_;
    std::FILE* own_;
};

} // namespace

ToolRun runTool(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "krohost");
    arguments.insert(arguments.end(), {"--addon", ADD_ON});
    std::vector<const char*> words;
    for (const std::string& argument : arguments)
        words.push_back(argument.c_str());
    Captured output(stdout), errors(stderr);
    auto parsed = krohost::cli::parseCommandLine(static_cast<int>(words.size()), words.data());
    const int* usage = std::get_if<int>(&parsed);
    const int exitCode =
        usage != nullptr ? *usage : krohost::cli::run(*std::get<std::unique_ptr<krohost::cli::Command>>(parsed));
    return {exitCode, output.text(), errors.text()};
}

} // namespace fuzz
