#include "loader/sdk/InputStreamInterface.h"

#include <algorithm>
#include <array>

namespace veltra::dataio {

void InputStreamInterface::skip(std::size_t byteCount) {
    std::array<std::uint8_t, 4096> passedOver;
    for (std::size_t count = 0; byteCount > 0; byteCount -= count) {
        count = std::min(byteCount, passedOver.size());
        read(passedOver.data(), count);
    }
}

} // namespace veltra::dataio
