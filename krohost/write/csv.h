#pragma once

#include "krohost/Host.h"
#include "krohost/write/Outputs.h"

#include <filesystem>

namespace krohost::write {

/// Writes the nodal variables of all zones as a table and, when there are any, those at cells as another one whose name
/// ends in "-cells": a row per node or cell, columns "zone", "node" or "cell" (both from 1) and the variables. A
/// variable that a zone does not supply is left empty. Holds the variables of one zone in memory. Throws WriteError and
/// Interrupted.
void writeCsv(Host& host, const std::filesystem::path& path, Outputs& outputs);

} // namespace krohost::write
