/// A VTK XML file as plain records, read without the add-on. Nothing in them has been checked: what a file gets wrong
/// is here as it says it, or as nothing where it is no number or no word of the format.
#pragma once

#include "krohost/reader/ElementType.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace krohost::reader {

/// A place in a file. The byte counts from 0, line and column (in characters) from 1.
struct Position {
    std::uint64_t byte = 0;
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

struct Attribute {
    std::string name;
    std::string value;
};

/// A start tag; `position` is that of its `<`.
struct Element {
    std::string name;
    Position position;
    std::vector<Attribute> attributes;

    /// Null when there is no such attribute.
    const std::string* find(std::string_view attribute) const;
    /// The attribute as a whole number, blanks around it left out; `absent` when it is missing or blank, nothing when
    /// it is no such number. "+5" and "-0" are numbers.
    std::optional<std::uint64_t> number(std::string_view attribute, std::uint64_t absent) const;
    /// `name`, else `Name`; empty when there is neither.
    std::string nameAttribute() const;
};

enum class Association : std::uint8_t { points, cells, pointData, cellData, fieldData };
enum class Format : std::uint8_t { ascii, base64, appended };
enum class Compressor : std::uint8_t { none, zlib, lz4, lzma, unknown };

/// That of the element which holds its arrays.
std::optional<Association> associationNamed(std::string_view element);

/// Those that the attributes name; null: there is no such attribute.
std::optional<Format> formatNamed(const std::string* word);
Compressor compressorNamed(const std::string* word);

/// A DataArray. Its text or bytes are from `begin` to `end` in the file; what is appended goes no further than to the
/// end of the file.
struct Array {
    Element element;
    Association association{};
    std::string name;
    std::optional<ElementType> type;             ///< Float32 when the file says none
    std::optional<Format> format;                ///< ascii when the file says none
    std::optional<std::uint64_t> componentCount; ///< 1 when the file says none
    std::uint64_t tupleCount = 0;                ///< points or cells of the piece; of field data: as declared, else 1
    std::optional<std::uint64_t> declaredTupleCount; ///< NumberOfTuples, which most arrays do not have
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// An Array, which holds texts and is not read.
struct TextArray {
    Element element;
    Association association{};
};

/// What a tag says of an array besides its values and nobody reads, each once: "the role \"Scalars\"" or "the key
/// \"UNITS_LABEL\"".
struct Remark {
    Association association{};
    std::string array;
    std::string what;

    auto operator<=>(const Remark&) const = default;
};

struct Piece {
    Element element;
    std::optional<std::uint64_t> pointCount; ///< 0 when the file says none
    std::optional<std::uint64_t> cellCount;
    std::vector<Array> points; ///< one in a sound file
    std::vector<Array> cells;
    std::vector<Array> pointData;
    std::vector<Array> cellData;

    /// Those of an association other than field data.
    std::vector<Array>& arrays(Association association);
    /// The first of the cells with this name, whatever its case; null when there is none.
    const Array* cellArray(std::string_view name) const;
};

/// A file that a collection names.
struct Member {
    Element element;
    std::string block; ///< the enclosing block's name; empty outside any
    std::string file;  ///< as it is there; empty when the collection names none
    std::filesystem::path path;
};

/// Where reading ended before the document did.
struct Malformation {
    std::string code; ///< a word for programs
    std::string message;
    Position position;
};

struct Document {
    std::filesystem::path path;
    std::uint64_t byteCount = 0;
    Element root; ///< VTKFile; without a name when there is none
    std::string type;
    bool isBigEndian = false;
    std::size_t headerWordByteCount = 4;
    Compressor compressor = Compressor::none;
    std::vector<Piece> pieces;
    std::vector<Array> fieldData;
    std::vector<TextArray> textArrays;
    std::set<Remark> remarks;
    std::vector<Member> members;
    std::vector<Element> strays; ///< DataSet and Block elements of a file that is no multi-block one
    std::optional<Element> appendedData;
    std::optional<std::uint64_t> appendedBegin; ///< after the `_`, where the encoding is known
    bool isAppendedRaw = false;                 ///< else base64
    std::optional<Malformation> malformation;
    bool beginsAsMarkup = false; ///< with a `<`, after white space

    bool isCollection() const { return type == "PUnstructuredGrid" || type == "vtkMultiBlockDataSet"; }
    /// Whether it is, or for all that is known may be, a collection of more than its members here, because reading
    /// ended early.
    bool mayNameMore() const;
    /// Those of the pieces, then those of the field data.
    std::vector<const Array*> arrays() const;
};

/// Tells appended arrays where their data begin, once it is known where all of these do.
void placeAppendedArrays(Document& document);

/// Called again and again during long work; may throw to end it. An empty one is not called.
using Poll = std::function<void()>;

/// Reads the tags of a file up to its appended data. Memory does not grow with inline data. Whatever is wrong with the
/// file, also that it cannot be opened, is in the `malformation`; what was read before it is there. [any thread]
Document readDocument(const std::filesystem::path& path, const Poll& poll = {});

} // namespace krohost::reader
