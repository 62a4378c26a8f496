/// The sentences that a user reads about a mesh that the loader cannot take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace veltra::vtkfile {

std::string unsupportedCellType(std::string_view typeName);
std::string mixedDimensions(std::string_view typeName, std::uint32_t dimension, std::uint32_t previous);
std::string unsupportedNodeCount(std::string_view typeName, std::int64_t nodeCount);
std::string tooManySections(std::size_t sectionCount);
std::string duplicateVariable(const std::string& name);
std::string piecesBeyondFile(std::uint64_t byteCount);
std::string tooManyVariables(std::size_t limit);

inline constexpr const char* badGridVariableCount =
    "A Piece tag within an VTK unstructured grid file must specify either 1, 2 or 3 grid variables";
inline constexpr const char* differentGridVariableCounts =
    "All Piece tags within an VTK unstructured grid file must have the same number of grid variables";
inline constexpr const char* badCellArrays =
    "VTK unstructured connectivity is not correctly specified. Expected to find three named DataArray elements in the "
    "Cells tag with the named DataArray elements: \"connectivity\", \"offsets\" and \"types\"";
// Numbers of components are not compared, although the sentence names them.
inline constexpr const char* inconsistentPieces =
    "All pieces that comprise a single zone must have the same number of DataArray components, and any given DataArray "
    "must have the same type and value location throughout all pieces of the zone";
inline constexpr const char* tooManyNodes =
    "The numbers of points of a zone's pieces add up to more than any file holds";
inline constexpr const char* tooManyCells =
    "The numbers of cells of a zone's pieces add up to more than any file holds";

} // namespace veltra::vtkfile
