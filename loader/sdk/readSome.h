#pragma once

#include "loader/sdk/InputStreamInterface.h"

namespace veltra::dataio {

/// Reads up to `byteCount` bytes into `dst` and returns how many there were: fewer only where the stream failed after
/// them. Throws IOException when it fails before the first. What a reader-ahead wants: a failure counts when its place
/// is asked for. [any thread]
std::size_t readSome(InputStreamInterface& stream, std::uint8_t* dst, std::size_t byteCount);

} // namespace veltra::dataio
