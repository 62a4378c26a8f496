#pragma once

#include "krohost/convert/Loss.h"
#include "krohost/convert/Outputs.h"
#include "krohost/host/runtime/Host.h"

#include <filesystem>
#include <string>

namespace krohost::convert {

/// Writes the nodal variables of all zones as a table and, when there are any, those at cells as another one whose name
/// ends in "-cells": a row per node or cell, columns "zone", "node" or "cell" (both from 1) and the variables. A
/// variable that a zone does not supply is left empty. Where tables are replaced and
/// there are none at cells, an older one of these goes too. Says which names had to be changed. Holds the variables of
/// one zone in memory. Throws WriteError and Interrupted.
void writeCsv(Host& host, const std::filesystem::path& path, bool isReplacing, Outputs& outputs, Losses& losses);

/// A name as a cell of a table: in quotes where it needs them, with an apostrophe before what a spreadsheet would run
/// as a formula.
std::string csvText(const std::string& text);

/// Adds a loss for each of the names that csvText changes.
void addCsvRenamings(const std::vector<std::string>& names, Losses& losses);

} // namespace krohost::convert
