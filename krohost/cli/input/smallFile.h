#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace krohost::cli {

/// Takes what a JSON document holds, value by value. `where` holds the keys from the outside in, with an empty one for
/// an item of a list.
class JsonVisitor {
public:
    using Where = std::vector<std::string>;

    virtual ~JsonVisitor() = default;
    virtual void beginList(const Where& where) = 0;
    virtual void beginObject(const Where& where) = 0;
    virtual void endObject(const Where& where) = 0;
    virtual void text(const Where& where, std::string& value) = 0;
    virtual void number(const Where& where, double value) = 0;
    /// True, false and null.
    virtual void word(const Where& where, bool isNull) = 0;
};

/// A file that krohost itself reads, as opposed to those that it has loaded: from its beginning to its end, a part at a
/// time. Everything throws Failure, also where the user wants to stop; a FIFO is waited for until then.
struct SmallFile {
    std::string kind; ///< "layout", for messages
    std::string path;

    /// Hands on the file's bytes until `use` gives false.
    void read(const std::function<bool(std::span<const char>)>& use) const;
    /// Hands on what the file holds as JSON. Memory is that of the longest text in it.
    void visitJson(JsonVisitor& visitor) const;
    [[noreturn]] void failAsMalformed(const std::string& reason) const;
};

} // namespace krohost::cli
