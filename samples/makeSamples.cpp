// Writes the sample files, or compares them with those that a folder holds:
//
//     make_samples DIR
//     make_samples --check DIR

#include "samples/wing.h"
#include "tests/support/CellKind.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace test;

struct Sample {
    std::string name;
    VtuBuilder file;
    /// Compressed bytes differ between versions of zlib, so that only the others can be compared.
    bool comparable = true;
};

/// One cell of every type of a dimension in each of these orders: of all orders there would be more than the sixteen
/// kinds of cells that a zone can have.
MeshPiece cellsOfDimension(int dimension, int lowestOrder, int highestOrder) {
    std::vector<MeshPiece> cells;
    for (const CellKind& kind : acceptedCells)
        for (int order = std::max(lowestOrder, kind.lowestOrder);
             order <= std::min(highestOrder, kind.highestOrder) && kind.dimension == dimension; ++order)
            cells.push_back(singleCell(kind.type, order));
    MeshPiece row = sideBySide(cells);
    std::vector<std::int64_t> types;
    for (const Cell& cell : row.cells)
        types.push_back(cell.type);
    const std::vector<double> coordinates = valuesAs<double>(row.points);
    std::vector<double> squaredDistance;
    for (std::size_t index = 0; index < coordinates.size(); index += 3) {
        const double y = coordinates[index + 1], z = coordinates[index + 2];
        squaredDistance.push_back(y * y + z * z);
    }
    return row.withPointData(reals("squaredDistance", ElementType::Float64, squaredDistance))
        .withCellData(integers("cellType", ElementType::UInt8, types));
}

/// Points around the z axis, as two opposite arcs that climb.
MeshPiece pointCloud() {
    MeshPiece cloud;
    std::vector<double> coordinates;
    std::vector<double> mass;
    for (int point = 0; point < 200; ++point) {
        const double t = point % 20 / 10.0 - 1.0;
        const double side = point / 20 % 2 == 0 ? 1.0 : -1.0;
        coordinates.insert(coordinates.end(), {t, side * (1.0 - t * t), point * 0.02});
        mass.push_back(1.0 + t * t);
        cloud.cells.push_back({1, {point}});
    }
    cloud.points = reals("Points", ElementType::Float64, coordinates, 3);
    return cloud.withPointData(reals("mass", ElementType::Float32, mass));
}

MeshPiece behind(MeshPiece piece) {
    std::vector<double> coordinates = valuesAs<double>(piece.points);
    for (std::size_t index = 0; index < coordinates.size(); index += 3)
        coordinates[index] += 3.0;
    piece.points.values = coordinates;
    return piece;
}

std::vector<Sample> samples() {
    const MeshPiece body = wing(20, 3, 10);
    const FileVersion newest{2, 1};
    return {
        {"wing.vtu", vtu().piece(body).appendedRaw()},
        {"wing-ascii.vtu", vtu().piece(body)},
        {"wing-base64.vtu", vtu().piece(body).base64()},
        {"wing-base64-zlib.vtu", vtu().piece(body).base64().compressed(4096), false},
        {"wing-appended-base64-bigendian.vtu", vtu().piece(body).appendedBase64().bigEndian()},
        {"wing-appended-raw-zlib-uint64.vtu", vtu().piece(body).appendedRaw().compressed().header64(), false},
        {"wing-and-tail.vtu", vtu().piece(wing(12, 2, 4)).piece(behind(wing(8, 2, 3))).timeValue(0.25).base64()},
        {"cells-1d.vtu", vtu().piece(cellsOfDimension(1, 1, 4)).version(newest)},
        {"cells-2d.vtu", vtu().piece(cellsOfDimension(2, 1, 4)).version(newest)},
        {"cells-3d.vtu", vtu().piece(cellsOfDimension(3, 1, 2)).version(newest)},
        {"cells-3d-high-order.vtu", vtu().piece(cellsOfDimension(3, 3, 4)).version(newest)},
        {"points.vtu", vtu().piece(pointCloud())},
    };
}

int write(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const Sample& sample : samples())
        sample.file.write(folder / sample.name);
    return 0;
}

int check(const std::filesystem::path& folder) {
    int differences = 0;
    for (const Sample& sample : samples())
        if (const std::string kept = readFile(folder / sample.name); sample.comparable && kept != sample.file.text()) {
            std::cerr << sample.name << " is not what this program writes\n";
            ++differences;
        }
    return differences == 0 ? 0 : 1;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string_view> words(arguments + 1, arguments + argumentCount);
    try {
        if (words.size() == 1 && words[0] != "--check")
            return write(words[0]);
        if (words.size() == 2 && words[0] == "--check")
            return check(words[1]);
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    std::cerr << "usage: make_samples [--check] DIR\n";
    return 2;
}
