#pragma once

#include "krohost/convert/Encoding.h"
#include "krohost/convert/Grid.h"
#include "krohost/convert/OutputFile.h"

namespace krohost::convert {

/// Writes the values of an array as they are between its tags or in the appended data: text, or header words and
/// bytes. Memory is that of a block and the block table. Throws WriteError, also when the array produces another number
/// of values than it says, and Interrupted.
void encodeArray(OutputFile& file, const Encoding& encoding, const Array& array);

} // namespace krohost::convert
