#pragma once

#include <boost/filesystem/path.hpp>

#include <cstddef>
#include <cstdint>

namespace veltra::dataio {

/// An open regular file, closed with the object. [any thread]
class File {
public:
    /// Throws FileAccessException, naming the path and the reason, unless the path is a regular file that opens.
    explicit File(boost::filesystem::path path);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const boost::filesystem::path& path() const { return path_; }
    /// The file's size when it was opened.
    std::uint64_t byteCount() const { return byteCount_; }

    /// Reads up to `byteCount` bytes at a place in the file; 0 at its end. Throws FileAccessException.
    std::size_t readAt(std::uint64_t position, std::uint8_t* dst, std::size_t byteCount) const;

private:
    boost::filesystem::path path_;
    int descriptor_ = -1;
    std::uint64_t byteCount_ = 0;
};

} // namespace veltra::dataio
