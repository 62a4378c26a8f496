#pragma once

#include "krohost/write/Loss.h"

#include <filesystem>
#include <functional>
#include <vector>

namespace krohost::write {

/// The arrays of these files, and of those that they name, whose compressed data are damaged within the values that are
/// needed. A host gets for these what could be inflated, and zeros. Decodes the compressed arrays that are used; of the
/// pieces' arrays of one variable the first is asked for. Throws Interrupted.
Losses damageLosses(const std::vector<std::filesystem::path>& files,
                    const std::function<bool(const vtu::Array&)>& isUsed);

/// Whether there is one of these.
bool hasDamage(const Losses& losses);

} // namespace krohost::write
