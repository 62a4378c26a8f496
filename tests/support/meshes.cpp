#include "tests/support/meshes.h"

#include "tests/support/CellKind.h"

#include <numeric>

namespace test {

std::vector<std::int64_t> numbers(std::size_t count) {
    std::vector<std::int64_t> list(count);
    std::iota(list.begin(), list.end(), 0);
    return list;
}

MeshPiece hexahedron() {
    return sideBySide({singleCell(12)});
}

MeshPiece singleCell(int type, int order) {
    MeshPiece piece;
    piece.points = reals("Points", ElementType::Float32, cellPoints(type, order), 3);
    piece.cells = {{type, numbers(piece.pointCount())}};
    piece.pointData = {variedValues("u", ElementType::Float64, piece.pointCount())};
    return piece;
}

MeshPiece sideBySide(const std::vector<MeshPiece>& pieces) {
    MeshPiece row;
    std::vector<double> coordinates;
    double x = 0;
    for (const MeshPiece& piece : pieces) {
        const std::int64_t firstNode = std::ssize(coordinates) / 3;
        for (const double coordinate : valuesAs<double>(piece.points))
            coordinates.push_back(coordinate + (coordinates.size() % 3 == 0 ? x : 0));
        for (Cell cell : piece.cells) {
            for (std::int64_t& node : cell.nodes)
                node += firstNode;
            row.cells.push_back(std::move(cell));
        }
        x += 1.5;
    }
    row.points = reals("Points", ElementType::Float32, coordinates, 3);
    return row;
}

MeshPiece mixed() {
    MeshPiece piece = sideBySide({singleCell(12), singleCell(13), singleCell(14), singleCell(10)});
    piece.pointData = {variedValues("pressure", ElementType::Float32, piece.pointCount()),
                       variedValues("velocity", ElementType::Float64, piece.pointCount(), 3)};
    piece.cellData = {integers("material", ElementType::UInt8, {1, 2, 2, 255})};
    return piece;
}

} // namespace test
