#pragma once

#include "krohost/convert/Loss.h"

#include <functional>

namespace krohost::convert {

/// Adds the arrays of a file whose compressed data are damaged within the values that are needed. A host gets for these
/// what could be inflated, and zeros. Decodes the compressed arrays that are used; of the pieces' arrays of one
/// variable the first is asked for. Throws Interrupted.
void addDamage(const reader::Document& document, const std::function<bool(const reader::Array&)>& isUsed,
               Losses& losses);

/// The first loss of this kind; null when there is none.
const Loss* firstDamage(const Losses& losses);

} // namespace krohost::convert
