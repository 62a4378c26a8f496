#include "krohost/convert/OutputFile.h"

#include "krohost/convert/WriteError.h"

#include <cerrno>
#include <cstring>

namespace krohost::convert {

OutputFile::OutputFile(const std::filesystem::path& path) : file_{std::fopen(path.c_str(), "wbx"), std::fclose} {
    if (!file_)
        fail();
}

void OutputFile::write(std::span<const std::byte> bytes) {
    put(bytes);
    position_ += bytes.size();
}

void OutputFile::patch(std::uint64_t position, std::span<const std::byte> bytes) {
    if (fseeko(file_.get(), static_cast<off_t>(position), SEEK_SET) != 0)
        fail();
    put(bytes);
    if (fseeko(file_.get(), static_cast<off_t>(position_), SEEK_SET) != 0)
        fail();
}

void OutputFile::close() {
    if (std::fclose(file_.release()) != 0)
        fail();
}

void OutputFile::put(std::span<const std::byte> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        fail();
}

void OutputFile::fail() {
    throw FileError(std::strerror(errno));
}

} // namespace krohost::convert
