#pragma once

struct XML_ParserStruct;

namespace krohost::reader {

/// Has the XML library take "utf8" for UTF-8, and the encodings of one byte for each character that this machine knows.
void takeMoreEncodings(XML_ParserStruct* parser);

} // namespace krohost::reader
