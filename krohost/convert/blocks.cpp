#include "krohost/convert/blocks.h"

#include "krohost/convert/WriteError.h"
#include "krohost/host/runtime/Host.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace krohost::convert {

namespace {

std::uint64_t product(const Array& array, std::uint64_t left, std::uint64_t right) {
    std::uint64_t result = 0;
    if (__builtin_mul_overflow(left, right, &result))
        throw WriteError(fmt::format("The array \"{}\" has more values than any memory holds.", array.name));
    return result;
}

} // namespace

void produceInBlocks(const Array& array, std::size_t tuplesPerBlock,
                     const std::function<void(std::span<std::byte>)>& receive) {
    const std::uint64_t tupleByteCount = product(array, array.componentCount, reader::byteCount(array.type));
    const std::uint64_t blockByteCount = product(array, tuplesPerBlock, tupleByteCount);
    std::uint64_t missingByteCount = product(array, array.tupleCount, tupleByteCount);
    std::vector<std::byte> block; // grows with what comes, whatever is announced
    const auto requireThat = [&](bool isSound) {
        if (!isSound)
            throw WriteError(
                fmt::format("The array \"{}\" does not have the number of values that it should have.", array.name));
    };
    array.produce([&](std::span<const std::byte> bytes) {
        requireThat(bytes.size() <= missingByteCount);
        missingByteCount -= bytes.size();
        while (!bytes.empty()) {
            const auto head = bytes.first(std::min<std::size_t>(bytes.size(), blockByteCount - block.size()));
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

} // namespace krohost::convert
