#include "loader/mesh/messages.h"

#include "interface/kro.h"
#include "loader/sdk/format.h"
#include "loader/sdk/messages.h"

namespace veltra::vtkfile {

std::string unsupportedCellType(std::string_view typeName) {
    return (format("VTK cell type \"%1%\" is not yet supported by the VTK loader") % typeName).str();
}

// Cells are compared within a piece only, although the sentence speaks of the file.
std::string mixedDimensions(std::string_view typeName, std::uint32_t dimension, std::uint32_t previous) {
    return (format("VTK cell type \"%1%\" has a dimensionality of %2% but one or more cells of dimensionality "
                   "%3% have already been discovered in this VTK file. All cell types of a zone must have the "
                   "same dimensionality") %
            typeName % dimension % previous)
        .str();
}

std::string unsupportedNodeCount(std::string_view typeName, std::int64_t nodeCount) {
    return (format("Veltra supports P1 through P4 high-order Lagrange elements. The VTK cell type \"%1%\" has "
                   "%2% nodes and is not yet supported") %
            typeName % nodeCount)
        .str();
}

std::string tooManySections(std::size_t sectionCount) {
    return (format("VTK file specifies %1% unique cell type and grid orders combinations, but Veltra only "
                   "supports a maximum of %2% sections") %
            sectionCount % int{Kro_MaxSectionsPerZone})
        .str();
}

std::string duplicateVariable(const std::string& name) {
    return (format("Invalid variable name list. The variable: \"%1%\" is referenced more than once in the "
                   "PointData or CellData section.\n\nTo load the variables by name you must cancel and remove "
                   "duplicates from the VTK dataset by renaming the duplicate DataArray names") %
            excerpt(name))
        .str();
}

std::string piecesBeyondFile(std::uint64_t byteCount) {
    return (format("The pieces of a zone have more points or cells than the %1% bytes of the file can hold") %
            byteCount)
        .str();
}

std::string tooManyVariables(std::size_t limit) {
    return (format("The arrays of the VTK files have more than %1% components, each of which would be a variable") %
            limit)
        .str();
}

} // namespace veltra::vtkfile
