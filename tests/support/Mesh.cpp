#include "tests/support/Mesh.h"

#include <utility>

namespace test {

namespace {

template <class T>
std::vector<std::int64_t> variedIntegers(std::size_t count) {
    std::vector<std::int64_t> values;
    std::uint64_t state = 0x9e3779b97f4a7c15u;
    for (std::size_t index = 0; index < count; ++index) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        values.push_back(static_cast<std::int64_t>(static_cast<T>(state >> (64 - 8 * sizeof(T)))));
    }
    return values;
}

std::vector<double> variedReals(std::size_t count) {
    std::vector<double> values;
    for (std::size_t index = 0; index < count; ++index) {
        const auto position = static_cast<double>(index);
        values.push_back(index % 3 == 1 ? -position / 7.0 : position * position * 0.37 + 1e-3);
    }
    return values;
}

} // namespace

Array integers(std::string name, ElementType type, std::vector<std::int64_t> values, int componentCount) {
    return {std::move(name), type, componentCount, std::move(values)};
}

Array reals(std::string name, ElementType type, std::vector<double> values, int componentCount) {
    return {std::move(name), type, componentCount, std::move(values)};
}

Array variedValues(std::string name, ElementType type, std::size_t tupleCount, int componentCount) {
    const std::size_t count = tupleCount * static_cast<std::size_t>(componentCount);
    return asElement(type, [&]<class T>(T) {
        if constexpr (std::is_floating_point_v<T>)
            return reals(std::move(name), type, variedReals(count), componentCount);
        else
            return integers(std::move(name), type, variedIntegers<T>(count), componentCount);
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

Array MeshPiece::connectivity() const {
    std::vector<std::int64_t> values;
    for (const Cell& cell : cells)
        values.insert(values.end(), cell.nodes.begin(), cell.nodes.end());
    return integers("connectivity", connectivityType, std::move(values));
}

Array MeshPiece::offsets() const {
    std::vector<std::int64_t> values;
    std::int64_t end = 0;
    for (const Cell& cell : cells)
        values.push_back(end += static_cast<std::int64_t>(cell.nodes.size()));
    return integers("offsets", offsetsType, std::move(values));
}

Array MeshPiece::types() const {
    std::vector<std::int64_t> values;
    for (const Cell& cell : cells)
        values.push_back(cell.type);
    return integers("types", typesType, std::move(values));
}

} // namespace test
