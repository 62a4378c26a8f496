#include "krohost/check/documentChecks.h"

#include "krohost/check/arrayChecks.h"
#include "krohost/text/letterCase.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <set>
#include <utility>

namespace krohost::check {

namespace {

using reader::Array;
using reader::Document;
using reader::Element;
using reader::Piece;

enum class Case { respected, ignored };

/// An attribute that is one of a few words.
struct WordRule {
    std::string_view element;
    std::string_view attribute;
    std::string_view code;
    bool isRequired;
    Case letters;
    std::vector<std::string_view> words;
};

const std::array<WordRule, 7> wordRules{
    {{"VTKFile",
      "type",
      "file-type",
      true,
      Case::respected,
      {"UnstructuredGrid", "PUnstructuredGrid", "vtkMultiBlockDataSet"}},
     {"VTKFile", "byte_order", "byte-order", false, Case::ignored, {"LittleEndian", "BigEndian"}},
     {"VTKFile", "compressor", "compressor", false, Case::ignored, {"vtkZLibDataCompressor"}},
     {"VTKFile", "header_type", "header-type", false, Case::ignored, {"UInt32", "UInt64"}},
     {"AppendedData", "encoding", "appended-encoding", true, Case::ignored, {"raw", "base64"}},
     {"DataArray", "format", "array-format", false, Case::respected, {"ascii", "binary", "appended"}},
     {"DataArray",
      "type",
      "array-type",
      false,
      Case::respected,
      {"Int8", "UInt8", "Int16", "UInt16", "Int32", "UInt32", "Int64", "UInt64", "Float32", "Float64"}}}};

/// An attribute that is a whole number.
struct NumberRule {
    std::string_view element;
    std::string_view attribute;
    std::uint64_t largest;
};

constexpr std::uint64_t anyNumber = std::numeric_limits<std::uint64_t>::max();
constexpr std::array<NumberRule, 4> numberRules{{{"Piece", "NumberOfPoints", anyNumber},
                                                 {"Piece", "NumberOfCells", anyNumber},
                                                 {"DataArray", "NumberOfComponents", 32767},
                                                 {"DataArray", "offset", anyNumber}}};

/// A hostile file may have a value as long as a tag.
std::string quoted(const std::string& value) {
    constexpr std::size_t lengthLimit = 80;
    return fmt::format("\"{}{}\"", beginning(value, lengthLimit), value.size() > lengthLimit ? "..." : "");
}

/// An element whose attributes are looked at, and what it means when they are wrong.
struct Checked {
    const Element& element;
    Severity severity = Severity::error;
};

void checkWord(const WordRule& rule, const Checked& checked, Findings& findings) {
    const Element& element = checked.element;
    const std::string* value = element.find(rule.attribute);
    if (!value && !rule.isRequired)
        return;
    const auto fits = [&](std::string_view word) {
        return rule.letters == Case::ignored ? equalsIgnoringCase(*value, word) : *value == word;
    };
    if (value && std::any_of(rule.words.begin(), rule.words.end(), fits))
        return;
    const std::string found =
        value ? fmt::format("the {} {} of {} is not read", rule.attribute, quoted(*value), rule.element)
              : fmt::format("{} has no {}", rule.element, rule.attribute);
    findings.add(checked.severity, rule.code, element.position,
                 fmt::format("{} (accepted: \"{}\"{})", found, fmt::join(rule.words, "\", \""),
                             rule.isRequired ? "" : ", or no such attribute"));
}

void checkNumber(const NumberRule& rule, const Checked& checked, Findings& findings) {
    const Element& element = checked.element;
    const auto number = element.number(rule.attribute, 0);
    if (!number || *number > rule.largest)
        findings.add(checked.severity, "number", element.position,
                     fmt::format("the {} {} of {} is not read (accepted: a whole number from 0 to {})", rule.attribute,
                                 quoted(*element.find(rule.attribute)), rule.element, rule.largest));
}

void checkAttributes(const Document& document, Findings& findings) {
    std::vector<Checked> all;
    if (!document.root.name.empty())
        all.push_back({document.root});
    if (document.appendedData)
        all.push_back({*document.appendedData});
    for (const Piece& piece : document.pieces)
        all.push_back({piece.element});
    for (const Array* array : document.arrays())
        all.push_back({array->element, severityFor(*array)});
    for (const Checked& checked : all) {
        for (const WordRule& rule : wordRules)
            if (rule.element == checked.element.name)
                checkWord(rule, checked, findings);
        for (const NumberRule& rule : numberRules)
            if (rule.element == checked.element.name)
                checkNumber(rule, checked, findings);
    }
}

void checkMalformation(const Document& document, Findings& findings) {
    if (const auto& malformation = document.malformation)
        findings.error(malformation->code, malformation->position, malformation->message);
    else if (document.root.name.empty())
        findings.error("file-type", {}, "the document is no VTK XML file (accepted: a VTKFile element)");
}

/// One to three parts of digits between points; what is after a third point is not looked at.
bool isVersion(std::string_view text) {
    if (text.find_first_not_of("0123456789.") != text.npos)
        return false;
    for (int part = 0; part < 3; ++part) {
        const std::size_t end = std::min(text.find('.'), text.size());
        int number = 0;
        if (std::from_chars(text.data(), text.data() + end, number).ec != std::errc{})
            return false;
        if (end == text.size())
            return true;
        text.remove_prefix(end + 1);
    }
    return true;
}

void checkVersion(const Document& document, Findings& findings) {
    const std::string* version = document.root.find("version");
    if (version && !isVersion(*version))
        findings.error("version", document.root.position,
                       fmt::format("the version {} is not read (accepted: numbers as in \"1.0\" or \"2.2.0\", or no "
                                   "such attribute)",
                                   quoted(*version)));
}

void checkPieceCount(const Document& document, Findings& findings) {
    const auto isEmpty = [](const Piece& piece) { return piece.pointCount == 0 && piece.cellCount == 0; };
    if (document.isCollection() && document.members.empty())
        findings.error("no-data", document.root.position, "the collection names no files");
    else if (!document.isCollection() && std::all_of(document.pieces.begin(), document.pieces.end(), isEmpty))
        findings.error("no-data", document.root.position,
                       document.pieces.empty() ? "the file has no Piece" : "the file's pieces have no points or cells");
}

void checkPoints(const Document& document, Findings& findings) {
    constexpr const char* accepted = "(accepted: 1, 2 or 3 in all pieces)";
    std::optional<std::uint64_t> first;
    for (const Piece& piece : document.pieces) {
        if (piece.points.size() != 1) {
            findings.error("points", piece.points.empty() ? piece.element.position : piece.points[1].element.position,
                           fmt::format("a Piece has {} arrays of points (accepted: one)", piece.points.size()));
            continue;
        }
        const auto& [position, count] =
            std::pair{piece.points.front().element.position, piece.points.front().componentCount.value_or(0)};
        if (count < 1 || count > 3)
            findings.error("points", position, fmt::format("points have {} coordinates {}", count, accepted));
        else if (first.value_or(count) != count)
            findings.error(
                "points", position,
                fmt::format("points have {} coordinates, those of the first piece {} {}", count, *first, accepted));
        first = first.value_or(count);
    }
}

/// The host counts in signed 64 bits.
void checkTotals(const Document& document, Findings& findings) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    std::uint64_t pointCount = 0, cellCount = 0;
    const Piece* firstWithCells = nullptr;
    bool areNumbers = true;
    for (const Piece& piece : document.pieces) {
        const std::uint64_t points = piece.pointCount.value_or(0), cells = piece.cellCount.value_or(0);
        if (points > most - pointCount || cells > most - cellCount)
            return findings.error("number", piece.element.position,
                                  fmt::format("the pieces have more than {} {} together, more than any file holds",
                                              most, points > most - pointCount ? "points" : "cells"));
        pointCount += points;
        cellCount += cells;
        areNumbers = areNumbers && piece.pointCount && piece.cellCount;
        if (!firstWithCells && cells > 0)
            firstWithCells = &piece;
    }
    if (areNumbers && pointCount == 0 && firstWithCells)
        findings.error("points", firstWithCells->element.position, "the file has cells but no points");
}

void checkCellArrays(const Document& document, Findings& findings) {
    for (const Piece& piece : document.pieces) {
        const auto count = [&piece](std::string_view name) {
            return std::count_if(piece.cells.begin(), piece.cells.end(),
                                 [name](const Array& array) { return equalsIgnoringCase(array.name, name); });
        };
        if (piece.cells.size() != 3 || count("connectivity") != 1 || count("offsets") != 1 || count("types") != 1) {
            std::vector<std::string> names;
            for (std::size_t index = 0; index < std::min<std::size_t>(piece.cells.size(), 10); ++index)
                names.push_back(quoted(piece.cells[index].name));
            findings.error("cell-arrays", piece.element.position,
                           fmt::format("the cells of a Piece have {} arrays: {} (accepted: \"connectivity\", "
                                       "\"offsets\" and \"types\", each once)",
                                       piece.cells.size(), fmt::join(names, ", ")));
        }
        for (const Array& array : piece.cells)
            if (piece.cellCount != 0 && array.type && reader::isFloatingPoint(*array.type))
                findings.error("cell-arrays", array.element.position,
                               fmt::format("{} of the cells is of type {} (accepted: whole numbers)", nameInText(array),
                                           reader::elementTypeName(*array.type)));
    }
}

void checkVariables(const Document& document, Findings& findings) {
    constexpr std::uint64_t variableLimit = 100000;
    if (document.pieces.empty())
        return;
    const Piece& piece = document.pieces.front();
    std::uint64_t variableCount = 0;
    for (const auto* arrays : {&piece.pointData, &piece.cellData}) {
        std::set<std::string> names;
        if (arrays == &piece.pointData && !piece.points.empty())
            for (std::string& axis : reader::variableNames(piece.points.front()))
                names.insert(std::move(axis));
        for (const Array& array : *arrays) {
            variableCount += std::min(array.componentCount.value_or(0), variableLimit + 1);
            if (variableCount > variableLimit)
                return findings.error("too-many-variables", array.element.position,
                                      fmt::format("the arrays have more than {} components", variableLimit));
            for (const std::string& name : reader::variableNames(array))
                if (!names.insert(name).second)
                    findings.error("duplicate-variable", array.element.position,
                                   fmt::format("{} gives a second variable {} (accepted: one of each name)",
                                               nameInText(array), quoted(name)));
        }
    }
}

void checkCollection(const Document& document, Findings& findings) {
    for (const Element& stray : document.strays)
        findings.error("stray-element", stray.position,
                       fmt::format("{} in a file of another type (accepted: in one of type \"vtkMultiBlockDataSet\")",
                                   stray.name));
    for (const reader::Member& member : document.members) {
        const bool isDataSet = member.element.name == "DataSet";
        const char* attribute = isDataSet ? "file" : "Source";
        std::error_code ignored;
        if (!member.element.find(attribute))
            findings.error(
                "member-without-file", member.element.position,
                fmt::format("{} names no file (accepted: the attribute {})", member.element.name, attribute));
        else if (!std::filesystem::is_regular_file(member.path, ignored))
            findings.error("missing-member", member.element.position,
                           fmt::format("there is no file \"{}\"", member.path.string()));
    }
}

struct Check {
    void (*run)(const Document&, Findings&);
    bool needsGrid; ///< makes sense for a whole grid only
};

constexpr std::array<Check, 12> checks{{{checkMalformation, false},
                                        {checkAttributes, false},
                                        {checkVersion, false},
                                        {checkCollection, false},
                                        {checkPieceCount, true},
                                        {checkPoints, true},
                                        {checkTotals, true},
                                        {checkCellArrays, true},
                                        {checkVariables, true},
                                        {checkPiecesAgree, true},
                                        {checkSurplusComponents, true},
                                        {checkPiecesFit, true}}};

} // namespace

void checkDocument(const Document& document, Findings& findings) {
    const bool isGrid = !document.malformation && (document.isCollection() || document.type == "UnstructuredGrid");
    for (const Check& check : checks)
        if (isGrid || !check.needsGrid)
            check.run(document, findings);
}

} // namespace krohost::check
