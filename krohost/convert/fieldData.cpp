#include "krohost/convert/fieldData.h"

#include "krohost/convert/Loss.h"
#include "krohost/convert/zoneFiles.h"
#include "krohost/reader/decode.h"
#include "krohost/reader/values.h"
#include "krohost/text/letterCase.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace krohost::convert {

namespace {

template <class Value>
std::optional<Value> wholeNumber(const std::string& text) {
    Value value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = result.ec == std::errc{} && result.ptr == text.data() + text.size();
    return isNumber ? std::optional{value} : std::nullopt;
}

/// In the type that such a text has most likely come from.
std::optional<Array> arrayOfText(const std::string& name, const std::string& text) {
    if (text == "-0")
        return singleValue(name, ElementType::Float64, -0.0);
    if (const auto integer = wholeNumber<std::int64_t>(text))
        return singleValue(name, ElementType::Int64, *integer);
    if (const auto large = wholeNumber<std::uint64_t>(text))
        return singleValue(name, ElementType::UInt64, *large);
    if (const auto number = wholeNumber<double>(text))
        return singleValue(name, ElementType::Float64, *number);
    return std::nullopt;
}

using Documents = std::vector<const reader::Document*>;

std::optional<Array> arrayOfFiles(const Documents& documents, const std::string& name, const std::string& text) {
    for (const reader::Document* document : documents)
        for (const reader::Array& array : document->fieldData)
            if (array.name == name)
                if (const auto value = onlyValue(*document, array); value && value->text == text)
                    return Array{name, value->type, 1, 1, [value = *value](const Sink& sink) {
                                     sink(std::span{value.bytes}.first(reader::byteCount(value.type)));
                                 }};
    return std::nullopt;
}

std::vector<Array> fieldData(const Zone& zone, const Documents& documents) {
    std::vector<Array> arrays;
    bool isTimeKept = false, isTimeReplaced = false;
    for (const auto& [name, text] : zone.auxiliaryData) {
        const bool isKept = isFieldOf(zone, name, text);
        if (isTimeName(name)) {
            isTimeKept = isTimeKept || isKept;
            isTimeReplaced = isTimeReplaced || std::isfinite(wholeNumber<double>(text).value_or(NAN));
        }
        std::optional<Array> array = isKept ? arrayOfFiles(documents, name, text) : std::nullopt;
        if (!array && isKept)
            array = arrayOfText(name, text);
        if (array)
            arrays.push_back(std::move(*array));
    }
    if (!isTimeKept && (isTimeReplaced || zone.solutionTime != 0))
        arrays.insert(arrays.begin(), singleValue("TimeValue", ElementType::Float64, zone.solutionTime));
    return arrays;
}

} // namespace

bool isTimeName(const std::string& name) {
    return equalsIgnoringCase(name, "TimeValue") || equalsIgnoringCase(name, "time");
}

std::optional<FieldValue> onlyValue(const reader::Document& document, const reader::Array& array) {
    if (!array.type || array.componentCount != 1u || array.tupleCount != 1)
        return std::nullopt;
    FieldValue only{*array.type, {}, {}, 0};
    reader::ArrayReader reader{document, array, pollInterrupt};
    std::array<std::byte, 16> bytes; // room for a second value
    const std::size_t count = reader.read(std::span{bytes}.first(2 * reader::byteCount(*array.type)));
    if (count != reader::byteCount(*array.type) || !reader.decoded().faults.empty())
        return std::nullopt;
    std::memcpy(only.bytes.data(), bytes.data(), count);
    reader::forEachValue(*array.type, std::span{bytes}.first(count), [&only](auto value) {
        std::array<char, 32> text;
        only.text.assign(text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr);
        only.number = static_cast<double>(value);
    });
    return only;
}

bool isFieldOf(const Zone& zone, const std::string& name, const std::string& text) {
    return name != "Block.name" && (!isTimeName(name) || wholeNumber<double>(text) == zone.solutionTime);
}

std::vector<std::vector<Array>> fieldData(const Dataset& dataset, const std::vector<std::filesystem::path>& inputs) {
    std::vector<std::vector<Array>> arrays;
    const ZoneFiles files = zoneFiles(inputs, dataset.zones.size());
    reader::Document document, collection;
    for (const Zone& zone : dataset.zones) {
        Documents documents;
        if (files.areKnown) {
            const std::size_t index = arrays.size();
            document = reader::readDocument(files.files[index], pollInterrupt);
            if (collection.path != files.collections[index])
                collection = reader::readDocument(files.collections[index], pollInterrupt);
            documents = {&document, &collection};
        }
        arrays.push_back(fieldData(zone, documents));
    }
    return arrays;
}

} // namespace krohost::convert
