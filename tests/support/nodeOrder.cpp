// From geometry: what lies at the same place is the same node.

#include "tests/support/CellKind.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <valarray>

namespace test {

namespace {

using Point = std::valarray<double>;
using Points = std::vector<Point>;

/// The host's order of nodes: the corners, then the inner nodes of each edge, of each face and of the cell itself.
///
/// Edges are followed from their first corner to their second. Faces are gone around from their first corner towards
/// their second, then inwards. Prisms and hexahedra are filled by layers, each like the lower face.
struct HostCell {
    const char* corners; // in halves of the unit cell
    const char* parts;   // edges, faces and the cell, as far as nodes lie inside them, by their corners
};

const std::map<Shape, HostCell> hostCells{
    {Shape::None, {"000", ""}},
    {Shape::Line, {"000 200", "01"}},
    {Shape::Triangle, {"000 200 020", "01 12 20 012"}},
    {Shape::Quadrilateral, {"000 200 220 020", "01 12 23 30 0123"}},
    {Shape::Tetrahedron, {"000 200 020 002", "01 12 20 03 13 23 021 013 231 032"}},
    {Shape::Hexahedron,
     {"000 200 220 020 002 202 222 022", "01 12 23 30 04 15 26 37 45 56 67 74 0123 0154 1265 2376 3047 4567 01234567"}},
    {Shape::Pyramid, {"000 200 220 020 112", ""}},
    {Shape::Prism, {"000 200 020 002 202 022", "01 12 20 03 14 25 34 45 53 012 0143 1254 2035 345 012345"}},
};

/// The inner nodes of an edge, a face, a prism or a hexahedron, given by its corners.
Points inside(const Points& corners, int order) {
    const std::size_t count = corners.size();
    const double spacing = 1.0 / order;
    Points points;
    if (count != 3 && count != 4) {
        for (int step = 1; step < order; ++step) {
            Points layer;
            for (std::size_t low = 0, high = count / 2; high < count; ++low, ++high)
                layer.push_back(corners[low] + (corners[high] - corners[low]) * step * spacing);
            std::ranges::copy(count == 2 ? layer : inside(layer, order), std::back_inserter(points));
        }
        return points;
    }
    const int ringOrder = order - (count == 3 ? 3 : 2); // of the smaller face that the inner nodes make
    if (ringOrder < 0)
        return points;
    Points ring;
    for (std::size_t here = 0, last = count - 1; here < count; last = here++) {
        const Point& next = corners[(here + 1) % count];
        ring.push_back(corners[here] + (next + corners[last] - 2.0 * corners[here]) * spacing);
    }
    if (ringOrder == 0)
        return {ring[0]};
    for (std::size_t corner = 0; corner < count; ++corner) {
        points.push_back(ring[corner]);
        std::ranges::copy(inside({ring[corner], ring[(corner + 1) % count]}, ringOrder), std::back_inserter(points));
    }
    std::ranges::copy(inside(ring, ringOrder), std::back_inserter(points));
    return points;
}

Points hostPoints(const CellKind& kind, int order) {
    const HostCell& cell = hostCells.at(kind.shape);
    std::istringstream corners(cell.corners), parts(cell.parts);
    Points points;
    for (std::string word; corners >> word;)
        points.push_back({(word[0] - '0') / 2.0, (word[1] - '0') / 2.0, (word[2] - '0') / 2.0});
    for (std::string word; parts >> word;) {
        Points partCorners;
        for (const char corner : word)
            partCorners.push_back(points.at(static_cast<std::size_t>(corner - '0')));
        std::ranges::copy(inside(partCorners, order), std::back_inserter(points));
    }
    if (kind.shape == Shape::Tetrahedron && order == 4)
        points.push_back({0.25, 0.25, 0.25});
    if (kind.type == 13) // alone has its upper triangle first, in the host as in the file
        std::rotate(points.begin(), points.begin() + 3, points.end());
    return points;
}

Points filePoints(int type, int order, FileVersion version) {
    const std::vector<double> coordinates = cellPoints(type, order);
    Points points;
    for (auto place = coordinates.begin(); place != coordinates.end(); place += 3)
        points.push_back({place[0], place[1], place[2]});
    if (type == 72 && version < FileVersion{2, 1}) { // in which the last two edges were exchanged
        const auto edge = points.begin() + 8 + 10 * (order - 1);
        std::swap_ranges(edge, edge + order - 1, edge + order - 1);
    }
    return points;
}

} // namespace

std::vector<std::size_t> nodeOrder(int type, std::size_t nodes, FileVersion version) {
    const int order = gridOrder(type, nodes);
    const Points inFile = filePoints(type, order, version);
    std::vector<std::size_t> places;
    for (const Point& inHost : hostPoints(cellKind(type), order)) {
        const auto isThere = [&](const Point& point) { return std::abs(point - inHost).max() < 1e-12; };
        const auto found = std::ranges::find_if(inFile, isThere);
        if (found == inFile.end())
            throw std::logic_error("a node of the host is not where one of the file is");
        places.push_back(static_cast<std::size_t>(found - inFile.begin()));
    }
    return places;
}

} // namespace test
