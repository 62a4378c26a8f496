// How fast the same bytes can be read and decoded with nothing around it: limits [--stored BYTES] [--variable NAME]
// FILE... prints seconds, summed over the files, which are no collections.

#include "bench/process.h"

#include "host/base64.h"
#include "streams/elementTypes.h"
#include "xml/VtkFileXMLParser.h"

#include <libdeflate.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace {

using namespace veltra::vtkfile;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t blockByteCount = std::size_t{256} * 1024;

/// Memory that no one has touched, so that filling it costs what it costs the host.
struct FreshMemory {
    explicit FreshMemory(std::size_t byteCount)
        : size{std::max<std::size_t>(byteCount, 1)}, memory_{mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)} {
        if (memory_ == MAP_FAILED)
            throw std::bad_alloc();
    }
    FreshMemory(const FreshMemory&) = delete;
    FreshMemory& operator=(const FreshMemory&) = delete;
    ~FreshMemory() { munmap(memory_, size); }

    std::uint8_t* bytes() const { return static_cast<std::uint8_t*>(memory_); }

    const std::size_t size;

private:
    void* memory_;
};

class File {
public:
    explicit File(const std::string& path) : descriptor_{open(path.c_str(), O_RDONLY | O_CLOEXEC)} {
        struct stat status {};
        if (descriptor_ < 0 || fstat(descriptor_, &status) != 0)
            throw std::runtime_error(path + " cannot be opened");
        size_ = static_cast<std::size_t>(status.st_size);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { close(descriptor_); }

    std::size_t size() const { return size_; }

    /// Reads as much of `room` as the file has from `position` on.
    std::size_t read(std::size_t position, std::span<std::uint8_t> room) const {
        std::size_t done = 0;
        while (done < room.size()) {
            const ssize_t count =
                pread(descriptor_, room.data() + done, room.size() - done, static_cast<off_t>(position + done));
            if (count <= 0)
                break;
            done += static_cast<std::size_t>(count);
        }
        return done;
    }

private:
    int descriptor_;
    std::size_t size_ = 0;
};

std::uint64_t word(const std::uint8_t* bytes, const DataArray& array) {
    std::uint64_t value = 0;
    for (std::uint8_t index = 0; index < array.headerSize; ++index)
        value |= std::uint64_t{bytes[index]} << 8 * (array.bigEndian ? array.headerSize - 1 - index : index);
    return value;
}

std::size_t base64Size(std::size_t byteCount) {
    return (byteCount + 2) / 3 * 4;
}

/// What decoders work in. They take turns with it, so that it is in memory already for all but the first.
struct Buffers {
    Bytes text, decoded, scratch;
};

/// Decodes single arrays of one file, and keeps the time of each kind of work apart.
class Decoder {
public:
    Decoder(const std::string& path, Buffers& buffers)
        : file_{path}, text_{buffers.text}, decoded_{buffers.decoded}, scratch_{buffers.scratch} {}
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { libdeflate_free_decompressor(inflater_); }

    /// Bytes of an array's values; of ascii text, which does not tell, the most that it can hold.
    std::size_t byteCount(const DataArray& array) {
        if (array.format == DataArrayFormat::Ascii)
            return (array.length + 1) / 2 * elementByteCount(array.type);
        std::size_t position = array.offset;
        const std::size_t size = array.headerSize;
        const std::uint8_t* header = fetchBytes(array, position, (array.compressed ? 3 : 1) * size).data();
        if (!array.compressed)
            return word(header, array);
        const std::uint64_t blockCount = word(header, array), last = word(header + 2 * size, array);
        return (last == 0 ? blockCount : blockCount - 1) * word(header + size, array) + last;
    }

    /// Decodes all values of an array into `room`.
    void decode(const DataArray& array, std::span<std::uint8_t> room) {
        if (array.format == DataArrayFormat::Ascii)
            return decodeText(array, room);
        if (array.compressed)
            return inflate(array, room);
        const std::size_t headerSize = array.headerSize;
        if (isRaw(array)) {
            file_.read(array.offset + headerSize, room);
            return;
        }
        const auto text = fetch(array.offset, base64Size(headerSize + room.size()));
        decoded_.resize(std::max(decoded_.size(), headerSize + room.size() + 3));
        veltra::dataio::decodeBase64(text, decoded_);
        std::copy_n(decoded_.data() + headerSize, room.size(), room.data());
    }

    /// Decodes an array block by block where that can be, else into memory that was used before.
    void scan(const DataArray& array) {
        std::size_t rest = byteCount(array);
        if (!isRaw(array) || array.compressed) {
            scratch_.resize(std::max(scratch_.size(), rest));
            return decode(array, {scratch_.data(), rest});
        }
        scratch_.resize(std::max(scratch_.size(), blockByteCount));
        for (std::size_t position = array.offset + array.headerSize; rest != 0; position += blockByteCount)
            rest -= file_.read(position, {scratch_.data(), std::min(rest, blockByteCount)});
    }

