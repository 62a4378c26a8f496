#pragma once

#include "krohost/check/Finding.h"

namespace krohost::check {

/// Finds what a loader of unstructured grids refuses in the tags of a file, and what its members are called that are
/// not there.
void checkDocument(const reader::Document& document, Findings& findings);

/// Of these, what keeps a piece from continuing the first one.
void checkPiecesAgree(const reader::Document& document, Findings& findings);

/// What of a later piece's arrays is passed over, because the first one's have fewer components.
void checkSurplusComponents(const reader::Document& document, Findings& findings);

/// And pieces that, sharing their arrays, have more points or cells together than the file can inflate to.
void checkPiecesFit(const reader::Document& document, Findings& findings);

} // namespace krohost::check
