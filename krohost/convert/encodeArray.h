#pragma once

#include "krohost/write/Encoding.h"
#include "krohost/write/Grid.h"
#include "krohost/write/OutputFile.h"

namespace krohost::write {

/// Writes the values of an array as they stand between its tags or in the appended data: text, or header words and
/// bytes. Memory is that of a block and the block table. Throws WriteError, also when the array produces another number
/// of values than it says, and Interrupted.
void encodeArray(OutputFile& file, const Encoding& encoding, const Array& array);

} // namespace krohost::write
