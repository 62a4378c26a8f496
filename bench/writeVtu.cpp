#include "bench/writeVtu.h"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <span>
#include <string_view>

namespace bench {

namespace {

constexpr std::size_t blockByteCount = 32768;
constexpr int compressionLevel = 5;

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto byte = [&](std::size_t index) {
        return index < bytes.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[index])) : 0U;
    };
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    for (std::size_t index = 0, at = 0; index < bytes.size(); index += 3, at += 4) {
        const std::uint32_t group = byte(index) << 16 | byte(index + 1) << 8 | byte(index + 2);
        const std::size_t digitCount = std::min<std::size_t>(bytes.size() - index, 3) + 1;
        for (std::size_t digit = 0; digit < digitCount; ++digit)
            text[at + digit] = digits[group >> (18 - 6 * digit) & 63];
    }
    return text;
}

template <class T>
std::string asciiText(const Array& array, std::size_t valuesPerLine) {
    std::string text;
    char number[32];
    const auto* values = reinterpret_cast<const T*>(array.bytes.data());
    const std::size_t count = array.bytes.size() / sizeof(T);
    for (std::size_t index = 0; index < count; ++index) {
        text += index % valuesPerLine != 0 ? " " : index == 0 ? "          " : "\n          ";
        text.append(number, std::to_chars(number, number + sizeof number, values[index]).ptr);
    }
    return text;
}

std::string asciiText(const Array& array) {
    switch (array.elementByteCount) {
    case 1:
        return asciiText<std::uint8_t>(array, 20);
    case 4:
        return asciiText<float>(array, 6);
    default:
        return asciiText<std::int64_t>(array, 6);
    }
}

/// Encodes the arrays of one file.
class Encoder {
public:
    Encoder(const Encoding& encoding, bool hasWideHeaders)
        : encoding_{encoding}, wordByteCount_{hasWideHeaders ? 8U : 4U} {}

    /// The array as the file holds it.
    std::string encoded(const Array& array) const {
        if (encoding_.format == Format::ascii)
            return asciiText(array);
        const std::string bytes = inFileOrder(array);
        if (encoding_.isCompressed)
            return compressed(bytes);
        return isText() ? base64(words({bytes.size()}) + bytes) : words({bytes.size()}) + bytes;
    }

private:
    bool isText() const { return encoding_.format != Format::appendedRaw; }

    std::string reversed(std::string bytes, std::size_t elementByteCount) const {
        const auto size = static_cast<std::ptrdiff_t>(elementByteCount);
        if (encoding_.isBigEndian && size > 1)
            for (auto element = bytes.begin(); element != bytes.end(); element += size)
                std::reverse(element, element + size);
        return bytes;
    }

    std::string inFileOrder(const Array& array) const {
        return reversed({array.bytes.begin(), array.bytes.end()}, array.elementByteCount);
    }

    std::string words(const std::vector<std::uint64_t>& values) const {
        std::string bytes;
        for (const std::uint64_t value : values)
            bytes.append(reinterpret_cast<const char*>(&value), wordByteCount_);
        return reversed(std::move(bytes), wordByteCount_);
    }

    std::string compressed(std::string_view bytes) const {
        const std::size_t blockCount = (bytes.size() + blockByteCount - 1) / blockByteCount;
        std::vector<std::uint64_t> header{blockCount, blockByteCount, bytes.size() % blockByteCount};
        std::string blocks, block(compressBound(blockByteCount), '\0');
        for (std::size_t begin = 0; begin < bytes.size(); begin += blockByteCount) {
            const std::string_view source = bytes.substr(begin, blockByteCount);
            uLongf size = block.size();
            compress2(reinterpret_cast<Bytef*>(block.data()), &size, reinterpret_cast<const Bytef*>(source.data()),
                      source.size(), compressionLevel);
            header.push_back(size);
            blocks.append(block, 0, size);
        }
        return isText() ? base64(words(header)) + base64(blocks) : words(header) + blocks;
    }

    const Encoding& encoding_;
    std::size_t wordByteCount_;
};

/// Writes the document; the data of appended arrays are collected and written last.
class Document {
public:
    Document(std::ostream& stream, const Mesh& mesh, const Encoding& encoding)
        : stream_{stream}, mesh_{mesh}, encoding_{encoding}, encoder_{encoding, hasWideHeaders()} {}

    void write() {
        stream_ << "<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\""
                << (encoding_.isBigEndian ? "BigEndian" : "LittleEndian") << "\" header_type=\""
                << (hasWideHeaders() ? "UInt64" : "UInt32") << '"'
                << (encoding_.isCompressed ? " compressor=\"vtkZLibDataCompressor\"" : "")
                << ">\n  <UnstructuredGrid>\n    <Piece NumberOfPoints=\"" << mesh_.pointCount << "\" NumberOfCells=\""
                << mesh_.cellCount << "\">\n";
        writeSection("PointData", mesh_.pointData);
        writeSection("CellData", mesh_.cellData);
        writeSection("Points", {&mesh_.points, 1});
        writeSection("Cells", mesh_.cells);
        stream_ << "    </Piece>\n  </UnstructuredGrid>\n";
        if (isAppended())
            stream_ << "  <AppendedData encoding=\"" << (encoding_.format == Format::appendedRaw ? "raw" : "base64")
                    << "\">\n   _" << appended_ << "\n  </AppendedData>\n";
        stream_ << "</VTKFile>\n";
    }

private:
    bool isAppended() const {
        return encoding_.format == Format::appendedRaw || encoding_.format == Format::appendedBase64;
    }

    bool hasWideHeaders() const {
        const auto isLarge = [](const Array& array) {
            return array.bytes.size() > std::numeric_limits<std::uint32_t>::max();
        };
        return std::any_of(mesh_.cells.begin(), mesh_.cells.end(), isLarge) || isLarge(mesh_.points);
    }

    void writeSection(const char* name, std::span<const Array> arrays) {
        stream_ << "      <" << name << ">\n";
        for (const Array& array : arrays)
            writeArray(array);
        stream_ << "      </" << name << ">\n";
    }

    void writeArray(const Array& array) {
        const std::string data = encoder_.encoded(array);
        stream_ << "        <DataArray type=\"" << array.type << "\" Name=\"" << array.name << '"';
        if (array.componentCount != 1)
            stream_ << " NumberOfComponents=\"" << array.componentCount << '"';
        if (isAppended()) {
            stream_ << " format=\"appended\" offset=\"" << appended_.size() << "\"/>\n";
            appended_ += data;
        } else if (encoding_.format == Format::ascii) {
            stream_ << " format=\"ascii\">\n" << data << "\n        </DataArray>\n";
        } else {
            stream_ << " format=\"binary\">\n          " << data << "\n        </DataArray>\n";
        }
    }

    std::ostream& stream_;
    const Mesh& mesh_;
    const Encoding& encoding_;
    Encoder encoder_;
    std::string appended_;
};

/// Lets `write` fill a file beside `path`, which then gets that name.
template <class Write>
void writeFile(const std::filesystem::path& path, const Write& write) {
    const std::filesystem::path partial = path.string() + ".partial";
    std::ofstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.open(partial, std::ios::binary);
    write(stream);
    stream.close();
    std::filesystem::rename(partial, path);
}

} // namespace

void writeVtu(const std::filesystem::path& path, const Mesh& mesh, const Encoding& encoding) {
    writeFile(path, [&](std::ostream& stream) { Document(stream, mesh, encoding).write(); });
}

void writeText(const std::filesystem::path& path, const std::string& text) {
    writeFile(path, [&](std::ostream& stream) { stream << text; });
}

} // namespace bench
