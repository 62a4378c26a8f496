#include "tests/support/CellKind.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace test {

const CellKind& cellKind(int type) {
    const auto* kind = std::ranges::find(acceptedCells, type, &CellKind::type);
    return acceptedCells.at(static_cast<std::size_t>(kind - acceptedCells.begin()));
}

std::size_t nodeCount(Shape shape, int order) {
    const auto n = static_cast<std::size_t>(order) + 1;
    const std::array counts{n,
                            n * (n + 1) / 2,
                            n * n,
                            n * (n + 1) * (n + 2) / 6,
                            n * n * n,
                            n * (n + 1) * (2 * n + 1) / 6,
                            n * n * (n + 1) / 2};
    return shape == Shape::None ? 1 : counts.at(static_cast<std::size_t>(shape));
}

int gridOrder(int type, std::size_t nodes) {
    const CellKind& kind = cellKind(type);
    for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
        if (nodeCount(kind.shape, order) == nodes)
            return order;
    throw std::out_of_range("cell type " + std::to_string(type) + " cannot have " + std::to_string(nodes) + " nodes");
}

} // namespace test
