/// VTK XML files: grids and the collections that name them.
#pragma once

#include "krohost/convert/Encoding.h"
#include "krohost/convert/Grid.h"
#include "krohost/convert/Loss.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace krohost::convert {

/// Adds a loss where XML cannot hold all characters of a zone's name; it is written without these.
void addXmlRenaming(const std::string& name, Losses& losses);

/// Writes a grid as a .vtu file of one piece, array by array. Throws WriteError, FileError and Interrupted.
void writeVtu(const std::filesystem::path& path, const Encoding& encoding, const Grid& grid);

/// A file as a collection names it.
struct CollectionMember {
    std::string file; ///< from the collection's folder
    std::string name;
    std::string block; ///< in a .vtm the name of the enclosing block; empty: none
    double time = 0;   ///< in a .pvd
    std::size_t part = 0;
};

/// Writes a .vtm file: successive members of one block are in that block. Throws FileError.
void writeVtm(const std::filesystem::path& path, const std::vector<CollectionMember>& members);

/// Writes a .pvd file, a time series. Throws FileError.
void writePvd(const std::filesystem::path& path, const std::vector<CollectionMember>& members);

} // namespace krohost::convert
