#include "krohost/cli/input/layout.h"

#include "krohost/cli/input/smallFile.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/cli/terminal/OutputStream.h"
#include "krohost/text/printable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <utility>

namespace krohost::cli {

namespace {

std::string jsonText(const std::string& text) {
    return printableJson(nlohmann::json(text).dump());
}

/// Put together here, because the library ends the process when it has no memory to end the life of a list.
std::string layoutText(const std::string& path, const Instructions& instructions) {
    try {
        std::string list;
        for (const std::string& text : instructions.strings)
            list += (list.empty() ? "\n    " : ",\n    ") + jsonText(text);
        return fmt::format("{{\n  \"loader\": {},\n  \"instructions\": [{}{}]\n}}\n", jsonText(instructions.loaderName),
                           list, list.empty() ? "" : "\n  ");
    } catch (const nlohmann::json::type_error&) {
        throw Failure(fmt::format("The layout \"{}\" cannot be written: a file name is not UTF-8.", path), Exit_Failed);
    }
}

/// Takes what a layout holds, and anything else beside that.
class LayoutVisitor final : public JsonVisitor {
public:
    explicit LayoutVisitor(const SmallFile& file) : file_{file} {}

    void beginList(const Where& where) override { require(where != loader && where != item && !isSecondList(where)); }
    void beginObject(const Where& where) override { require(!isOurs(where)); }
    void endObject(const Where&) override {}
    void text(const Where& where, std::string& value) override {
        require(where != list && (where != loader || !std::exchange(hasLoader_, true)));
        if (where == loader)
            layout_.loaderName = std::move(value);
        else if (where == item)
            layout_.strings.push_back(std::move(value));
    }
    void number(const Where& where, double) override { require(!isOurs(where)); }
    void word(const Where& where, bool) override { require(!isOurs(where)); }

    Instructions take() {
        require(hasLoader_ && hasList_);
        return std::move(layout_);
    }

private:
    inline static const Where loader{"loader"}, list{"instructions"}, item{"instructions", ""};

    static bool isOurs(const Where& where) { return where == loader || where == list || where == item; }
    bool isSecondList(const Where& where) { return where == list && std::exchange(hasList_, true); }
    void require(bool holds) const {
        if (!holds)
            file_.failAsMalformed("it must hold a text \"loader\" and a list of texts \"instructions\"");
    }

    const SmallFile& file_;
    Instructions layout_;
    bool hasLoader_ = false, hasList_ = false;
};

} // namespace

void writeLayout(const std::string& path, const convert::Permission& permission, const Instructions& instructions) {
    const std::string text = layoutText(path, instructions);
    OutputStream stream{path, permission};
    stream.buffer().append(text);
    stream.finish();
}

Instructions readLayout(const std::string& path) {
    const SmallFile file{"layout", path};
    LayoutVisitor visitor{file};
    file.visitJson(visitor);
    return visitor.take();
}

} // namespace krohost::cli
