#pragma once

#include "krohost/convert/Grid.h"

#include <cstddef>
#include <functional>
#include <span>

namespace krohost::convert {

/// Has the array produce its values and hands them on in blocks of `tuplesPerBlock`, the last one perhaps smaller; the
/// receiver may change the bytes. Throws WriteError when other than the announced number of values comes, and
/// Interrupted.
void produceInBlocks(const Array& array, std::size_t tuplesPerBlock,
                     const std::function<void(std::span<std::byte>)>& receive);

} // namespace krohost::convert
