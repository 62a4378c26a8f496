#include "krohost/reader/XmlEvents.h"

#include <expat.h>

#include <algorithm>
#include <new>

namespace krohost::reader {

XmlEvents::XmlEvents(char namespaceEnd)
    : parser_{namespaceEnd == 0 ? XML_ParserCreate(nullptr) : XML_ParserCreateNS(nullptr, namespaceEnd),
              XML_ParserFree} {
    if (!parser_)
        throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const char* name, const char** attributes) {
            static_cast<XmlEvents*>(self)->start(name, attributes);
        },
        [](void* self, const char* name) { static_cast<XmlEvents*>(self)->end(name); });
}

bool XmlEvents::parse(std::span<const char> bytes, bool isLast) {
    return XML_Parse(parser_.get(), bytes.data(), static_cast<int>(bytes.size()), isLast) != XML_STATUS_ERROR;
}

void XmlEvents::stopParser() {
    XML_StopParser(parser_.get(), XML_FALSE);
}

std::string XmlEvents::error() const {
    const XML_Error error = XML_GetErrorCode(parser_.get());
    if (error == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    return XML_ErrorString(error);
}

Position XmlEvents::position() const {
    return {static_cast<std::uint64_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0)),
            XML_GetCurrentLineNumber(parser_.get()), XML_GetCurrentColumnNumber(parser_.get()) + 1};
}

std::uint64_t XmlEvents::tagByteCount() const {
    return static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser_.get()));
}

} // namespace krohost::reader
