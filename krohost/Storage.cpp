#include "krohost/Storage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace krohost {

namespace {

// Unlike any run of zeros, small integers or common floating-point values.
constexpr auto guard = [] {
    std::array<std::byte, 64> bytes{};
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<std::byte>(0xA5 ^ (index * 37));
    return bytes;
}();

} // namespace

// calloc gets large blocks from the system as zero pages, which cost nothing until they are written.
Storage::Storage(std::int64_t itemCount, std::size_t itemByteCount)
    : itemCount_{itemCount}, byteCount_{static_cast<std::size_t>(itemCount) * itemByteCount},
      bytes_{static_cast<std::byte*>(std::calloc(byteCount_ + guard.size(), 1))} {
    if (!bytes_)
        throw std::bad_alloc{};
    std::memcpy(bytes_.get() + byteCount_, guard.data(), guard.size());
}

bool Storage::isGuardIntact() const {
    return std::equal(guard.begin(), guard.end(), bytes_.get() + byteCount_);
}

} // namespace krohost
