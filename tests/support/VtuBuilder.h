#pragma once

#include "tests/support/CellKind.h"
#include "tests/support/ExpectedZone.h"
#include "tests/support/Mesh.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/encoding.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace test {

/// Writes a mesh as a file, slowly and plainly, sharing nothing with the code that reads it:
///
///     vtu().piece(hexahedron()).piece(mixed()).appendedRaw().compressed().bigEndian().header64().write(path)
///
/// Without further calls the file is ascii. The second group of calls damages the file on purpose.
class VtuBuilder {
public:
    VtuBuilder& piece(MeshPiece piece) { return add(pieces_, std::move(piece)); }
    /// Adds an array outside the pieces; timeValue adds the usual one, "TimeValue".
    VtuBuilder& fieldData(Array array) { return add(fieldData_, std::move(array)); }
    VtuBuilder& timeValue(double time) { return fieldData(reals("TimeValue", ElementType::Float64, {time})); }

    VtuBuilder& encoding(const Encoding& encoding) { return set(encoding_, encoding); }
    VtuBuilder& base64() { return set(encoding_.format, Format::Base64); }
    VtuBuilder& appendedRaw() { return set(encoding_.format, Format::AppendedRaw); }
    VtuBuilder& appendedBase64() { return set(encoding_.format, Format::AppendedBase64); }
    /// In blocks of so many bytes, the last one shorter where the values do not fill it.
    VtuBuilder& compressed(std::size_t blockByteCount = 32768) {
        return set(encoding_.compressed, true).set(encoding_.blockByteCount, blockByteCount);
    }
    VtuBuilder& bigEndian() { return set(encoding_.bigEndian, true); }
    VtuBuilder& header64() { return set(encoding_.header64, true); }
    VtuBuilder& version(FileVersion version) { return set(version_, version); }

    /// Gives an attribute this text as it is (a new attribute when there is none), or leaves it out. `element` is
    /// an element's name or, for a DataArray, the array's ("Points" for that of the coordinates); all such elements
    /// change.
    VtuBuilder& attribute(const std::string& element, const std::string& name, std::optional<std::string> text) {
        return set(attributes_[{element, name}], std::move(text));
    }
    /// Gives the arrays of that name other values; their tuple count need not fit any more.
    VtuBuilder& values(const std::string& arrayName, std::vector<std::int64_t> values) {
        return set(values_[arrayName], std::move(values));
    }
    /// Replaces a word of the header of the arrays of that name, counted from 0: the byte count, or the block table.
    VtuBuilder& headerWord(const std::string& arrayName, std::size_t position, std::uint64_t word) {
        return set(headerWords_[arrayName][position], word);
    }
    /// Replaces the inline text of the arrays of that name.
    VtuBuilder& inlineText(const std::string& arrayName, std::string text) {
        return set(inlineTexts_[arrayName], std::move(text));
    }
    /// Replaces every occurrence in the markup (all but the appended data).
    VtuBuilder& markup(std::string from, std::string to) { return add(markup_, {std::move(from), std::move(to)}); }

    std::string text() const;
    operator std::string() const { return text(); }
    void write(const std::filesystem::path& path) const { writeFile(path, text()); }
    /// What the host must show of the undamaged file.
    ExpectedZone expected() const { return expectedZone(pieces_, version_); }

private:
    template <class T>
    VtuBuilder& set(T& member, std::type_identity_t<T> value) {
        member = std::move(value);
        return *this;
    }
    template <class T>
    VtuBuilder& add(std::vector<T>& list, std::type_identity_t<T> value) {
        list.push_back(std::move(value));
        return *this;
    }

    std::vector<MeshPiece> pieces_;
    std::vector<Array> fieldData_;
    Encoding encoding_;
    FileVersion version_{1, 0};
    std::map<std::pair<std::string, std::string>, std::optional<std::string>> attributes_;
    std::map<std::string, std::vector<std::int64_t>> values_;
    std::map<std::string, HeaderWords> headerWords_;
    std::map<std::string, std::string> inlineTexts_;
    std::vector<std::pair<std::string, std::string>> markup_;

    friend class VtuText;
};

inline VtuBuilder vtu() {
    return {};
}

} // namespace test
