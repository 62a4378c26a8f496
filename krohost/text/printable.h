#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace krohost {

/// Text from a stranger, made fit to be shown. What a terminal could take for a command, what changes the order of the
/// letters around it, what cannot be seen and what is not UTF-8 is written as `\x1b` (a byte) or `\u202e` (a
/// character); all else stays as it is. The result is valid UTF-8. [any thread]

/// Of one or several lines: line feeds and tabs stay.
std::string printable(std::string_view text);

/// On one line: a line feed becomes `\n` and a tab `\t`. The ASCII characters in `marked` get a backslash.
std::string printableLine(std::string_view text, std::string_view marked = {});

/// A name on one line, where a backslash that would be taken for a part of an escape becomes two, so that no two names
/// become the same.
std::string printableName(std::string_view name);

/// A dialog: a message and often, on a line of its own, "Reason: " with what the message is about. Any further line is
/// indented, because it may begin within a name.
std::string printableDialog(std::string_view text);

/// The same JSON document, with escapes of JSON in the place of such characters. It must be valid UTF-8.
std::string printableJson(std::string_view json);

/// The same text with `_` in the place of each character that XML cannot hold, and of each byte that is no UTF-8.
std::string inXml(std::string_view text);

/// The beginning of a text, with at most so many bytes and cut between characters.
std::string_view beginning(std::string_view text, std::size_t byteLimit);

} // namespace krohost
