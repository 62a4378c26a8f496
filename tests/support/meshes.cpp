#include "tests/support/meshes.h"

#include "tests/support/CellKind.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace test {

namespace {

std::vector<std::int64_t> numbers(std::size_t count) {
    std::vector<std::int64_t> list(count);
    std::iota(list.begin(), list.end(), 0);
    return list;
}

Array points(std::vector<double> coordinates) {
    return reals("Points", ElementType::Float32, std::move(coordinates), 3);
}

} // namespace

MeshPiece hexahedron() {
    MeshPiece piece;
    piece.points = points(cellPoints(12, 1));
    piece.cells = {{12, numbers(8)}};
    return piece;
}

MeshPiece hexahedronBox(int n) {
    MeshPiece box;
    std::vector<double> coordinates;
    std::vector<double> pressure;
    for (int k = 0; k <= n; ++k)
        for (int j = 0; j <= n; ++j)
            for (int i = 0; i <= n; ++i) {
                coordinates.insert(coordinates.end(), {i / 4.0, j / 4.0, k / 4.0});
                pressure.push_back(i * 0.5 - j * 0.25 + k * 0.125);
            }
    const std::int64_t row = n + 1;
    for (std::int64_t k = 0; k < n; ++k)
        for (std::int64_t j = 0; j < n; ++j)
            for (std::int64_t i = 0; i < n; ++i) {
                const std::int64_t low = (k * row + j) * row + i;
                const std::int64_t high = low + row * row;
                box.cells.push_back({12,
                                     {low, low + 1, low + row + 1, low + row, //
                                      high, high + 1, high + row + 1, high + row}});
            }
    box.points = points(std::move(coordinates));
    box.pointData = {reals("pressure", ElementType::Float32, std::move(pressure))};
    box.cellData = {integers("cellNumber", ElementType::Int32, numbers(box.cells.size()))};
    return box;
}

MeshPiece singleCell(int type, int order) {
    MeshPiece piece;
    piece.points = points(cellPoints(type, order));
    piece.cells = {{type, numbers(piece.pointCount())}};
    piece.pointData = {variedValues("u", ElementType::Float64, piece.pointCount())};
    return piece;
}

MeshPiece sideBySide(const std::vector<MeshPiece>& pieces) {
    MeshPiece row;
    std::vector<double> coordinates;
    std::int64_t pointCount = 0;
    double x = 0;
    for (const MeshPiece& piece : pieces) {
        std::vector<double> moved = valuesAs<double>(piece.points);
        for (std::size_t index = 0; index < moved.size(); index += 3)
            moved[index] += x;
        coordinates.insert(coordinates.end(), moved.begin(), moved.end());
        for (Cell cell : piece.cells) {
            for (std::int64_t& node : cell.nodes)
                node += pointCount;
            row.cells.push_back(std::move(cell));
        }
        pointCount += static_cast<std::int64_t>(piece.pointCount());
        x += 1.5;
    }
    row.points = points(std::move(coordinates));
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
