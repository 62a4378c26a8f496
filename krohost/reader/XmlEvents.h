#pragma once

#include "krohost/reader/Document.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

struct XML_ParserStruct;

namespace krohost::reader {

/// Hands the bytes of a document to the XML library and the elements that it finds to who derives from this. One
/// thread at a time.
class XmlEvents {
public:
    virtual ~XmlEvents() = default;
    XmlEvents(const XmlEvents&) = delete;
    XmlEvents& operator=(const XmlEvents&) = delete;

protected:
    /// Where it is known what the names of namespaces mean, this character is between namespace and name.
    explicit XmlEvents(char namespaceEnd = 0);

    /// `attributes` are names and values in turn, with a null at the end.
    virtual void start(std::string_view name, const char** attributes) = 0;
    virtual void end(std::string_view name) = 0;

    /// False where what came so far is no well-formed document, or `stopParser` was called.
    bool parse(std::span<const char> bytes, bool isLast);
    void stopParser();

    /// Why `parse` gave false. Throws std::bad_alloc where memory ran out, which says nothing of the document.
    std::string error() const;
    /// That of the current event.
    Position position() const;
    std::uint64_t tagByteCount() const;

    XML_ParserStruct* parser() const { return parser_.get(); }

private:
    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> parser_;
};

} // namespace krohost::reader
