/// Definition of StreamReader::readValues, for those who need an instance that streams/dataArrayReader.h does not
/// offer.
#pragma once

#include "streams/StreamReader.h"
#include "streams/byteOrder.h"
#include "streams/convert.h"

#include "host/exceptions.h"
#include "host/kro.h"
#include "host/readSome.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace veltra::vtkfile {

/// A call of readValues under way: where the next value goes and which component it is.
template <class Dst, class Src>
class StreamReader::Run {
public:
    /// For `valueCount` values, of all components, which are then read a part at a time.
    Run(StreamReader& reader, Dst* dst, std::uint64_t valueCount, short numComponents, short component)
        : reader_(reader), dst_(dst), unfetchedCount_(valueCount),
          numComponents_(static_cast<std::size_t>(numComponents)),
          component_(component < 0 ? numComponents_ : static_cast<std::size_t>(component)) {
        const bool hasLongParts = valueCount / 100 * sizeof(Src) >= buffer_.size() / 4;
        readsInPlace_ = isStoredAsRead<Dst, Src> && numComponents_ == 1 && component_ == 0 && hasLongParts;
    }

    /// Consumes the next `valueCount` values.
    void read(std::uint64_t valueCount) {
        if (!reader_.binary_)
            readText(valueCount);
        else if (readsInPlace_)
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
        dataio::InputStreamInterface& stream = *reader_.stream_;
        const std::uint64_t begin = stream.position();
        try {
            stream.read(reinterpret_cast<std::uint8_t*>(dst_), valueCount * sizeof(Src));
        } catch (...) {
            arrive((stream.position() - begin) / sizeof(Src));
            throw;
        }
        arrive(valueCount);
    }

    void arrive(std::uint64_t valueCount) {
        if (reader_.swapBytes_)
            reverseAll(dst_, valueCount);
        dst_ += valueCount;
    }

    void readBuffered(std::uint64_t valueCount) {
        while (valueCount > 0) {
            if (end_ - begin_ < sizeof(Src))
                fetch();
            const std::size_t count = std::min<std::uint64_t>(valueCount, (end_ - begin_) / sizeof(Src));
            if (reader_.swapBytes_)
                deliver<true>(buffer_.data() + begin_, count);
            else
                deliver<false>(buffer_.data() + begin_, count);
            begin_ += count * sizeof(Src);
            valueCount -= count;
        }
    }

    /// Puts the next values into the buffer: at least one, or the stream says why there is none.
    void fetch() {
        std::copy(buffer_.begin() + begin_, buffer_.begin() + end_, buffer_.begin()); // of a value cut by a failure
        end_ -= std::exchange(begin_, 0);
        const std::size_t capacity = buffer_.size() / sizeof(Src) * sizeof(Src) - end_;
        const std::size_t byteCount = std::min<std::uint64_t>(unfetchedCount_ * sizeof(Src) - end_, capacity);
        std::size_t count = dataio::readSome(*reader_.stream_, buffer_.data() + end_, byteCount);
        if (end_ + count < sizeof(Src)) {
            reader_.stream_->read(buffer_.data() + end_ + count, sizeof(Src) - end_ - count);
            count = sizeof(Src) - end_;
        }
        end_ += count;
        unfetchedCount_ -= end_ / sizeof(Src);
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
    std::uint64_t unfetchedCount_; // of the values that go through the buffer
    std::size_t numComponents_;
    std::size_t component_;
    std::size_t current_ = 0; // component of the next value
    bool readsInPlace_;
    std::size_t begin_ = 0; // what stands in the buffer
    std::size_t end_ = 0;
    alignas(Src) std::array<std::uint8_t, 0x4000> buffer_; // left uninitialised
};

template <class Dst, class Src>
void StreamReader::readValues(Dst* dst, std::size_t count, short numComponents, short component, short) {
    const std::uint64_t total = count * static_cast<std::uint64_t>(numComponents);
    if (total == 0)
        return;
    const std::uint64_t interval = total < 100 ? 1 : total / 100;
    Run<Dst, Src> run(*this, dst, total, numComponents, component);
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
