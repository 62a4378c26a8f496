#include "krohost/convert/Inputs.h"

#include "krohost/convert/Loss.h"
#include "krohost/reader/Document.h"

#include <sys/stat.h>

#include <optional>

namespace krohost::convert {

namespace {

std::optional<struct stat> statusOf(const std::filesystem::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? std::optional{status} : std::nullopt;
}

} // namespace

bool Inputs::contains(const std::filesystem::path& path) {
    const auto status = statusOf(path);
    if (!status)
        return false;
    const Identity identity{status->st_dev, status->st_ino};
    for (const std::filesystem::path& named : named_)
        addIdentity(named);
    if (files_.contains(identity))
        return true;
    while (!named_.empty()) {
        const std::filesystem::path next = std::move(named_.back());
        named_.pop_back();
        addMembers(next);
    }
    return areUnknown_ || files_.contains(identity);
}

void Inputs::addIdentity(const std::filesystem::path& path) {
    if (const auto status = statusOf(path))
        files_.emplace(status->st_dev, status->st_ino);
}

void Inputs::addMembers(const std::filesystem::path& path) {
    const auto status = statusOf(path);
    if (!status || !S_ISREG(status->st_mode) || !readFiles_.emplace(status->st_dev, status->st_ino).second)
        return;
    const reader::Document document = reader::readDocument(path, pollInterrupt);
    areUnknown_ = areUnknown_ || document.mayNameMore();
    for (const reader::Member& member : document.members) {
        addIdentity(member.path);
        named_.push_back(member.path);
    }
}

} // namespace krohost::convert
