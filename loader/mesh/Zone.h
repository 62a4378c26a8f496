#pragma once

#include "loader/streams/dataArrayReader.h"

#include "loader/xml/FileHeader.h"
#include "loader/xml/Piece.h"

#include <boost/filesystem/path.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace veltra::vtkfile {

/// What one file holds, or one member of a collection: the pieces are joined into one numbering of nodes and cells.
struct Zone {
    std::string name; ///< as the collection calls it; empty when it does not
    std::shared_ptr<const boost::filesystem::path> file;
    FileVersion version;
    std::vector<Piece> pieces;                                      ///< in file order, at least one
    std::vector<std::pair<std::string, std::string>> auxiliaryData; ///< name and value
    std::size_t fileIndex = 0;          ///< of the file, among those of the load, through which the zone was reached
    std::optional<double> solutionTime; ///< as the load's instructions give it
};

/// The pieces' numbers of points and cells, summed up. Throw IOException when there is no such number.
std::uint64_t nodeCount(const Zone& zone);
std::uint64_t cellCount(const Zone& zone);

/// Throws IOException unless the pieces of the zone agree with each other in everything but their sizes: as many grid
/// variables, three arrays of cells, and the same variables.
void checkPieces(const Zone& zone);

/// Throws IOException unless the zone's file can hold as many points as each of its pieces announces, and as many
/// points and cells as all of them together. Arrays that pieces share count as often as they are used.
void checkPoints(const FilePtr& file, const Zone& zone);

/// The components that the points of every piece have: the number of grid variables, 1 to 3, and 0 for a zone without
/// pieces. Throws IOException when a piece has another number than the first.
std::uint16_t gridVariableCount(const Zone& zone);

/// The arrays of a piece's cells.
struct CellArrays {
    DataArray connectivity;
    DataArray offsets;
    DataArray types;
};

/// Tells the arrays of a piece's cells apart by their names, in any letter case. Throws IOException unless there are
/// exactly these three.
CellArrays cellArrays(const Piece& piece);

/// For each variable array of a zone's first piece, the array of `piece` that continues it: the one of the same name
/// and value location, else the first in file order that differs in letter case and continues no other. No array
/// continues two. Throws IOException unless there is one of the same element type for each and no other.
std::vector<const DataArray*> matchVariables(const Piece& first, const Piece& piece);

/// Whether there is nothing of a mesh in the zone. Writers of parallel files leave such members behind.
bool isEmpty(const Zone& zone);

} // namespace veltra::vtkfile
