#pragma once

#include "tests/support/CellKind.h"
#include "tests/support/ExpectedZone.h"
#include "tests/support/Mesh.h"
#include "tests/support/encoding.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
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
    VtuBuilder& piece(MeshPiece piece) {
        return with([&] { pieces_.push_back(std::move(piece)); });
    }
    /// Adds an array outside the pieces; timeValue adds the usual one, "TimeValue".
    VtuBuilder& fieldData(Array array) {
        return with([&] { fieldData_.push_back(std::move(array)); });
    }
    VtuBuilder& timeValue(double time) { return fieldData(reals("TimeValue", ElementType::Float64, {time})); }

    VtuBuilder& encoding(const Encoding& encoding) {
        return with([&] { encoding_ = encoding; });
    }
    VtuBuilder& base64() {
        return with([&] { encoding_.format = Format::Base64; });
    }
    VtuBuilder& appendedRaw() {
        return with([&] { encoding_.format = Format::AppendedRaw; });
    }
    VtuBuilder& appendedBase64() {
        return with([&] { encoding_.format = Format::AppendedBase64; });
    }
    /// In blocks of so many bytes, the last one shorter where the values do not fill it.
    VtuBuilder& compressed(std::size_t blockByteCount = 32768) {
        return with([&] { encoding_.compressed = true, encoding_.blockByteCount = blockByteCount; });
    }
    VtuBuilder& bigEndian() {
        return with([&] { encoding_.bigEndian = true; });
    }
    VtuBuilder& header64() {
        return with([&] { encoding_.header64 = true; });
    }
    VtuBuilder& base64InOneRun() {
        return with([&] { encoding_.inOneRun = true; });
    }
    VtuBuilder& base64InLines(std::size_t length = 76) {
        return with([&] { encoding_.lineLength = length; });
    }
    VtuBuilder& version(FileVersion version) {
        return with([&] { version_ = version; });
    }
    /// Arrays carry `name` in place of `Name`.
    VtuBuilder& lowerCaseNames() {
        return with([&] { nameAttribute_ = "name"; });
    }
    /// Offsets of appended arrays are filled with blanks to eight places, as one common writer does.
    VtuBuilder& paddedOffsets() {
        return with([&] { paddedOffsets_ = true; });
    }

    /// Gives an attribute this text as it stands (a new attribute when there is none), or leaves it out. `element` is
    /// an element's name or, for a DataArray, the array's ("Points" for that of the coordinates); all such elements
    /// change.
    VtuBuilder& attribute(const std::string& element, const std::string& attributeName,
                          std::optional<std::string> text) {
        return with([&] { attributes_[{element, attributeName}] = std::move(text); });
    }
    /// Gives the arrays of that name other values; their tuple count need not fit any more.
    VtuBuilder& values(const std::string& arrayName, std::vector<std::int64_t> values) {
        return with([&] { values_[arrayName] = std::move(values); });
    }
    /// Replaces a word of the header of the arrays of that name, counted from 0: the byte count, or the block table.
    VtuBuilder& headerWord(const std::string& arrayName, std::size_t position, std::uint64_t word) {
        return with([&] { headerWords_[arrayName][position] = word; });
    }
    /// Replaces the inline text of the arrays of that name.
    VtuBuilder& inlineText(const std::string& arrayName, std::string text) {
        return with([&] { inlineTexts_[arrayName] = std::move(text); });
    }
    /// Replaces every occurrence in the markup (all but the appended data).
    VtuBuilder& markup(std::string from, std::string to) {
        return with([&] { markup_.emplace_back(std::move(from), std::move(to)); });
    }

    std::string text() const;
    void write(const std::filesystem::path& path) const;
    /// What the host must show of the undamaged file.
    ExpectedZone expected() const { return expectedZone(pieces_, version_); }

private:
    template <class Change>
    VtuBuilder& with(Change change) {
        change();
        return *this;
    }

    std::vector<MeshPiece> pieces_;
    std::vector<Array> fieldData_;
    Encoding encoding_;
    FileVersion version_;
    std::string nameAttribute_ = "Name";
    bool paddedOffsets_ = false;
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
