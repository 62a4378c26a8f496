#pragma once

#include "loader/streams/AsciiTokenizer.h"

#include "loader/sdk/InputStreamInterface.h"

#include <cstddef>
#include <cstdint>

namespace veltra::vtkfile {

/// Reads the values of one array from the top of its chain of streams. One thread per reader. [any thread]
class StreamReader {
public:
    StreamReader(dataio::InputStreamPtr stream, bool binary, bool swapBytes)
        : stream_(std::move(stream)), text_(*stream_), binary_(binary), swapBytes_(swapBytes) {}
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    /// Delivers one component of every tuple of an array of Src, converted to Dst by convertValue().
    ///
    /// `dst` has room for `count` values and keeps those already stored if this throws. `count` is in tuples of
    /// `numComponents` values, all of which are consumed; a `component` (from 0) that tuples do not have delivers none.
    /// The last argument is not looked at. About a hundred times in a call the host is asked whether to go on.
    ///
    /// Throws IOException (short or undecodable data), bad_lexical_cast and bad_numeric_cast (ascii only) and
    /// InterruptedException. The definition is in loader/streams/readValues.h.
    template <class Dst, class Src>
    void readValues(Dst* dst, std::size_t count, short numComponents, short component, short spare = 0);

    /// Whether an ascii array has nothing but white space left; true for a binary one, whose size its header gives.
    bool isTextExhausted() { return binary_ || text_.atEnd(); }

private:
    template <class Dst, class Src>
    class Run;

    dataio::InputStreamPtr stream_;
    AsciiTokenizer text_;
    bool binary_;
    bool swapBytes_;
};

} // namespace veltra::vtkfile
