#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace veltra::dataio {

class CloseableInterface {
public:
    virtual void close() = 0;
    virtual ~CloseableInterface() = default;
};

/// A stream of bytes that is read once, from front to back. Streams stack: each holds the one below through a shared
/// pointer, so a chain lives as long as its top. A stream reads ahead in the one below, which is then its alone.
/// One thread per chain. [any thread]
class InputStreamInterface : public virtual CloseableInterface {
public:
    InputStreamInterface() = default;
    InputStreamInterface(const InputStreamInterface&) = delete;
    InputStreamInterface& operator=(const InputStreamInterface&) = delete;

    /// Delivers exactly `byteCount` bytes into `dst`. Throws IOException when that many cannot be had: those that
    /// could be in `dst` then, and position() counts them.
    virtual void read(std::uint8_t* dst, std::size_t byteCount) = 0;

    /// Passes over `byteCount` bytes, which a stream that knows no better way reads. Throws IOException when it ends
    /// before.
    virtual void skip(std::size_t byteCount);

    /// Bytes that come next and are in memory already or are put there now, for those who can do without a copy. They
    /// are not consumed; skip() does that. There may be none although more can be read. Valid until the next call of
    /// another operation. Throws IOException like read().
    virtual std::span<const std::uint8_t> peek() { return {}; }

    /// Bytes that can still be read: 0 at the end and never less than what is there. A stream whose bytes are encoded
    /// in the one below may answer with the most that the encoded bytes can yield.
    virtual std::int64_t available() = 0;

    /// Bytes consumed so far.
    virtual std::uint64_t position() = 0;
};

using InputStreamPtr = std::shared_ptr<InputStreamInterface>;

} // namespace veltra::dataio