    double inflateSeconds = 0;
    double numberSeconds = 0;

private:
    static bool isRaw(const DataArray& array) { return array.format == DataArrayFormat::Appended && array.appendedRaw; }

    std::span<const std::uint8_t> fetch(std::size_t position, std::size_t byteCount) {
        text_.resize(std::max(text_.size(), byteCount));
        return {text_.data(), file_.read(position, {text_.data(), byteCount})};
    }

    /// The next bytes of a binary array, of which `position` is moved behind.
    std::span<const std::uint8_t> fetchBytes(const DataArray& array, std::size_t& position, std::size_t byteCount) {
        const std::size_t textSize = isRaw(array) ? byteCount : base64Size(byteCount);
        const auto text = fetch(position, textSize);
        position += textSize;
        if (isRaw(array))
            return text;
        decoded_.resize(std::max(decoded_.size(), byteCount + 3));
        veltra::dataio::decodeBase64(text, decoded_);
        return {decoded_.data(), byteCount};
    }

    void inflate(const DataArray& array, std::span<std::uint8_t> room) {
        std::size_t position = array.offset;
        const std::size_t size = array.headerSize;
        const std::size_t blockCount = word(fetchBytes(array, position, 3 * size).data(), array);
        position = array.offset;
        const auto header = fetchBytes(array, position, (3 + blockCount) * size);
        const std::uint64_t fullByteCount = word(header.data() + size, array);
        std::vector<std::size_t> sizes;
        std::size_t sum = 0;
        for (std::size_t index = 0; index < blockCount; ++index)
            sum += sizes.emplace_back(word(header.data() + (3 + index) * size, array));
        const std::uint8_t* block = fetchBytes(array, position, sum).data();
        const bench::Stopwatch stopwatch;
        for (std::size_t index = 0; index < blockCount; block += sizes[index++]) {
            const auto target = room.subspan(index * fullByteCount);
            std::size_t written = 0;
            if (libdeflate_zlib_decompress(inflater_, block, sizes[index], target.data(),
                                           std::min<std::size_t>(target.size(), fullByteCount),
                                           &written) != LIBDEFLATE_SUCCESS)
                throw std::runtime_error("a block cannot be inflated");
        }
        inflateSeconds += stopwatch.seconds();
    }

    void decodeText(const DataArray& array, std::span<std::uint8_t> room) {
        const auto text = fetch(array.offset, array.length);
        const bench::Stopwatch stopwatch;
        visitElementType(array.type, [&]<class T>(std::type_identity<T>) {
            const auto* at = reinterpret_cast<const char*>(text.data());
            const char* end = at + text.size();
            for (std::size_t index = 0; index + sizeof(T) <= room.size(); index += sizeof(T)) {
                while (at != end && (*at == ' ' || *at == '\n'))
                    ++at;
                if (at == end)
                    break;
                T value{};
                const auto [next, error] = std::from_chars(at, end, value);
                if (error != std::errc())
                    throw std::runtime_error("text is no number");
                at = next;
                std::memcpy(room.data() + index, &value, sizeof value);
            }
        });
        numberSeconds += stopwatch.seconds();
    }

    File file_;
    libdeflate_decompressor* inflater_ = libdeflate_alloc_decompressor();
    Bytes &text_, &decoded_, &scratch_;
};

struct NoProgress final : ParseProgress {
    bool report(const std::string&, std::uint64_t) override { return true; }
};

struct Limits {
    double read = 0, copy = 0, inflate = 0, numbers = 0, registering = 0, variable = 0;
};

Limits least(const Limits& left, const Limits& right) {
    return {std::min(left.read, right.read),
            std::min(left.copy, right.copy),
            std::min(left.inflate, right.inflate),
            std::min(left.numbers, right.numbers),
            std::min(left.registering, right.registering),
            std::min(left.variable, right.variable)};
}

class Measurement {
public:
    Measurement(std::string path, std::string variable) : path_{std::move(path)}, variable_{std::move(variable)} {
        VtkFileXMLParser parser(std::make_shared<boost::filesystem::path>(path_), std::make_unique<NoProgress>());
        parser.parse();
        pieces_ = parser.takePieces();
        forEachArray([&](const DataArray& array) {
            isInline_ = isInline_ || array.format != DataArrayFormat::Appended;
            markupEnd_ = std::max<std::size_t>(markupEnd_, isInline_ ? 0 : array.offset);
        });
        if (!isInline_) // the first array begins where the markup ends, or nearly so
            forEachArray([&](const DataArray& array) { markupEnd_ = std::min<std::size_t>(markupEnd_, array.offset); });
    }

