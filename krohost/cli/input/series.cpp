#include "krohost/cli/input/series.h"

#include "krohost/cli/input/pvd.h"
#include "krohost/cli/input/smallFile.h"
#include "krohost/cli/terminal/Failure.h"

#include <fmt/format.h>

#include <glob.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <tuple>
#include <utility>

namespace krohost::cli {

namespace {

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

/// What a series in JSON holds: `{"files": [{"name": TEXT, "time": NUMBER}, ...]}`, and anything else beside that.
class SeriesVisitor final : public JsonVisitor {
public:
    explicit SeriesVisitor(const SmallFile& file) : file_{file} {}

    void beginList(const Where& where) override {
        if (where == Where{"files"} && std::exchange(hasList_, true))
            file_.failAsMalformed("it has two lists \"files\"");
        refuse(where);
    }
    void beginObject(const Where& where) override {
        if (isItem(where))
            members_.emplace_back();
        else
            refuse(where);
    }
    void endObject(const Where& where) override {
        if (isItem(where) && members_.back().file.path.empty())
            failAsNameless(members_.size());
    }
    void text(const Where& where, std::string& value) override {
        if (isField(where, "name"))
            set(members_.back().file.path, std::move(value), "names");
        else
            refuse(where);
    }
    void number(const Where& where, double value) override {
        if (isField(where, "time"))
            set(members_.back().file.time, std::optional{value}, "times");
        else
            refuse(where);
    }
    void word(const Where& where, bool isNull) override {
        if (!isNull || !isField(where, "time"))
            refuse(where);
    }

    std::vector<SeriesMember> take() {
        if (!hasList_)
            file_.failAsMalformed("it has no list \"files\"");
        return std::move(members_);
    }

private:
    static bool isItem(const Where& where) { return where.size() == 2 && where[0] == "files" && where[1].empty(); }
    static bool isField(const Where& where, const char* name) {
        return where.size() == 3 && where[0] == "files" && where[1].empty() && where[2] == name;
    }

    /// What is no value for such a place.
    void refuse(const Where& where) const {
        if (isField(where, "time"))
            file_.failAsMalformed(fmt::format("the time of its file {} is not a number", members_.size()));
        if (isField(where, "name") || isItem(where))
            failAsNameless(members_.size() + (isItem(where) ? 1 : 0));
    }
    [[noreturn]] void failAsNameless(std::size_t number) const {
        file_.failAsMalformed(fmt::format("its file {} has no name", number));
    }

    template <class Field>
    void set(Field& field, Field value, const char* what) const {
        if (field != Field{})
            file_.failAsMalformed(fmt::format("its file {} has two {}", members_.size(), what));
        field = std::move(value);
    }

    const SmallFile& file_;
    std::vector<SeriesMember> members_;
    bool hasList_ = false;
};

std::vector<SeriesMember> jsonMembers(const std::string& path) {
    const SmallFile file{"time series", path};
    SeriesVisitor visitor{file};
    file.visitJson(visitor);
    return visitor.take();
}

bool hasExtension(const std::string& file, const char* extension) {
    return strcasecmp(std::filesystem::path{file}.extension().c_str(), extension) == 0;
}

/// The files of a series, found from its folder, by their times and parts.
std::vector<SeriesFile> sortedFiles(const std::string& path, std::vector<SeriesMember> members) {
    if (members.empty())
        throw Failure(fmt::format("The time series \"{}\" names no files.", path), Exit_Failed);
    std::stable_sort(members.begin(), members.end(), [](const SeriesMember& left, const SeriesMember& right) {
        return std::tuple{left.file.time.value_or(0), left.part} < std::tuple{right.file.time.value_or(0), right.part};
    });
    const std::filesystem::path folder = std::filesystem::path{path}.parent_path();
    std::vector<SeriesFile> files;
    files.reserve(members.size());
    for (SeriesMember& member : members)
        files.push_back({(folder / member.file.path).string(), member.file.time});
    return files;
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
        std::vector<SeriesFile> members{{file, std::nullopt}};
        if (hasExtension(file, ".pvd"))
            members = sortedFiles(file, pvdMembers(file));
        else if (hasExtension(file, ".series"))
            members = sortedFiles(file, jsonMembers(file));
        std::move(members.begin(), members.end(), std::back_inserter(expanded));
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
