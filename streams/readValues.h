/// Definition of StreamReader::readValues, for those who need an instance that streams/dataArrayReader.h does not
/// offer.
#pragma once

#include "streams/StreamReader.h"
#include "streams/byteOrder.h"
#include "streams/convert.h"

#include "host/exceptions.h"
#include "host/kro.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

namespace veltra::vtkfile {

/// A call of readValues under way: where the next value goes and which component it is.
template <class Dst, class Src>
class StreamReader::Run {
public:
    Run(StreamReader& reader, Dst* dst, short numComponents, short component)
        : reader_(reader), dst_(dst), numComponents_(static_cast<std::size_t>(numComponents)),
          component_(component < 0 ? numComponents_ : static_cast<std::size_t>(component)) {}

    /// Consumes the next `valueCount` values, of all components.
    void read(std::uint64_t valueCount) {
        if (!reader_.binary_)
            readText(valueCount);
        else if (isStoredAsRead<Dst, Src> && numComponents_ == 1 && component_ == 0)
            readInPlace(valueCount);
        else
            readBuffered(valueCount);
    }

private:
    void readText(std::uint64_t valueCount) {
        for (; valueCount > 0; --valueCount) {
            if (current_ == component_)
                *dst_++ = convertValue<Dst>(reader_.text_.next<Src>());
            else
                reader_.text_.skip<Src>();
            current_ = current_ + 1 == numComponents_ ? 0 : current_ + 1;
        }
    }

    void readInPlace(std::uint64_t valueCount) {
        readBytes(reinterpret_cast<std::uint8_t*>(dst_), valueCount, [&](std::size_t arrived) {
            if (reader_.swapBytes_)
                reverseAll(dst_, arrived);
            dst_ += arrived;
        });
    }

    void readBuffered(std::uint64_t valueCount) {
        alignas(Src) std::array<std::uint8_t, 0x4000> buffer;
        while (valueCount > 0) {
            const std::size_t count = std::min<std::uint64_t>(valueCount, buffer.size() / sizeof(Src));
            readBytes(buffer.data(), count, [&](std::size_t arrived) {
                if (reader_.swapBytes_)
                    deliver<true>(buffer.data(), arrived);
                else
                    deliver<false>(buffer.data(), arrived);
            });
            valueCount -= count;
        }
    }

    /// Reads values into `bytes` and passes on how many arrived, also when a failure cuts them short.
    template <class Arrived>
    void readBytes(std::uint8_t* bytes, std::size_t valueCount, Arrived arrived) {
        dataio::InputStreamInterface& stream = *reader_.stream_;
        const std::uint64_t begin = stream.position();
        try {
            stream.read(bytes, valueCount * sizeof(Src));
        } catch (...) {
            arrived((stream.position() - begin) / sizeof(Src));
            throw;
        }
        arrived(valueCount);
    }

    /// Stores the wanted component of the values in `bytes`.
    template <bool Swap>
    void deliver(const std::uint8_t* bytes, std::size_t valueCount) {
        const auto valueAt = [bytes](std::size_t index) {
            Src value;
            std::memcpy(&value, bytes + index * sizeof(Src), sizeof(Src));
            return convertValue<Dst>(Swap ? reverseBytes(value) : value);
        };
        if (numComponents_ == 1 && component_ == 0) { // neighbours, several of which are converted at once
            for (std::size_t index = 0; index < valueCount; ++index)
                dst_[index] = valueAt(index);
            dst_ += valueCount;
            return;
        }
        std::size_t index =
            component_ < numComponents_ ? (component_ + numComponents_ - current_) % numComponents_ : valueCount;
        for (; index < valueCount; index += numComponents_)
            *dst_++ = valueAt(index);
        current_ = (current_ + valueCount) % numComponents_;
    }

    StreamReader& reader_;
    Dst* dst_;
    std::size_t numComponents_;
    std::size_t component_;
    std::size_t current_ = 0; // component of the next value
};

template <class Dst, class Src>
void StreamReader::readValues(Dst* dst, std::size_t count, short numComponents, short component, short) {
    const std::uint64_t total = count * static_cast<std::uint64_t>(numComponents);
    if (total == 0)
        return;
    const std::uint64_t interval = total < 100 ? 1 : total / 100;
    Run<Dst, Src> run(*this, dst, numComponents, component);
    std::uint64_t done = std::min(interval, total);
    run.read(done);
    while (done < total) {
        if (KroUtilInterruptIsSet())
            throw InterruptedException();
        const std::uint64_t valueCount = std::min(interval + 1, total - done);
        run.read(valueCount);
        done += valueCount;
    }
}

} // namespace veltra::vtkfile
