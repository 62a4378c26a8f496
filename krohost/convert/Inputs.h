#pragma once

#include <filesystem>
#include <set>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace krohost::convert {

/// The files that a run reads, known by what they are: two names of one file are the same file. Collections stand for
/// the files that they name too, at any depth. [one thread]
class Inputs {
public:
    /// A file that is not there is none.
    void add(const std::filesystem::path& path) { named_.push_back(path); }

    /// Whether this is another name of an input, or one of its names. Collections are read when there is a file to
    /// compare with; with one that cannot be read to its end, any file that is there counts as one that it names.
    /// Throws std::bad_alloc and Interrupted.
    bool contains(const std::filesystem::path& path);
    /// Whether that was said of any file, because a collection could not be read to its end.
    bool areUnknown() const { return areUnknown_; }

private:
    using Identity = std::pair<dev_t, ino_t>;

    void addIdentity(const std::filesystem::path& path);
    void addMembers(const std::filesystem::path& path);

    std::vector<std::filesystem::path> named_; // whose members are not known yet
    std::set<Identity> files_;
    std::set<Identity> readFiles_; // for members
    bool areUnknown_ = false;      // some of the members
};

} // namespace krohost::convert
