/// Definition of StreamReader::readValues, for those who need an instance that loader/streams/dataArrayReader.h does
/// not offer.
#pragma once

#include "loader/streams/StreamReader.h"
#include "loader/streams/byteOrder.h"
#include "loader/streams/convert.h"

#include "interface/kro.h"
#include "loader/sdk/exceptions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace veltra::vtkfile {

/// A call of readValues under way: where the next value goes and which component it is.
template <class Dst, class Src>
class StreamReader::Run {
public:
    /// For `valueCount` values, of all components, which are then read a part at a time.
    Run(StreamReader& reader, Dst* dst, std::uint64_t valueCount, short numComponents, short component)
        : reader_(reader), dst_(dst), numComponents_(static_cast<std::size_t>(numComponents)),
          component_(component < 0 ? numComponents_ : static_cast<std::size_t>(component)) {
        const bool hasLongParts = valueCount / 100 * sizeof(Src) >= 0x1000;
        readsInPlace_ = isStoredAsRead<Dst, Src> && numComponents_ == 1 && component_ == 0 && hasLongParts;
    }

    /// Consumes the next `valueCount` values.
    void read(std::uint64_t valueCount) {
        if (!reader_.binary_)
            readText(valueCount);
        else if (readsInPlace_)
            readInPlace(valueCount);
        else
            readConverted(valueCount);
    }

    /// Leaves the stream after the last value consumed.
    void giveBack() {
        reader_.stream_->skip(readyByteCount_ - ready_.size());
        ready_ = {};
        readyByteCount_ = 0;
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

    /// Converts values where the stream has them in memory, and one that is not there as a whole from a copy.
    void readConverted(std::uint64_t valueCount) {
        while (valueCount > 0) {
            if (ready_.size() < sizeof(Src)) {
                giveBack();
                ready_ = reader_.stream_->peek();
                readyByteCount_ = ready_.size();
            }
            const std::size_t count = std::min<std::uint64_t>(valueCount, ready_.size() / sizeof(Src));
            if (count > 0) {
                deliver(ready_.data(), count);
                ready_ = ready_.subspan(count * sizeof(Src));
                valueCount -= count;
            } else {
                std::array<std::uint8_t, sizeof(Src)> value;
                giveBack();
                reader_.stream_->read(value.data(), value.size());
                deliver(value.data(), 1);
                --valueCount;
            }
        }
    }

    void deliver(const std::uint8_t* bytes, std::size_t valueCount) {
        if (reader_.swapBytes_)
            deliver<true>(bytes, valueCount);
        else
            deliver<false>(bytes, valueCount);
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
    bool readsInPlace_;
    std::span<const std::uint8_t> ready_; // not yet consumed of what the stream has shown
    std::size_t readyByteCount_ = 0;      // of all that it has shown
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
    run.giveBack();
}

} // namespace veltra::vtkfile
