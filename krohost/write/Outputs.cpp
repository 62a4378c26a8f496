#include "krohost/write/Outputs.h"

#include "krohost/write/WriteError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace krohost::write {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failToWrite(const fs::path& path, const std::string& reason) {
    throw WriteError(fmt::format("The file \"{}\" cannot be written: {}", path.string(), reason));
}

/// A new folder beside a file.
fs::path makeFolderBeside(const fs::path& path) {
    std::string pattern = (path.parent_path() / ".krohost-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        failToWrite(path, std::strerror(errno));
    return pattern;
}

} // namespace

void requireFree(const fs::path& path, bool isReplacing) {
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(path, ignored);
    if (!fs::exists(status))
        return;
    if (!fs::is_regular_file(status))
        failToWrite(path, "it exists and is not a regular file");
    if (!isReplacing)
        failToWrite(path, "it exists; --force replaces it");
}

Outputs::~Outputs() {
    std::error_code ignored;
    if (!folder_.empty())
        fs::remove_all(folder_, ignored);
    for (auto created = created_.rbegin(); created != created_.rend(); ++created)
        fs::remove(*created, ignored);
}

void Outputs::add(const fs::path& path, const std::function<void(const fs::path&)>& write) {
    requireFree(path, isReplacing_);
    if (folder_.empty())
        folder_ = makeFolderBeside(path);
    pending_.push_back({path, folder_ / fmt::format("{}{}", pending_.size(), path.extension().string())});
    const fs::path temporaryPath = pending_.back().temporaryPath;
    try {
        write(temporaryPath);
    } catch (const FileError& error) {
        failToWrite(path, error.what());
    }
}

std::vector<Outputs::Published> Outputs::publish() {
    std::vector<Published> published;
    try {
        for (const Pending& pending : pending_)
            published.push_back({pending.path, fs::file_size(pending.temporaryPath)});
        std::for_each(pending_.rbegin(), pending_.rend(), [this](const Pending& pending) { move(pending); });
    } catch (const fs::filesystem_error& error) {
        failToWrite(error.path1(), error.code().message());
    }
    created_.clear();
    return published;
}

void Outputs::move(const Pending& pending) {
    requireFree(pending.path, isReplacing_);
    const fs::path folder = pending.path.parent_path();
    if (!folder.empty() && fs::create_directory(folder))
        created_.push_back(folder);
    const bool isNew = !fs::exists(pending.path);
    fs::rename(pending.temporaryPath, pending.path);
    if (isNew)
        created_.push_back(pending.path);
}

} // namespace krohost::write
