#pragma once

#include "loader/sdk/File.h"
#include "loader/sdk/InputStreamInterface.h"

#include <algorithm>

namespace veltra::dataio {

/// Holds an open file, which others may hold too, until it is closed.
class FileStreamBase : public virtual CloseableInterface {
public:
    void close() override { file_.reset(); }

protected:
    explicit FileStreamBase(std::shared_ptr<const File> file) : file_(std::move(file)) {}

    std::shared_ptr<const File> file_; // null once closed
};

/// The bytes of a file, straight from the system. A file that has shrunk since it was opened ends a read with
/// FileAccessException.
class FileInputStream final : public FileStreamBase, public InputStreamInterface {
public:
    explicit FileInputStream(std::shared_ptr<const File> file) : FileStreamBase(std::move(file)) {}
    /// Opens the file. Throws FileAccessException.
    explicit FileInputStream(const boost::filesystem::path& path) : FileInputStream(std::make_shared<File>(path)) {}

    void read(std::uint8_t* dst, std::size_t byteCount) override;
    void skip(std::size_t byteCount) override;
    std::int64_t available() override { return static_cast<std::int64_t>(remaining()); }
    std::uint64_t position() override { return position_; }
    void close() override { FileStreamBase::close(); }

private:
    std::uint64_t remaining() const { return file_ ? file_->byteCount() - std::min(position_, file_->byteCount()) : 0; }
    [[noreturn]] void throwEnd() const;

    std::uint64_t position_ = 0;
};

} // namespace veltra::dataio
