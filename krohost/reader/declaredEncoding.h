#pragma once

#include "krohost/reader/Document.h"

struct XML_ParserStruct;

namespace krohost::reader {

/// Has the XML library take "utf8" for UTF-8, and the encodings of one byte for each character that this machine knows.
void takeMoreEncodings(XML_ParserStruct* parser);

/// Whether a tag has no other characters than those of ASCII, which are the same in all encodings that are read.
bool isAscii(const Element& element);

} // namespace krohost::reader
