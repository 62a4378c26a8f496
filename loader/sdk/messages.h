/// The sentences of the host's class libraries that a user reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace veltra {

/// Text from a file as a sentence quotes it, which stays readable where a whole damaged file is one word: with "..."
/// after the limit. Names have a thousand bytes.
std::string excerpt(std::string_view text, std::size_t byteLimit = 1000);

std::string unableToOpen(const std::string& path, const std::string& reason);
std::string unableToRead(const std::string& path, const std::string& reason);
std::string unexpectedEndOfFile(const std::string& path);
std::string foreignBase64Character(std::uint8_t character);

/// `kind` is what the text should have been: "a whole number".
std::string notANumber(std::string_view text, std::string_view kind);
std::string numberOutOfRange(std::string_view text, const std::string& smallest, const std::string& largest);

inline constexpr const char* notARegularFile = "Not a regular file";
inline constexpr const char* unexpectedEndOfData = "Unexpected end of data";
inline constexpr const char* unexpectedEndOfBase64 = "Unexpected end of base64 text";
inline constexpr const char* incompleteBase64Group = "Base64 text ends in the middle of a group of four characters";

} // namespace veltra
