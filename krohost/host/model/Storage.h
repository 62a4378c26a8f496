#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace krohost {

/// Zero-filled memory for the items of one array, aligned for every item type, with guard bytes on either side that
/// show whether somebody wrote there. Movable, not copied. [any thread]
class Storage {
public:
    static constexpr std::size_t guardByteCount = 64; ///< on each side

    /// The caller has made sure that the byte count fits std::size_t with some room to spare. Throws std::bad_alloc.
    Storage(std::int64_t itemCount, std::size_t itemByteCount);

    void* data() const { return block_.get() + guardByteCount; }
    std::int64_t itemCount() const { return itemCount_; }
    std::span<const std::byte> bytes() const { return {static_cast<const std::byte*>(data()), byteCount_}; }
    template <class Item>
    std::span<const Item> items() const {
        return {static_cast<const Item*>(data()), static_cast<std::size_t>(itemCount_)};
    }

    /// "before the start" or "past the end" when somebody wrote there, otherwise null.
    const char* trespass() const;

private:
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };

    std::int64_t itemCount_;
    std::size_t byteCount_;
    std::unique_ptr<std::byte, Free> block_; // a guard, the items, a guard
};

} // namespace krohost
