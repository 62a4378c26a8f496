#include "loader/sdk/Base64InputStream.h"

#include "loader/sdk/base64.h"
#include "loader/sdk/exceptions.h"
#include "loader/sdk/messages.h"
#include "loader/sdk/readSome.h"

#include <algorithm>

namespace veltra::dataio {

namespace {

// Arrays are often short and lie one after the other: the first block need not reach far beyond the first one's end.
constexpr std::size_t firstBlockByteCount = 0x1000;
constexpr std::size_t blockByteCount = 0x10000;

} // namespace

void Base64InputStream::read(std::uint8_t* dst, std::size_t byteCount) {
    while (byteCount > 0) {
        const std::size_t count = deliver({dst, byteCount});
        if (count == 0)
            throwWhyItStops();
        position_ += count;
        dst += count;
        byteCount -= count;
    }
}

std::int64_t Base64InputStream::available() {
    if (!lookAhead() && isAtTextEnd())
        return 0;
    // Three bytes for four characters; what is no whole group counts as if it were, so that only the end gives 0.
    const auto characterCount = static_cast<std::int64_t>(text().size()) + inner_->available();
    return static_cast<std::int64_t>(aheadEnd_ - aheadBegin_) + characterCount - characterCount / 4;
}

void Base64InputStream::close() {
    textBegin_ = textEnd_ = aheadBegin_ = aheadEnd_ = 0;
    inner_->close();
}

/// Delivers some of the bytes that come next; none only where the text ends or is broken.
std::size_t Base64InputStream::deliver(std::span<std::uint8_t> dst) {
    if (aheadBegin_ == aheadEnd_ && dst.size() >= ahead_.size())
        return decode(dst);
    if (!lookAhead())
        return 0;
    const std::size_t count = std::min(dst.size(), aheadEnd_ - aheadBegin_);
    std::copy_n(ahead_.data() + aheadBegin_, count, dst.data());
    aheadBegin_ += count;
    return count;
}

/// Decodes into `dst`, which has room for a group, some of the bytes that come next in the text.
std::size_t Base64InputStream::decode(std::span<std::uint8_t> dst) {
    for (;;) {
        const Base64Result result = decodeBase64(text(), dst);
        const bool needsText = result.stopIndex == text().size();
        textBegin_ += result.charactersConsumed;
        if (result.bytesProduced > 0 || !needsText || !fetchText())
            return result.bytesProduced;
    }
}

/// Whether a byte follows; it is in `ahead_` then.
bool Base64InputStream::lookAhead() {
    if (aheadBegin_ == aheadEnd_) {
        aheadBegin_ = 0;
        aheadEnd_ = decode(ahead_);
    }
    return aheadBegin_ < aheadEnd_;
}

/// Reads the next block of text after the characters of an incomplete group. False at the end of the stream below.
bool Base64InputStream::fetchText() {
    const auto available = static_cast<std::uint64_t>(inner_->available());
    if (available == 0)
        return false;
    std::array<std::uint8_t, 3> group{};
    const std::span<const std::uint8_t> rest = text();
    const auto kept = std::remove_copy_if(rest.begin(), rest.end(), group.begin(), isBase64Blank) - group.begin();
    if (textCapacity_ < blockByteCount) {
        textCapacity_ = text_ ? blockByteCount : firstBlockByteCount;
        text_ = std::make_unique_for_overwrite<std::uint8_t[]>(textCapacity_);
    }
    textBegin_ = 0;
    textEnd_ = static_cast<std::size_t>(kept);
    std::copy_n(group.begin(), kept, text_.get());
    textEnd_ += readSome(*inner_, text_.get() + textEnd_, std::min<std::uint64_t>(available, textCapacity_ - textEnd_));
    return true;
}

/// Whether the text ends where decoding stopped, instead of breaking off or being broken there.
bool Base64InputStream::isAtTextEnd() {
    const std::span<const std::uint8_t> rest = text();
    const auto next = std::find_if_not(rest.begin(), rest.end(), isBase64Blank);
    textBegin_ += static_cast<std::size_t>(next - rest.begin());
    return next == rest.end() || *next == '<';
}

void Base64InputStream::throwWhyItStops() {
    if (isAtTextEnd())
        throw IOException(unexpectedEndOfBase64);
    const std::size_t stopIndex = decodeBase64(text(), ahead_).stopIndex;
    if (stopIndex == text().size() || text()[stopIndex] == '<')
        throw IOException(incompleteBase64Group);
    throw IOException(foreignBase64Character(text()[stopIndex]));
}

} // namespace veltra::dataio
