#include "krohost/cli/series.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/smallFile.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <glob.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <tuple>

namespace krohost::cli {

namespace {

struct Member {
    SeriesFile file;
    long long part = 0;
};

std::vector<std::string> matchingFiles(const std::string& pattern) {
    std::vector<std::string> files;
    glob_t matches{};
    if (glob(pattern.c_str(), GLOB_NOSORT, nullptr, &matches) == 0)
        files.assign(matches.gl_pathv, matches.gl_pathv + matches.gl_pathc);
    globfree(&matches);
    std::sort(files.begin(), files.end(), [](const std::string& left, const std::string& right) {
        return strverscmp(left.c_str(), right.c_str()) < 0;
    });
    return files;
}

std::string besides(const std::string& collection, const std::string& member) {
    return (std::filesystem::path{collection}.parent_path() / member).string();
}

std::vector<Member> pvdMembers(const SmallFile& collection) {
    const std::string text = collection.text();
    pugi::xml_document document;
    if (const auto result = document.load_buffer(text.data(), text.size()); !result)
        collection.failAsMalformed(fmt::format("{} at byte {}", result.description(), result.offset));
    const pugi::xml_node root = document.child("VTKFile");
    if (root.attribute("type").value() != std::string_view{"Collection"})
        collection.failAsMalformed("it is not a VTKFile of the type Collection");
    std::vector<Member> members;
    for (const pugi::xml_node node : root.child("Collection").children("DataSet")) {
        const std::string file = node.attribute("file").value();
        const pugi::xml_attribute timestep = node.attribute("timestep");
        const std::optional<double> time = parseTime(timestep.value());
        if (file.empty())
            collection.failAsMalformed(fmt::format("its DataSet {} has no file", members.size() + 1));
        if (timestep && !time)
            collection.failAsMalformed(fmt::format("the timestep \"{}\" is not a number", timestep.value()));
        members.push_back({{besides(collection.path, file), time}, node.attribute("part").as_llong()});
    }
    return members;
}

std::vector<Member> jsonMembers(const SmallFile& collection) {
    const nlohmann::json document = collection.json(3);
    const auto files = document.is_object() ? document.find("files") : document.end();
    if (files == document.end() || !files->is_array())
        collection.failAsMalformed("it has no list \"files\"");
    std::vector<Member> members;
    for (const auto& entry : *files) {
        const nlohmann::json name = entry.is_object() ? entry.value("name", nlohmann::json{}) : nlohmann::json{};
        const nlohmann::json time = entry.is_object() ? entry.value("time", nlohmann::json{}) : nlohmann::json{};
        if (!name.is_string() || name.get_ref<const std::string&>().empty())
            collection.failAsMalformed(fmt::format("its file {} has no name", members.size() + 1));
        if (!time.is_null() && !time.is_number())
            collection.failAsMalformed(fmt::format("the time of its file {} is not a number", members.size() + 1));
        members.push_back({{besides(collection.path, name.get<std::string>()),
                            time.is_null() ? std::nullopt : std::optional{time.get<double>()}}});
    }
    return members;
}

bool hasExtension(const std::string& file, const char* extension) {
    return strcasecmp(std::filesystem::path{file}.extension().c_str(), extension) == 0;
}

std::vector<Member> sortedMembers(const std::string& path, std::vector<Member> (*read)(const SmallFile&)) {
    std::vector<Member> members = read({"time series", path});
    if (members.empty())
        throw Failure(fmt::format("The time series \"{}\" names no files.", path), Exit_Failed);
    std::stable_sort(members.begin(), members.end(), [](const Member& left, const Member& right) {
        return std::tuple{left.file.time.value_or(0), left.part} < std::tuple{right.file.time.value_or(0), right.part};
    });
    return members;
}

} // namespace

std::vector<std::string> expandPatterns(const std::vector<std::string>& names) {
    std::vector<std::string> files;
    for (const std::string& name : names) {
        std::error_code ignored;
        const bool isPattern = name.find_first_of("*?[") != name.npos && !std::filesystem::exists(name, ignored);
        const std::vector<std::string> matches = isPattern ? matchingFiles(name) : std::vector<std::string>{};
        files.insert(files.end(), matches.begin(), matches.end());
        if (matches.empty())
            files.push_back(name);
    }
    return files;
}

std::vector<SeriesFile> expandCollections(const std::vector<std::string>& files) {
    std::vector<SeriesFile> expanded;
    for (const std::string& file : files) {
        std::vector<Member> members{{{file, std::nullopt}}};
        if (hasExtension(file, ".pvd"))
            members = sortedMembers(file, pvdMembers);
        else if (hasExtension(file, ".series"))
            members = sortedMembers(file, jsonMembers);
        std::transform(members.begin(), members.end(), std::back_inserter(expanded),
                       [](Member& member) { return std::move(member.file); });
    }
    return expanded;
}

std::optional<double> parseTime(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    const std::size_t end = text.find_last_not_of(blanks) + 1;
    double time = 0;
    const auto result = std::from_chars(text.data() + begin, text.data() + std::max(begin, end), time);
    const bool isWhole = result.ec == std::errc{} && result.ptr == text.data() + end;
    return isWhole && std::isfinite(time) ? std::optional{time} : std::nullopt;
}

} // namespace krohost::cli