    void add(Limits& limits, Buffers& buffers) {
        limits.read += timed([&] { readWhole(); });
        limits.registering += timed([&] { readMarkup(); });
        Decoder decoder(path_, buffers);
        forEachArray([&](const DataArray& array) {
            const bool describesCells = *array.name == "types" || *array.name == "offsets";
            const double seconds = timed([&] { describesCells ? decoder.scan(array) : decodeFresh(decoder, array); });
            limits.registering += describesCells ? seconds : 0;
            limits.variable += *array.name == variable_ ? seconds : 0;
        });
        limits.inflate += decoder.inflateSeconds;
        limits.numbers += decoder.numberSeconds;
    }

private:
    template <class Work>
    static double timed(const Work& work) {
        const bench::Stopwatch stopwatch;
        work();
        return stopwatch.seconds();
    }

    template <class Visit>
    void forEachArray(const Visit& visit) const {
        for (const Piece& piece : pieces_) {
            visit(piece.points);
            std::for_each(piece.variables.begin(), piece.variables.end(), visit);
            std::for_each(piece.cells.begin(), piece.cells.end(), visit);
        }
    }

    static void decodeFresh(Decoder& decoder, const DataArray& array) {
        const FreshMemory memory(decoder.byteCount(array));
        decoder.decode(array, {memory.bytes(), memory.size});
    }

    void readWhole() {
        const File file(path_);
        for (std::size_t position = 0; position < file.size(); position += buffer_.size())
            file.read(position, buffer_);
    }

    /// Finds every tag: in all of a document with inline data, else in what stands before the data.
    void readMarkup() {
        const File file(path_);
        const std::size_t end = isInline_ ? file.size() : markupEnd_;
        for (std::size_t position = 0; position < end; position += buffer_.size()) {
            const std::size_t count = file.read(position, {buffer_.data(), std::min(buffer_.size(), end - position)});
            const std::uint8_t* blockEnd = buffer_.data() + count;
            for (const std::uint8_t* at = buffer_.data(); (at = findTag(at, blockEnd)) != nullptr; ++at)
                ++tagCount_;
        }
    }

    static const std::uint8_t* findTag(const std::uint8_t* begin, const std::uint8_t* end) {
        return static_cast<const std::uint8_t*>(std::memchr(begin, '<', static_cast<std::size_t>(end - begin)));
    }

    std::string path_, variable_;
    std::vector<Piece> pieces_;
    bool isInline_ = false;
    std::size_t markupEnd_ = 0;
    std::size_t tagCount_ = 0;
    static inline Bytes buffer_ = Bytes(blockByteCount);
};

double copySeconds(std::size_t storedByteCount) {
    const Bytes source(blockByteCount, 1);
    const bench::Stopwatch stopwatch;
    const FreshMemory memory(storedByteCount);
    for (std::size_t begin = 0; begin < storedByteCount; begin += source.size())
        std::memcpy(memory.bytes() + begin, source.data(), std::min(source.size(), storedByteCount - begin));
    const volatile std::uint8_t last = storedByteCount == 0 ? std::uint8_t{} : memory.bytes()[storedByteCount - 1];
    return stopwatch.seconds() + 0 * last;
}

} // namespace

int main(int argumentCount, char** arguments) {
    constexpr int roundCount = 3; // a limit is the best that can be had
    std::size_t storedByteCount = 0;
    std::string variable;
    std::vector<std::string> paths;
    Limits limits;
    try {
        for (int index = 1; index < argumentCount; ++index) {
            const std::string argument = arguments[index];
            if (argument == "--stored" && index + 1 < argumentCount)
                storedByteCount = std::stoull(arguments[++index]);
            else if (argument == "--variable" && index + 1 < argumentCount)
                variable = arguments[++index];
            else
                paths.push_back(argument);
        }
        Buffers buffers;
        for (int round = 0; round < roundCount; ++round) {
            Limits ofRound;
            for (const std::string& path : paths)
                Measurement(path, variable).add(ofRound, buffers);
            ofRound.copy = copySeconds(storedByteCount);
            limits = round == 0 ? ofRound : least(limits, ofRound);
        }
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "limits: %s\n", exception.what());
        return 1;
    }
    std::printf("{\"read_s\": %.6f, \"copy_s\": %.6f, \"inflate_s\": %.6f, \"numbers_s\": %.6f, \"register_s\": %.6f, "
                "\"variable_s\": %.6f}\n",
                limits.read, limits.copy, limits.inflate, limits.numbers, limits.registering, limits.variable);
}
