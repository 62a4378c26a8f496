// Corners first, then the inner points of edges, of faces and of the cell itself, in the order of the file format (2.1
// and later, for hexahedra).

#include "tests/support/CellKind.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

namespace test {

namespace {

using Point = std::array<double, 3>;
struct Topology {
    std::vector<Point> corners;
    /// Edges, faces and the cell itself, as far as nodes lie inside them, by their corners: both edges of a
    /// quadrilateral in the same direction, and the lower face before the upper one.
    const char* parts;
};

const std::array<Topology, 7> topologies{{
    {{{0, 0, 0}, {1, 0, 0}}, "01"},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, "01 12 20 012"},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, "01 12 32 03 0132"},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, "01 12 20 03 13 23 013 231 032 021"},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
     "01 12 32 03 45 56 76 47 04 15 26 37 0347 1256 0145 3276 0132 4576 01324576"},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}}, ""},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}},
     "01 12 20 34 45 53 03 14 25 012 345 0134 1245 2053 012345"},
}};

Point mix(Point a, double weightOfB, Point b) {
    Point sum{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum[axis] = a[axis] * (1 - weightOfB) + b[axis] * weightOfB;
    return sum;
}

/// Points inside a part: those of a triangle of up to order 4 lie around its centre; the others are layers.
std::vector<Point> inside(const std::vector<Point>& corners, int order) {
    if (corners.size() == 1)
        return corners;
    std::vector<Point> points;
    if (corners.size() == 3) {
        const Point centre = mix(mix(corners[0], 0.5, corners[1]), 1.0 / 3, corners[2]);
        for (const Point& corner : corners)
            points.push_back(mix(centre, order == 3 ? 0 : 0.25, corner));
        points.resize(order < 3 ? 0 : order == 3 ? 1 : 3);
        return points;
    }
    for (int layer = 1; layer < order; ++layer) {
        std::vector<Point> section;
        for (std::size_t low = 0, high = corners.size() / 2; high < corners.size(); ++low, ++high)
            section.push_back(mix(corners[low], static_cast<double>(layer) / order, corners[high]));
        for (const Point& point : inside(section, order))
            points.push_back(point);
    }
    return points;
}

std::vector<Point> lattice(Shape shape, int order) {
    const auto& [corners, parts] = topologies[static_cast<std::size_t>(shape)];
    std::vector<Point> points = corners;
    std::istringstream words(parts);
    for (std::string part; words >> part;) {
        std::vector<Point> partCorners;
        for (const char corner : part)
            partCorners.push_back(corners[static_cast<std::size_t>(corner - '0')]);
        for (const Point& point : inside(partCorners, order))
            points.push_back(point);
    }
    if (shape == Shape::Tetrahedron && order == 4)
        points.push_back({0.25, 0.25, 0.25});
    return points;
}

} // namespace

std::vector<double> cellPoints(int type, int order) {
    std::vector<Point> points = type == 1 ? std::vector<Point>(1) : lattice(cellKind(type).shape, order);
    for (std::size_t corner = 2; corner < points.size() && (type == 8 || type == 11); corner += 4)
        std::swap(points[corner], points[corner + 1]);
    if (type == 13) // the linear wedge alone has its upper triangle first
        std::rotate(points.begin(), points.begin() + 3, points.end());
    std::vector<double> coordinates;
    for (const Point& point : points)
        coordinates.insert(coordinates.end(), point.begin(), point.end());
    return coordinates;
}

} // namespace test
