#include "loader/mesh/fieldData.h"

#include "loader/streams/dataArrayReader.h"
#include "loader/streams/elementTypes.h"
#include "loader/streams/heldValueCount.h"
#include "loader/streams/readValues.h"

#include "interface/kro.h"
#include "loader/sdk/exceptions.h"

#include <array>
#include <charconv>
#include <optional>
#include <set>
#include <string_view>
#include <type_traits>

namespace veltra::vtkfile {

namespace {

constexpr std::size_t arraysBetweenPolls = 64;

template <class T>
std::string shortestText(T value) {
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end};
}

template <class T>
std::string readValue(StreamReader& reader) {
    T value{};
    reader.readValues<T, T>(&value, 1, 1, 0);
    return shortestText(value);
}

/// The text of an array's only value; none when it has more or fewer.
std::optional<std::string> singleValue(const FilePtr& file, const DataArray& array) {
    if (announcedValueCount(array) != 1)
        return std::nullopt;
    if (array.format != DataArrayFormat::Ascii && heldValueCount(file, array) != 1)
        return std::nullopt; // before a table of blocks is read, which many arrays may share
    std::uint64_t valueCount = 0;
    const auto reader = openDataArrayReader(file, array, valueCount, DamagedBlock::refused);
    const bool ascii = array.format == DataArrayFormat::Ascii;
    if (ascii ? reader->isTextExhausted() : valueCount != 1)
        return std::nullopt;
    std::string text =
        visitElementType(array.type, [&]<class T>(std::type_identity<T>) { return readValue<T>(*reader); });
    return reader->isTextExhausted() ? std::optional(std::move(text)) : std::nullopt;
}

/// The same; none either when it cannot be read: a remark does not keep the mesh from its user.
std::optional<std::string> readableValue(const FilePtr& file, const DataArray& array) {
    try {
        return singleValue(file, array);
    } catch (const FileAccessException&) {
        throw;
    } catch (const IOException&) {
    } catch (const bad_lexical_cast&) {
    } catch (const bad_numeric_cast&) {
    }
    return std::nullopt;
}

} // namespace

std::vector<NameValuePair> readFieldData(const std::vector<DataArray>& arrays) {
    std::vector<NameValuePair> pairs;
    std::set<std::string_view> names;
    const FilePtr file = arrays.empty() ? nullptr : openFile(arrays.front());
    std::size_t arrayCount = 0;
    for (const DataArray& array : arrays) {
        if (++arrayCount % arraysBetweenPolls == 0 && KroUtilInterruptIsSet())
            throw InterruptedException();
        if (array.name->empty() || names.contains(*array.name))
            continue;
        if (std::optional<std::string> value = readableValue(file, array)) {
            pairs.emplace_back(*array.name, std::move(*value));
            names.insert(*array.name);
        }
    }
    return pairs;
}

} // namespace veltra::vtkfile
