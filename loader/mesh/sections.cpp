#include "loader/mesh/sections.h"

#include "loader/mesh/CellReader.h"
#include "loader/mesh/messages.h"

#include "loader/sdk/exceptions.h"

#include <algorithm>

namespace veltra::vtkfile {

namespace {

void addRun(std::vector<Section>& sections, const CellRun& run) {
    std::size_t index = findSection(sections, run.type, run.nodeCount);
    if (index == sections.size()) {
        const auto nodeCount = static_cast<std::uint32_t>(run.nodeCount);
        sections.push_back(
            {run.type, nodeCount, 0, VtkCell::hostShape(run.type), VtkCell::gridOrder(run.type, nodeCount)});
    }
    sections[index].cellCount += run.cellCount;
}

void groupPiece(std::vector<Section>& sections, const FilePtr& file, const Piece& piece) {
    if (piece.numberOfCells == 0)
        return; // its arrays may lack even their headers
    const CellArrays arrays = cellArrays(piece);
    CellReader reader(file, arrays, piece.numberOfCells);
    std::uint32_t runningDimension = VtkCell::noDimension;
    std::vector<CellRun> runs;
    while (reader.nextBlock(runs)) {
        for (const CellRun& run : runs) {
            VtkCell::classify(run.type, runningDimension);
            VtkCell::checkNodeCount(run.type, run.nodeCount);
            addRun(sections, run);
        }
    }
}

/// The host has no section of points: among others, vertices become degenerate cells of the first other shape.
void shapeVertices(std::vector<Section>& sections) {
    const auto isVertices = [](const Section& section) { return section.shape == CellShape_None; };
    const auto vertices = std::find_if(sections.begin(), sections.end(), isVertices);
    const auto others = std::find_if_not(sections.begin(), sections.end(), isVertices);
    if (vertices != sections.end() && others != sections.end())
        vertices->shape = others->shape;
}

} // namespace

std::vector<Section> groupSections(const FilePtr& file, const Zone& zone) {
    std::vector<Section> sections;
    for (const Piece& piece : zone.pieces)
        groupPiece(sections, file, piece);
    if (sections.empty())
        sections.push_back({VtkCell::Type::Vertex, 1, 0, CellShape_None, 1});
    shapeVertices(sections);
    if (sections.size() > Kro_MaxSectionsPerZone)
        throw IOException(tooManySections(sections.size()));
    return sections;
}

std::size_t findSection(const std::vector<Section>& sections, VtkCell::Type type, std::int64_t nodeCount) {
    const auto found = std::find_if(sections.begin(), sections.end(), [&](const Section& section) {
        return section.type == type && section.nodeCount == nodeCount;
    });
    return static_cast<std::size_t>(found - sections.begin());
}

ZoneType_e zoneType(const std::vector<Section>& sections) {
    return sections.size() == 1 ? VtkCell::zoneType(sections.front().type) : ZoneType_Mixed;
}

} // namespace veltra::vtkfile
