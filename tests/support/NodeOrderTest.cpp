#include "tests/support/CellKind.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <utility>

namespace test {

namespace {

/// The host goes around the lower face, up, and around the upper face; the inner nodes of an edge follow its direction.
const std::map<Shape, const char*> hostEdges{
    {Shape::Line, "0 1"},
    {Shape::Triangle, "0 1  1 2  2 0"},
    {Shape::Quadrilateral, "0 1  1 2  2 3  3 0"},
    {Shape::Tetrahedron, "0 1  1 2  2 0  0 3  1 3  2 3"},
    {Shape::Hexahedron, "0 1  1 2  2 3  3 0  0 4  1 5  2 6  3 7  4 5  5 6  6 7  7 4"},
    {Shape::Prism, "0 1  1 2  2 0  0 3  1 4  2 5  3 4  4 5  5 3"}};

void expectNodesAlongEdges(const CellKind& kind, int order) {
    const std::vector<double> inFile = cellPoints(kind.type, order);
    const std::vector<std::size_t> places = nodeOrder(kind.type, nodeCount(kind.shape, order), {2, 1});
    ASSERT_EQ(inFile.size(), 3 * places.size());
    const auto coordinate = [&](std::size_t node, std::size_t axis) { return inFile[3 * places[node] + axis]; };
    std::istringstream edges(hostEdges.at(kind.shape));
    std::size_t node = nodeCount(kind.shape, 1);
    for (std::size_t from = 0, to = 0; edges >> from >> to;)
        for (int step = 1; step < order; ++step, ++node)
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(coordinate(node, axis) * order,
                            coordinate(from, axis) * (order - step) + coordinate(to, axis) * step, 1e-12)
                    << "type " << kind.type << ", order " << order << ", host node " << node;
}

} // namespace

TEST(NodeOrder, InnerNodesOfEdgesFollowTheHostsEdges) {
    for (const CellKind& kind : acceptedCells)
        for (int order = 2; order <= kind.highestOrder; ++order)
            expectNodesAlongEdges(kind, order);
}

TEST(NodeOrder, PixelsAndVoxelsBecomeQuadrilateralsAndHexahedra) {
    for (const auto& [type, other] : {std::pair{8, 9}, {11, 12}}) {
        const std::vector<double> inFile = cellPoints(type, 1), inHost = cellPoints(other, 1);
        const std::vector<std::size_t> places = nodeOrder(type, inHost.size() / 3, {1, 0});
        for (std::size_t index = 0; index < inHost.size(); ++index)
            EXPECT_EQ(inFile[3 * places[index / 3] + index % 3], inHost[index]) << type;
    }
}

} // namespace test
