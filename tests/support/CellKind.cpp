#include "tests/support/CellKind.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace test {

namespace {

enum class Version { Any, Old, New };

struct NodeOrderRow {
    int type;
    std::size_t nodes;
    Version version;
    std::vector<std::size_t> order;
};

const std::vector<NodeOrderRow> nodeOrderRows{
#include "tests/support/nodeOrderRows.inc"
};

/// Pixels and voxels number their corners along x, then y, then z; the host goes around each layer.
std::vector<std::size_t> latticeCorners(std::size_t layers) {
    std::vector<std::size_t> order;
    for (std::size_t z = 0; z < layers; ++z)
        for (auto [x, y] : {std::pair{0u, 0u}, {1u, 0u}, {1u, 1u}, {0u, 1u}})
            order.push_back(x + 2 * y + 4 * z);
    return order;
}

/// On a wedge of order 2, files list the edges of both triangles before the upright ones; the host climbs from the
/// lower triangle along the upright edges to the upper one. Corners come first and faces last in both.
std::vector<std::size_t> wedgeMidpoints() {
    using Edge = std::pair<int, int>;
    const std::vector<Edge> inFile{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
    const std::vector<Edge> inHost{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 4}, {2, 5}, {3, 4}, {4, 5}, {5, 3}};
    std::vector<std::size_t> order(18);
    std::iota(order.begin(), order.end(), 0u);
    for (std::size_t edge = 0; edge < inHost.size(); ++edge)
        order[6 + edge] = 6 + static_cast<std::size_t>(std::ranges::find(inFile, inHost[edge]) - inFile.begin());
    return order;
}

} // namespace

const CellKind& cellKind(int type) {
    const auto* kind = std::ranges::find(acceptedCells, type, &CellKind::type);
    if (kind == acceptedCells.end())
        throw std::out_of_range("not an accepted cell type: " + std::to_string(type));
    return *kind;
}

std::size_t nodeCount(Shape shape, int order) {
    const auto n = static_cast<std::size_t>(order) + 1;
    switch (shape) {
    case Shape::Line:
        return n;
    case Shape::Triangle:
        return n * (n + 1) / 2;
    case Shape::Quadrilateral:
        return n * n;
    case Shape::Tetrahedron:
        return n * (n + 1) * (n + 2) / 6;
    case Shape::Hexahedron:
        return n * n * n;
    case Shape::Pyramid:
        return n * (n + 1) * (2 * n + 1) / 6;
    case Shape::Prism:
        return n * n * (n + 1) / 2;
    case Shape::None:
        break;
    }
    return 1;
}

int gridOrder(int type, std::size_t nodes) {
    const CellKind& kind = cellKind(type);
    for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
        if (nodeCount(kind.shape, order) == nodes)
            return order;
    throw std::out_of_range("cell type " + std::to_string(type) + " cannot have " + std::to_string(nodes) + " nodes");
}

std::vector<std::size_t> nodeOrder(int type, std::size_t nodes, FileVersion version) {
    if (type == 8 || type == 11)
        return latticeCorners(nodes / 4);
    if (nodes == 18 && (type == 32 || type == 73))
        return wedgeMidpoints();
    const bool isNew = version.major > 2 || (version.major == 2 && version.minor >= 1);
    for (const NodeOrderRow& row : nodeOrderRows)
        if (row.type == type && row.nodes == nodes && row.version != (isNew ? Version::Old : Version::New))
            return row.order;
    std::vector<std::size_t> order(nodes);
    std::iota(order.begin(), order.end(), 0u);
    return order;
}

} // namespace test
