#include "krohost/convert/Outputs.h"

#include "krohost/convert/WriteError.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

namespace krohost::convert {

namespace fs = std::filesystem;

namespace {

std::string cannotBeWritten(const fs::path& path, const std::string& reason) {
    return fmt::format("The file \"{}\" cannot be written: {}", path.string(), reason);
}

[[noreturn]] void failToWrite(const fs::path& path, int errorNumber) {
    throw WriteError(cannotBeWritten(path, std::strerror(errorNumber)));
}

/// A new folder beside a file.
fs::path makeFolderBeside(const fs::path& path) {
    std::string pattern = (path.parent_path() / ".krohost-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        failToWrite(path, errno);
    return pattern;
}

/// Waits until the file is on its disk, which may turn out to be full only then; gives the file's size.
std::uint64_t sync(const fs::path& path, const fs::path& temporaryPath) {
    const int descriptor = open(temporaryPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        failToWrite(path, errno);
    struct stat status {};
    const bool isWritten = fstat(descriptor, &status) == 0 && fsync(descriptor) == 0;
    const int errorNumber = errno;
    close(descriptor);
    if (!isWritten)
        failToWrite(path, errorNumber);
    return static_cast<std::uint64_t>(status.st_size);
}

/// Renames where nothing has the new name; false with `errno` when something has it.
bool renameToFreeName(const fs::path& from, const fs::path& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) // which file systems say that do not know of it
        return false;
    struct stat status {};
    if (lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

void Permission::require(const fs::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0)
        return;
    const char* reason = inputs.contains(path) && inputs.areUnknown()
                             ? "it may be one of the files that are read, of which not all are known"
                         : inputs.contains(path)    ? "it is one of the files that are read, which are never replaced"
                         : !S_ISREG(status.st_mode) ? "it exists and is not a regular file"
                         : !isReplacing             ? "it exists; --force replaces it"
                                                    : nullptr;
    if (reason)
        throw NotReplaceable(cannotBeWritten(path, reason));
}

Outputs::~Outputs() {
    takeBack();
}

fs::path Outputs::begin(const fs::path& path) {
    permission_.require(path);
    if (folder_.empty())
        folder_ = makeFolderBeside(path);
    const std::string number = std::to_string(pending_.size());
    pending_.push_back({path, folder_ / (number + path.extension().string()), folder_ / ("old" + number)});
    return pending_.back().temporaryPath;
}

void Outputs::add(const fs::path& path, const std::function<void(const fs::path&)>& write) {
    const fs::path temporaryPath = begin(path);
    try {
        write(temporaryPath);
    } catch (const FileError& error) {
        throw WriteError(cannotBeWritten(path, error.what()));
    }
}

void Outputs::removeOld(const fs::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && !permission_.inputs.contains(path))
        oldFiles_.push_back(path);
}

std::vector<Outputs::Published> Outputs::publish() {
    std::vector<Published> published;
    for (const Pending& pending : pending_)
        published.push_back({pending.path, sync(pending.path, pending.temporaryPath)});
    for (const Pending& pending : pending_)
        makeFolders(pending);
    std::for_each(pending_.rbegin(), pending_.rend(), [this](Pending& pending) { move(pending); });
    for (Pending& pending : pending_) { // nothing is to be taken back
        pending.isPublished = false;
        pending.old = Pending::Old::none;
    }
    madeFolders_.clear();
    for (const fs::path& path : oldFiles_)
        unlink(path.c_str()); // what stays does no harm, since nothing names it
    return published;
}

void Outputs::makeFolders(const Pending& pending) {
    const fs::path folder = pending.path.parent_path();
    if (folder.empty())
        return;
    madeFolders_.push_back(folder);
    if (mkdir(folder.c_str(), 0777) == 0)
        return;
    madeFolders_.pop_back();
    if (errno != EEXIST)
        failToWrite(pending.path, errno);
}

/// Another name for the file that is replaced or, where a file system has no second names, this one instead.
void Outputs::keepOld(Pending& pending) const {
    if (link(pending.path.c_str(), pending.oldPath.c_str()) == 0)
        pending.old = Pending::Old::linked;
    else if (errno != ENOENT && rename(pending.path.c_str(), pending.oldPath.c_str()) == 0)
        pending.old = Pending::Old::moved;
    else if (errno != ENOENT)
        failToWrite(pending.path, errno);
}

void Outputs::move(Pending& pending) const {
    struct stat old {};
    if (permission_.isReplacing && stat(pending.path.c_str(), &old) == 0) {
        chmod(pending.temporaryPath.c_str(), old.st_mode & 07777);
        if (&pending != pending_.data()) // after the last one nothing can fail
            keepOld(pending);
        pending.isPublished = rename(pending.temporaryPath.c_str(), pending.path.c_str()) == 0;
    } else {
        pending.isPublished = renameToFreeName(pending.temporaryPath, pending.path);
    }
    if (!pending.isPublished)
        failToWrite(pending.path, errno);
}

void Outputs::takeBack() noexcept {
    for (const Pending& pending : pending_) {
        using Old = Pending::Old;
        if (pending.old == Old::moved || (pending.old == Old::linked && pending.isPublished))
            rename(pending.oldPath.c_str(), pending.path.c_str());
        else if (pending.isPublished)
            unlink(pending.path.c_str());
        unlink(pending.temporaryPath.c_str());
        unlink(pending.oldPath.c_str());
    }
    for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder)
        rmdir(folder->c_str());
    if (!folder_.empty())
        rmdir(folder_.c_str());
}

bool isStream(const fs::path& path) {
    struct stat status {};
    return namedDescriptor(path) ||
           (stat(path.c_str(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)));
}

std::optional<int> namedDescriptor(fs::path path) {
    constexpr int linkLimit = 8;
    std::error_code error;
    for (int count = 0; count < linkLimit; ++count) {
        const fs::path folder = path.parent_path();
        const std::string name = path.filename().string();
        if (folder == "/dev/fd" || folder == "/proc/self/fd") {
            int descriptor = 0;
            const auto result = std::from_chars(name.data(), name.data() + name.size(), descriptor);
            return result.ec == std::errc{} && *result.ptr == '\0' ? std::optional{descriptor} : std::nullopt;
        }
        const fs::path target = fs::read_symlink(path, error);
        if (error)
            return std::nullopt;
        path = (folder / target).lexically_normal();
    }
    return std::nullopt;
}

} // namespace krohost::convert
