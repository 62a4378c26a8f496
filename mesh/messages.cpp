#include "mesh/messages.h"

#include "streams/messages.h"

#include "host/kro.h"

#include <boost/format.hpp>

#include <limits>

namespace veltra::vtkfile {

std::string unsupportedCellType(std::string_view typeName) {
    return (boost::format("VTK cell type \"%1%\" is not yet supported by the VTK loader") % typeName).str();
}

// Cells are compared within a piece only, although the sentence speaks of the file.
std::string mixedDimensions(std::string_view typeName, std::uint32_t dimension, std::uint32_t previous) {
    return (boost::format("VTK cell type \"%1%\" has a dimensionality of %2% but one or more cells of dimensionality "
                          "%3% have already been discovered in this VTK file. All cell types of a zone must have the "
                          "same dimensionality") %
            typeName % dimension % previous)
        .str();
}

std::string unsupportedNodeCount(std::string_view typeName, std::int64_t nodeCount) {
    return (boost::format("Veltra supports P1 through P4 high-order Lagrange elements. The VTK cell type \"%1%\" has "
                          "%2% nodes and is not yet supported") %
            typeName % nodeCount)
        .str();
}

std::string tooManySections(std::size_t sectionCount) {
    return (boost::format("VTK file specifies %1% unique cell type and grid orders combinations, but Veltra only "
                          "supports a maximum of %2% sections") %
            sectionCount % int{Kro_MaxSectionsPerZone})
        .str();
}

std::string duplicateVariable(const std::string& name) {
    return (boost::format("Invalid variable name list. The variable: \"%1%\" is referenced more than once in the "
                          "PointData or CellData section.\n\nTo load the variables by name you must cancel and remove "
                          "duplicates from the VTK dataset by renaming the duplicate DataArray names") %
            name)
        .str();
}

std::string tooManyComponents(const DataArray& array) {
    return (boost::format("%1% has %2% components, more than the %3% that are supported") % quotedName(array) %
            array.numberOfComponents % std::numeric_limits<short>::max())
        .str();
}

} // namespace veltra::vtkfile
