// Any bytes as a name, in each form that a name takes on its way to a terminal or into a document. JSON's own writer,
// with everything that is not ASCII escaped, tells what characters there are. The first byte is a length.

#include "fuzz/fuzz.h"

#include "krohost/cli/terminal/Table.h"
#include "krohost/host/line/Journal.h"
#include "krohost/text/printable.h"
#include "krohost/text/quoted.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <sstream>
#include <vector>

namespace {

using nlohmann::json;

/// UTF-16 code units; none for a text that is not UTF-8.
std::optional<std::vector<unsigned>> codeUnits(std::string_view text) {
    std::vector<unsigned> units;
    std::string escaped;
    try {
        escaped = json(text).dump(-1, ' ', true);
    } catch (const json::type_error&) {
        return std::nullopt;
    }
    constexpr std::string_view letters = "bfnrt", meanings = "\b\f\n\r\t";
    for (std::size_t at = 1; at + 1 < escaped.size(); ++at) {
        if (escaped[at] != '\\') {
            units.push_back(static_cast<unsigned char>(escaped[at]));
        } else if (escaped[++at] == 'u') {
            units.push_back(static_cast<unsigned>(std::stoul(escaped.substr(at + 1, 4), nullptr, 16)));
            at += 4;
        } else {
            const std::size_t letter = letters.find(escaped[at]);
            units.push_back(static_cast<unsigned char>(letter == letters.npos ? escaped[at] : meanings[letter]));
        }
    }
    return units;
}

bool isHarmless(std::string_view text, std::string_view allowed) {
    const auto units = codeUnits(text);
    const auto isIn = [](unsigned unit, unsigned first, unsigned last) { return first <= unit && unit <= last; };
    return units && std::ranges::none_of(*units, [&](unsigned unit) {
               if (unit < 0x80 && allowed.find(static_cast<char>(unit)) != allowed.npos)
                   return false;
               return unit < 0x20 || isIn(unit, 0x7F, 0x9F) || unit == 0x61C || isIn(unit, 0x200B, 0x200F) ||
                      isIn(unit, 0x2028, 0x202E) || isIn(unit, 0x2060, 0x206F) || unit == 0xFEFF;
           });
}

void checkLines(std::string_view text) {
    const std::string line = krohost::printableLine(text), lines = krohost::printable(text);
    fuzz::require(isHarmless(line, "") && isHarmless(krohost::quoted(text), ""), "a text is one harmless line");
    fuzz::require(isHarmless(lines, "\n\t"), "lines are harmless");
    fuzz::require(krohost::printableLine(line) == line && krohost::printable(lines) == lines,
                  "harmless text stays as it is");
    const std::string name = krohost::printableName(text);
    fuzz::require(isHarmless(name, "") && krohost::printableLine(name) == name, "a name is one harmless line");
    const std::string dialog = krohost::printableDialog(text);
    fuzz::require(isHarmless(dialog, "\n"), "a dialog is harmless");
    std::istringstream paragraph{dialog};
    std::string later;
    std::getline(paragraph, later);
    int reasonCount = later.starts_with("Reason: ") ? 1 : 0;
    while (std::getline(paragraph, later))
        fuzz::require(later.empty() || later.starts_with("  ") || (later.starts_with("Reason: ") && ++reasonCount == 1),
                      "no name begins a line");
}

void checkDocuments(std::string_view text) {
    const std::string document = json(text).dump(-1, ' ', false, json::error_handler_t::replace);
    const std::string shown = krohost::printableJson(document);
    fuzz::require(isHarmless(shown, ""), "a document is harmless");
    fuzz::require(json::parse(shown) == json::parse(document), "a document says the same");
    krohost::cli::Table table{{{"Name", krohost::cli::Align::left}}};
    table.addRow({std::string(text)});
    const std::string rows = table.text(krohost::cli::Style{false});
    fuzz::require(isHarmless(rows, "\n") && std::ranges::count(rows, '\n') == 2, "a row is one line");
}

} // namespace

std::string fuzz::outcome(Bytes input) {
    const std::size_t limit = input.empty() ? 0 : input[0];
    const std::string_view text = asText(input), begun = krohost::beginning(text, limit);
    checkLines(text);
    checkDocuments(text);
    const bool isUtf8 = codeUnits(text).has_value();
    require(text.starts_with(begun) && begun.size() <= limit, "a beginning is short");
    require(begun.size() + 4 > std::min(limit, text.size()), "a beginning is not shorter than it has to be");
    require(!isUtf8 || codeUnits(begun), "a text is cut between characters");
    return !isUtf8 ? "not UTF-8" : krohost::printableLine(text) == text ? "left as it is" : "escaped";
}
