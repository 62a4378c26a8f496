#include "krohost/cli/input/pvd.h"

#include "krohost/cli/input/smallFile.h"
#include "krohost/reader/XmlEvents.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace krohost::cli {

namespace {

class PvdReader : private reader::XmlEvents {
public:
    explicit PvdReader(const std::string& path) : file_{"time series", path} {}

    std::vector<SeriesMember> read() {
        file_.read([this](std::span<const char> bytes) { return feed(bytes); });
        if (error_.empty())
            feed({});
        if (!error_.empty())
            file_.failAsMalformed(error_);
        return std::move(members_);
    }

private:
    /// False when nothing further is to be read.
    bool feed(std::span<const char> bytes) {
        constexpr std::int64_t heldBackLimit = 1 << 20; // that the library may keep until a tag or comment ends
        fedCount_ += static_cast<std::int64_t>(bytes.size());
        const bool isSound = parse(bytes, bytes.empty());
        const auto place = static_cast<std::int64_t>(position().byte);
        if (!isSound && !hasFailed_)
            fail(fmt::format("{} at byte {}", error(), place));
        else if (fedCount_ - place > heldBackLimit)
            fail(fmt::format("markup is longer than {} bytes at byte {}", heldBackLimit, place));
        return error_.empty();
    }

    /// The library passes no exceptions.
    void fail(std::string reason) {
        if (!std::exchange(hasFailed_, true)) {
            error_ = std::move(reason);
            stopParser();
        }
    }

    void end(std::string_view) override { --depth_; }

    void start(std::string_view name, const char** attributes) override {
        ++depth_;
        const auto attribute = [attributes](std::string_view wanted) -> const char* {
            for (const char** each = attributes; *each; each += 2)
                if (each[0] == wanted)
                    return each[1];
            return nullptr;
        };
        if (depth_ == 1) {
            const char* type = attribute("type");
            if (name != "VTKFile" || !type || type != std::string_view{"Collection"})
                fail("it is not a VTKFile of the type Collection");
        } else if (depth_ == 2) {
            isInCollection_ = name == "Collection";
        } else if (depth_ == 3 && isInCollection_ && name == "DataSet") {
            add(attribute("file"), attribute("timestep"), attribute("part"));
        }
    }

    void add(const char* file, const char* timestep, const char* part) {
        const std::optional<double> time = timestep ? parseTime(timestep) : std::nullopt;
        if (!file || !*file)
            return fail(fmt::format("its DataSet {} has no file", members_.size() + 1));
        if (timestep && !time)
            return fail(fmt::format("the timestep \"{}\" is not a number", std::string_view{timestep}.substr(0, 80)));
        SeriesMember& member = members_.emplace_back();
        member.file = {file, time};
        std::string_view text = part ? part : "";
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
        std::from_chars(text.data(), text.data() + text.size(), member.part);
    }

    SmallFile file_;
    std::vector<SeriesMember> members_;
    std::int64_t fedCount_ = 0;
    std::size_t depth_ = 0; // of open elements
    bool isInCollection_ = false;
    bool hasFailed_ = false;
    std::string error_;
};

} // namespace

std::vector<SeriesMember> pvdMembers(const std::string& path) {
    return PvdReader{path}.read();
}

} // namespace krohost::cli
