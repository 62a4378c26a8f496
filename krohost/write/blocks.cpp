#include "krohost/write/blocks.h"

#include "krohost/Host.h"
#include "krohost/write/WriteError.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace krohost::write {

void produceInBlocks(const Array& array, std::size_t tuplesPerBlock,
                     const std::function<void(std::span<std::byte>)>& receive) {
    const std::size_t blockByteCount = tuplesPerBlock * array.componentCount * vtu::byteCount(array.type);
    std::uint64_t missingByteCount = array.valueCount() * vtu::byteCount(array.type);
    std::vector<std::byte> block;
    block.reserve(blockByteCount);
    const auto requireThat = [&](bool isSound) {
        if (!isSound)
            throw WriteError(
                fmt::format("The array \"{}\" does not have the number of values that it should have.", array.name));
    };
    array.produce([&](std::span<const std::byte> bytes) {
        requireThat(bytes.size() <= missingByteCount);
        missingByteCount -= bytes.size();
        while (!bytes.empty()) {
            const auto head = bytes.first(std::min(bytes.size(), blockByteCount - block.size()));
            block.insert(block.end(), head.begin(), head.end());
            bytes = bytes.subspan(head.size());
            if (block.size() < blockByteCount)
                continue;
            if (Host::isInterrupted())
                throw Interrupted();
            receive(block);
            block.clear();
        }
    });
    requireThat(missingByteCount == 0);
    if (!block.empty())
        receive(block);
}

} // namespace krohost::write
