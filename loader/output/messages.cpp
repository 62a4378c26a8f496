#include "loader/output/messages.h"

#include "loader/sdk/format.h"
#include "loader/sdk/messages.h"

#include "loader/streams/messages.h"

namespace veltra::vtkfile {

std::string valueCountNotAllotted(const DataArray& array, std::uint64_t valueCount, std::uint64_t roomCount) {
    return (format("%1% gives %2% values but the zone takes %3%") % quotedName(array) % valueCount % roomCount).str();
}

std::string missingComponent(const DataArray& array, std::uint16_t component) {
    return (format("%1% has %2% components in one piece and at least %3% in another") % quotedName(array) %
            array.numberOfComponents % (component + 1))
        .str();
}

std::string nodesNotAllotted(std::size_t sectionIndex, std::uint64_t roomCount) {
    return (format("The cells of section %1% do not fill the %2% nodes that the zone has for them; load the file "
                   "again") %
            (sectionIndex + 1) % roomCount)
        .str();
}

std::string cellsWithoutPoints(const std::string& zoneName) {
    return (format("Zone \"%1%\" has cells but no points") % excerpt(zoneName)).str();
}

std::string valuesOfOtherVertices(const std::string& zoneName, std::uint64_t cellCount, std::uint64_t pointCount) {
    return (format(
                "Zone \"%1%\" has values at %2% cells, all of them vertices, but %3% points; such a zone has as many "
                "values at cells as points") %
            excerpt(zoneName) % cellCount % pointCount)
        .str();
}

} // namespace veltra::vtkfile
