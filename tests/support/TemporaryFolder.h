#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace test {

/// A new folder that is removed, with what it holds, at the end of its life.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of a file in the folder.
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
    /// Writes a file, with the folders it lies in, and returns its path.
    std::filesystem::path write(std::string_view name, std::string_view bytes) const;

private:
    std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view bytes);

/// Cuts the end off a file.
void truncate(const std::filesystem::path& path, std::size_t byteCount);

} // namespace test
