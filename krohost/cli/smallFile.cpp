#include "krohost/cli/smallFile.h"

#include "krohost/cli/Failure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <array>
#include <fstream>

namespace krohost::cli {

std::string SmallFile::text() const {
    // A parsed document takes up to about fifty times the memory of its text.
    constexpr std::size_t byteLimit = 32 << 20;
    std::ifstream stream{path, std::ios::binary};
    std::string bytes;
    for (std::array<char, 65536> block; stream && bytes.size() <= byteLimit;) {
        stream.read(block.data(), block.size());
        bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (bytes.size() > byteLimit)
        throw Failure(fmt::format("The {} \"{}\" has more than {} bytes.", kind, path, byteLimit), Exit_Failed);
    if (!stream.eof())
        throw Failure(fmt::format("The {} \"{}\" cannot be read.", kind, path), Exit_Failed);
    return bytes;
}

nlohmann::json SmallFile::json(int depth) const {
    using nlohmann::json;
    try {
        return json::parse(text(), [depth](int nesting, json::parse_event_t, json&) { return nesting <= depth; });
    } catch (const json::parse_error& error) {
        failAsMalformed(fmt::format("it is not JSON from byte {} on", error.byte));
    } catch (const json::out_of_range&) {
        failAsMalformed("it holds a number that is too large");
    }
}

void SmallFile::failAsMalformed(const std::string& reason) const {
    throw Failure(fmt::format("The {} \"{}\" is malformed: {}.", kind, path, reason), Exit_Failed);
}

} // namespace krohost::cli
