#include "tests/support/Mesh.h"

#include <type_traits>

namespace test {

Array variedValues(const std::string& name, ElementType type, std::size_t tupleCount, int componentCount) {
    return asElement(type, [&]<class T>(T) {
        std::conditional_t<std::is_integral_v<T>, std::vector<std::int64_t>, std::vector<double>> values;
        std::uint64_t state = 0x9e3779b97f4a7c15u;
        while (values.size() < tupleCount * static_cast<std::size_t>(componentCount)) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            if constexpr (std::is_integral_v<T>)
                values.push_back(static_cast<std::int64_t>(static_cast<T>(state >> (64 - 8 * sizeof(T)))));
            else
                values.push_back(static_cast<double>(static_cast<std::int64_t>(state)) * 1e-17);
        }
        return Array{name, type, componentCount, std::move(values)};
    });
}

MeshPiece MeshPiece::withPointData(Array array) const {
    MeshPiece copy = *this;
    copy.pointData.push_back(std::move(array));
    return copy;
}

MeshPiece MeshPiece::withCellData(Array array) const {
    MeshPiece copy = *this;
    copy.cellData.push_back(std::move(array));
    return copy;
}

std::vector<Array> MeshPiece::cellArrays() const {
    std::vector<std::int64_t> nodes, ends, types;
    for (const Cell& cell : cells) {
        nodes.insert(nodes.end(), cell.nodes.begin(), cell.nodes.end());
        ends.push_back(std::ssize(nodes));
        types.push_back(cell.type);
    }
    return {integers("connectivity", cellArrayTypes[0], nodes), integers("offsets", cellArrayTypes[1], ends),
            integers("types", cellArrayTypes[2], types)};
}

} // namespace test
