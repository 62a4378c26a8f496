#pragma once

#include "krohost/check/Finding.h"

namespace krohost::check {

/// Finds what a loader of unstructured grids refuses in the tags of a file, and what its members are called that are
/// not there.
void checkDocument(const vtu::Document& document, Findings& findings);

/// Of these, what keeps a piece from continuing the first one.
void checkPiecesAgree(const vtu::Document& document, Findings& findings);

} // namespace krohost::check
