#pragma once

#include "host/InputStreamInterface.h"

#include <boost/filesystem/path.hpp>

#include <algorithm>

namespace veltra::dataio {

/// An open file, closed with the object.
class FileStreamBase : public virtual CloseableInterface {
public:
    FileStreamBase(const FileStreamBase&) = delete;
    FileStreamBase& operator=(const FileStreamBase&) = delete;
    ~FileStreamBase() override { FileStreamBase::close(); }

    void close() override;

protected:
    /// Throws FileAccessException, naming the path and the reason, unless the path is a regular file that opens.
    explicit FileStreamBase(const boost::filesystem::path& path);

    /// Reads up to `byteCount` bytes at a place in the file; 0 at its end. Throws FileAccessException.
    std::size_t readAt(std::uint64_t position, std::uint8_t* dst, std::size_t byteCount) const;

    boost::filesystem::path path_;
    int descriptor_ = -1;
    std::uint64_t byteCount_ = 0; ///< the file's size when it was opened, 0 once it is closed
};

/// The bytes of a file, straight from the system. A file that has shrunk since it was opened ends a read with
/// FileAccessException.
class FileInputStream final : public FileStreamBase, public InputStreamInterface {
public:
    explicit FileInputStream(const boost::filesystem::path& path) : FileStreamBase(path) {}

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::int64_t available() override { return static_cast<std::int64_t>(remaining()); }
    std::uint64_t position() override { return position_; }
    void close() override { FileStreamBase::close(); }

private:
    std::uint64_t remaining() const { return byteCount_ - std::min(position_, byteCount_); }

    std::uint64_t position_ = 0;
};

} // namespace veltra::dataio
