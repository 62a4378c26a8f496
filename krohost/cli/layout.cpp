#include "krohost/cli/layout.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/smallFile.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace krohost::cli {

namespace {

std::string layoutText(const std::string& path, const Instructions& instructions) {
    try {
        const nlohmann::ordered_json document{{"loader", instructions.loaderName},
                                              {"instructions", instructions.strings}};
        return printableJson(document.dump(2)) + '\n';
    } catch (const nlohmann::json::type_error&) {
        throw Failure(fmt::format("The layout \"{}\" cannot be written: a file name is not UTF-8.", path), Exit_Failed);
    }
}

} // namespace

void writeLayout(const std::string& path, const Instructions& instructions) {
    const std::string text = layoutText(path, instructions);
    std::ofstream stream{path, std::ios::binary};
    if (!(stream << text << std::flush))
        throw Failure(fmt::format("The layout \"{}\" cannot be written: {}.", path, std::strerror(errno)), Exit_Failed);
}

Instructions readLayout(const std::string& path) {
    const SmallFile file{"layout", path};
    const nlohmann::json document = file.json(2);
    try {
        return {document.at("loader").get<std::string>(), document.at("instructions").get<std::vector<std::string>>()};
    } catch (const nlohmann::json::exception&) {
        file.failAsMalformed("it must hold a text \"loader\" and a list of texts \"instructions\"");
    }
}

} // namespace krohost::cli
