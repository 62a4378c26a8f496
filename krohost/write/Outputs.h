#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace krohost::write {

/// The files of one conversion. They are written in a folder of their own beside the first one and get their names when
/// all of them are whole; what is not published is removed.
class Outputs {
public:
    /// `isReplacing`: files that exist may be replaced.
    explicit Outputs(bool isReplacing) : isReplacing_{isReplacing} {}
    ~Outputs();
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// Has a file written, under the name that is handed to `write`, that becomes `path`. Throws WriteError when that
    /// exists and must not be replaced, and in the place of a FileError.
    void add(const std::filesystem::path& path, const std::function<void(const std::filesystem::path&)>& write);

    struct Published {
        std::filesystem::path path;
        std::uint64_t byteCount;
    };
    /// Gives the files their names, the first one last, because it may name the others. Throws WriteError, with none of
    /// the new names left.
    std::vector<Published> publish();

private:
    struct Pending {
        std::filesystem::path path;
        std::filesystem::path temporaryPath;
    };
    void move(const Pending& pending);

    bool isReplacing_;
    std::filesystem::path folder_; // empty until something is added
    std::vector<Pending> pending_;
    std::vector<std::filesystem::path> created_; // files and folders that were not there before, taken back on failure
};

/// Throws WriteError unless a file can be made under this name: nothing is there, or a regular file that may be
/// replaced.
void requireFree(const std::filesystem::path& path, bool isReplacing);

} // namespace krohost::write
