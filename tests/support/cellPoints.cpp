// Corners first, then the inner points of edges, of faces and of the cell itself, in the order of the file format (2.1
// and later, for hexahedra).

#include "tests/support/CellKind.h"

#include <utility>

namespace test {

namespace {

using Point = std::array<double, 3>;
using Corners = std::vector<std::size_t>;

struct Topology {
    std::vector<Point> corners;
    std::vector<Corners> edges;
    std::vector<Corners> faces;
};

const Topology point{{{0, 0, 0}}, {}, {}};

const std::array<Topology, 7> topologies{{
    {{{0, 0, 0}, {1, 0, 0}}, {{0, 1}}, {}},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1}, {1, 2}, {2, 0}}, {{0, 1, 2}}},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1}, {1, 2}, {3, 2}, {0, 3}}, {{0, 1, 2, 3}}},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
     {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}},
     {{0, 1, 3}, {2, 3, 1}, {0, 3, 2}, {0, 2, 1}}},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
     {{0, 1}, {1, 2}, {3, 2}, {0, 3}, {4, 5}, {5, 6}, {7, 6}, {4, 7}, {0, 4}, {1, 5}, {2, 6}, {3, 7}},
     {{0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}}},
    {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}}, {}, {}},
    {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}},
     {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}},
     {{0, 1, 2}, {3, 4, 5}, {0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}}},
}};

Point mix(Point a, double weightOfB, Point b) {
    Point sum{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum[axis] = a[axis] * (1 - weightOfB) + b[axis] * weightOfB;
    return sum;
}

std::vector<Point> between(Point a, Point b, int order) {
    std::vector<Point> points;
    for (int step = 1; step < order; ++step)
        points.push_back(mix(a, static_cast<double>(step) / order, b));
    return points;
}

/// Points inside a face of up to order 4: those of a triangle lie around its centre, those of a quadrilateral in rows.
std::vector<Point> inside(const std::vector<Point>& face, int order) {
    std::vector<Point> points;
    if (face.size() == 4) {
        const auto left = between(face[0], face[3], order);
        const auto right = between(face[1], face[2], order);
        for (std::size_t row = 0; row < left.size(); ++row)
            for (const Point& inRow : between(left[row], right[row], order))
                points.push_back(inRow);
    } else if (order >= 3) {
        const Point centre = mix(mix(face[0], 0.5, face[1]), 1.0 / 3, face[2]);
        for (const Point& corner : face)
            points.push_back(mix(centre, order == 3 ? 0 : 0.25, corner));
        points.resize(order == 3 ? 1 : 3);
    }
    return points;
}

/// Points inside a cell: layers between its lower and its upper face, or the middle of a tetrahedron of order 4.
std::vector<Point> inside(Shape shape, const std::vector<Point>& corners, int order) {
    std::vector<Point> points;
    if (shape == Shape::Tetrahedron && order == 4)
        points.push_back({0.25, 0.25, 0.25});
    for (int layer = 1; layer < order && (shape == Shape::Hexahedron || shape == Shape::Prism); ++layer) {
        std::vector<Point> face;
        for (std::size_t corner = 0; corner < corners.size() / 2; ++corner)
            face.push_back(
                mix(corners[corner], static_cast<double>(layer) / order, corners[corner + corners.size() / 2]));
        for (const Point& inFace : inside(face, order))
            points.push_back(inFace);
    }
    return points;
}

std::vector<Point> lattice(Shape shape, int order) {
    const Topology& cell = shape == Shape::None ? point : topologies[static_cast<std::size_t>(shape)];
    std::vector<Point> points = cell.corners;
    const auto add = [&](const std::vector<Point>& more) { points.insert(points.end(), more.begin(), more.end()); };
    for (const Corners& edge : cell.edges)
        add(between(cell.corners[edge[0]], cell.corners[edge[1]], order));
    for (const Corners& face : cell.faces) {
        std::vector<Point> corners;
        for (std::size_t corner : face)
            corners.push_back(cell.corners[corner]);
        add(inside(corners, order));
    }
    add(inside(shape, cell.corners, order));
    return points;
}

} // namespace

std::vector<double> cellPoints(int type, int order) {
    const std::vector<Point> points = lattice(cellKind(type).shape, order);
    std::vector<std::size_t> places = nodeOrder(9, points.size(), {});
    if (type == 8 || type == 11) // this order is its own inverse
        places = nodeOrder(type, points.size(), {});
    if (type == 13) // the linear wedge alone has its upper triangle first
        places = {3, 4, 5, 0, 1, 2};
    std::vector<double> coordinates;
    for (std::size_t place : places)
        coordinates.insert(coordinates.end(), points[place].begin(), points[place].end());
    return coordinates;
}

} // namespace test
