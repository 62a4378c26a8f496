#pragma once

#include "krohost/vtu/ByteSource.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>

namespace krohost::vtu {

/// Hands on the numbers of an ascii array, until the end or a word that is no number of the type.
std::optional<Fault> decodeText(FileSource& source, ElementType type,
                                const std::function<void(std::span<const std::byte>)>& sink);

} // namespace krohost::vtu
