#pragma once

#include "krohost/convert/Inputs.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace krohost::convert {

/// What may be written over. Inputs never are.
struct Permission {
    bool isReplacing = false; ///< files that exist may be replaced
    Inputs inputs = {};

    /// Throws NotReplaceable unless a file can be made under this name: nothing is there, or a regular file that may be
    /// replaced.
    void require(const std::filesystem::path& path);
};

/// The files of one command. They are written in a folder of their own beside the first one and get their names when
/// all of them are whole; what is not published is removed, and what it was to replace stays.
class Outputs {
public:
    explicit Outputs(Permission permission) : permission_{std::move(permission)} {}
    ~Outputs();
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// The name under which a file is to be written that becomes `path`. Throws NotReplaceable and WriteError.
    std::filesystem::path begin(const std::filesystem::path& path);
    /// Has such a file written under the name that is handed to `write`. Throws WriteError also in the place of a
    /// FileError.
    void add(const std::filesystem::path& path, const std::function<void(const std::filesystem::path&)>& write);

    /// Has a file of an earlier run removed once all files have their names. Inputs stay, and what is no regular file.
    void removeOld(const std::filesystem::path& path);

    struct Published {
        std::filesystem::path path;
        std::uint64_t byteCount;
    };
    /// Gives the files their names, the first one last, because it may name the others. Throws WriteError, with all
    /// names as they were.
    std::vector<Published> publish();

private:
    struct Pending {
        enum class Old { none, linked, moved };

        std::filesystem::path path;
        std::filesystem::path temporaryPath;
        std::filesystem::path oldPath; ///< where the file that it replaces is kept meanwhile
        Old old = Old::none;
        bool isPublished = false;
    };
    void makeFolders(const Pending& pending);
    void keepOld(Pending& pending) const;
    void move(Pending& pending) const;
    void takeBack() noexcept;

    Permission permission_;
    std::filesystem::path folder_; // empty until something is added
    std::vector<Pending> pending_;
    std::vector<std::filesystem::path> oldFiles_; // that are removed at the end
    std::vector<std::filesystem::path> madeFolders_;
};

/// Whether what is written under this name goes on to somebody as it comes, as into a FIFO or a terminal, so that there
/// is nothing to replace.
bool isStream(const std::filesystem::path& path);

/// The descriptor that a name such as /dev/stdout or /dev/fd/3 stands for.
std::optional<int> namedDescriptor(std::filesystem::path path);

} // namespace krohost::convert
