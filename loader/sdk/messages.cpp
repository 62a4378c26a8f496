#include "loader/sdk/messages.h"

#include "loader/sdk/format.h"
#include "loader/sdk/utf8.h"

namespace veltra {

namespace {

std::string quoted(std::string_view text) {
    return '"' + excerpt(text, 80) + '"';
}

} // namespace

std::string excerpt(std::string_view text, std::size_t byteLimit) {
    return std::string(utf8Beginning(text, byteLimit)) + (text.size() > byteLimit ? "..." : "");
}

std::string unableToOpen(const std::string& path, const std::string& reason) {
    return "Unable to open \"" + path + "\": " + reason;
}

std::string unableToRead(const std::string& path, const std::string& reason) {
    return "Unable to read \"" + path + "\": " + reason;
}

std::string unexpectedEndOfFile(const std::string& path) {
    return "Unexpected end of file in \"" + path + "\"";
}

std::string foreignBase64Character(std::uint8_t character) {
    const bool isPrintable = character > 0x20 && character < 0x7F;
    const std::string found = isPrintable ? std::string{'"', static_cast<char>(character), '"'}
                                          : (format("byte 0x%02X") % unsigned{character}).str();
    return "Found " + found + " in base64 text where a letter, digit, \"+\", \"/\" or padding with \"=\" is expected";
}

std::string notANumber(std::string_view text, std::string_view kind) {
    return quoted(text) + " is not " + std::string(kind);
}

std::string numberOutOfRange(std::string_view text, const std::string& smallest, const std::string& largest) {
    return quoted(text) + " is not in the range from " + smallest + " to " + largest;
}

} // namespace veltra
