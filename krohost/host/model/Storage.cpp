#include "krohost/host/model/Storage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

namespace krohost {

namespace {

constexpr std::size_t largeByteCount = std::size_t{1} << 21;

// Unlike any run of zeros, small integers or common floating-point values.
constexpr auto guard = [] {
    std::array<std::byte, Storage::guardByteCount> bytes{};
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<std::byte>(0xA5 ^ (index * 37));
    return bytes;
}();

/// Asks for large pages: for a large array, fetching the small ones one by one would take longer than filling them.
void useLargePages(std::byte* bytes, std::size_t byteCount) {
    static const auto pageByteCount = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(bytes);
    const std::uintptr_t firstPage = (begin + pageByteCount - 1) / pageByteCount * pageByteCount;
    const std::uintptr_t end = begin + byteCount;
    if (end > firstPage)
        madvise(bytes + (firstPage - begin), end - firstPage, MADV_HUGEPAGE); // a wish: it does not matter if it fails
}

} // namespace

// calloc gets large blocks from the system as zero pages, which cost nothing until they are written.
Storage::Storage(std::int64_t itemCount, std::size_t itemByteCount)
    : itemCount_{itemCount}, byteCount_{static_cast<std::size_t>(itemCount) * itemByteCount},
      block_{static_cast<std::byte*>(std::calloc(byteCount_ + 2 * guardByteCount, 1))} {
    if (!block_)
        throw std::bad_alloc{};
    if (byteCount_ >= largeByteCount)
        useLargePages(block_.get(), byteCount_);
    std::ranges::copy(guard, block_.get());
    std::ranges::copy(guard, block_.get() + guardByteCount + byteCount_);
}

const char* Storage::trespass() const {
    const auto isIntact = [&](std::size_t offset) {
        return std::ranges::equal(guard, std::span(block_.get() + offset, guardByteCount));
    };
    if (!isIntact(0))
        return "before the start";
    return isIntact(guardByteCount + byteCount_) ? nullptr : "past the end";
}

} // namespace krohost
