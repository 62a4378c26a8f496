#include "loader/sdk/readSome.h"

#include "loader/sdk/exceptions.h"

namespace veltra::dataio {

std::size_t readSome(InputStreamInterface& stream, std::uint8_t* dst, std::size_t byteCount) {
    const std::uint64_t start = stream.position();
    try {
        stream.read(dst, byteCount);
    } catch (const IOException&) {
        if (stream.position() == start)
            throw;
    }
    return stream.position() - start;
}

} // namespace veltra::dataio
