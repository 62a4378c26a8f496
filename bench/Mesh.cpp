#include "bench/Mesh.h"

#include <cmath>
#include <cstdint>
#include <span>

namespace bench {

namespace {

/// A sum of products of waves along the axes, tabulated for each axis, because large meshes need many values.
class Field {
public:
    Field(const Box& box, double phase) {
        for (std::size_t axis = 0; axis < 3; ++axis)
            for (std::size_t index = 0; index <= box.size[axis]; ++index) {
                const double at = 0.03 * static_cast<double>(box.begin[axis] + index);
                const double shift = phase + static_cast<double>(axis);
                slow_[axis].push_back(std::sin(at + shift));
                fast_[axis].push_back(std::cos(5 * at + shift));
            }
    }

    float operator()(std::size_t i, std::size_t j, std::size_t k) const {
        return static_cast<float>(slow_[0][i] * slow_[1][j] + slow_[2][k] +
                                  0.1 * fast_[0][i] * fast_[1][j] * fast_[2][k]);
    }

private:
    std::array<std::vector<double>, 3> slow_, fast_;
};

template <class Visit>
void forEachPlace(const std::array<std::size_t, 3>& counts, const Visit& visit) {
    for (std::size_t k = 0; k < counts[2]; ++k)
        for (std::size_t j = 0; j < counts[1]; ++j)
            for (std::size_t i = 0; i < counts[0]; ++i)
                visit(i, j, k);
}

std::array<std::size_t, 3> pointCounts(const Box& box) {
    return {box.size[0] + 1, box.size[1] + 1, box.size[2] + 1};
}

Array nodalScalar(const std::string& name, const Box& box, double phase) {
    const Field field(box, phase);
    std::vector<float> values;
    forEachPlace(pointCounts(box), [&](auto... place) { values.push_back(field(place...)); });
    return makeArray(name, "Float32", values);
}

Array nodalVector(const std::string& name, const Box& box) {
    const std::array fields{Field(box, 0.3), Field(box, 1.1), Field(box, 2.7)};
    std::vector<float> values;
    forEachPlace(pointCounts(box), [&](auto... place) {
        for (const Field& field : fields)
            values.push_back(field(place...));
    });
    return makeArray(name, "Float32", values, 3);
}

/// Lattice points, moved a little so that no two coordinates are alike.
Array points(const Box& box) {
    const Field shift(box, 0.7);
    std::vector<float> values;
    forEachPlace(pointCounts(box), [&](std::size_t i, std::size_t j, std::size_t k) {
        const std::array place{i, j, k};
        for (std::size_t axis = 0; axis < 3; ++axis)
            values.push_back(static_cast<float>(box.begin[axis] + place[axis]) +
                             0.2F * shift(place[axis], place[(axis + 1) % 3], place[(axis + 2) % 3]));
    });
    return makeArray("Points", "Float32", values, 3);
}

/// How a lattice cell is cut: cells of one type, each a list of the lattice cell's corners, which are numbered around
/// the lower face and then around the upper one.
struct Cut {
    std::uint8_t type;
    std::size_t nodesPerCell;
    std::vector<std::uint8_t> corners;
};

const Cut wholeCell{12, 8, {0, 1, 2, 3, 4, 5, 6, 7}};
const Cut wedges{13, 6, {0, 1, 2, 4, 5, 6, 0, 2, 3, 4, 6, 7}};
const Cut pyramids{14, 5, {0, 1, 2, 3, 6, 0, 1, 5, 4, 6, 0, 3, 7, 4, 6}};
const Cut tetrahedra{10, 4, {0, 1, 2, 6, 0, 2, 3, 6, 0, 3, 7, 6, 0, 7, 4, 6, 0, 4, 5, 6, 0, 5, 1, 6}};

/// Cuts the rows of lattice cells along the first axis, with each of `cuts` in turn.
void addCells(Mesh& mesh, const Box& box, std::span<const Cut* const> cuts) {
    const Field field(box, 1.9);
    const std::size_t row = box.size[0] + 1, layer = row * (box.size[1] + 1);
    const std::array<std::size_t, 8> steps{0, 1, row + 1, row, layer, layer + 1, layer + row + 1, layer + row};
    std::vector<std::int64_t> connectivity, offsets;
    std::vector<std::uint8_t> types;
    std::vector<float> values;
    forEachPlace(box.size, [&](std::size_t i, std::size_t j, std::size_t k) {
        const Cut& cut = *cuts[(j + k) % cuts.size()];
        const std::size_t corner = i + j * row + k * layer;
        for (const std::uint8_t step : cut.corners)
            connectivity.push_back(static_cast<std::int64_t>(corner + steps[step]));
        for (std::size_t cell = 0; cell < cut.corners.size() / cut.nodesPerCell; ++cell) {
            types.push_back(cut.type);
            offsets.push_back(static_cast<std::int64_t>(
                (offsets.empty() ? 0 : static_cast<std::size_t>(offsets.back())) + cut.nodesPerCell));
            values.push_back(field(i, j, k));
        }
    });
    mesh.cellCount = types.size();
    mesh.cells = {makeArray("connectivity", "Int64", connectivity), makeArray("offsets", "Int64", offsets),
                  makeArray("types", "UInt8", types)};
    mesh.cellData = {makeArray("quality", "Float32", values)};
}

Mesh makeMesh(const Box& box, std::span<const Cut* const> cuts) {
    Mesh mesh;
    const auto [x, y, z] = pointCounts(box);
    mesh.pointCount = x * y * z;
    mesh.points = points(box);
    mesh.pointData = {nodalScalar("pressure", box, 0.1), nodalScalar("temperature", box, 2.2),
                      nodalVector("velocity", box)};
    addCells(mesh, box, cuts);
    return mesh;
}

} // namespace

Mesh hexahedra(const Box& box) {
    return makeMesh(box, std::array{&wholeCell});
}

Mesh mixedCells(const Box& box) {
    return makeMesh(box, std::array{&wholeCell, &wedges, &pyramids, &tetrahedra});
}

Mesh manyArrays(const Box& box, std::size_t arrayCount) {
    Mesh mesh = hexahedra(box);
    mesh.pointData.clear();
    for (std::size_t index = 0; index < arrayCount; ++index)
        mesh.pointData.push_back(nodalScalar("array" + std::to_string(index), box, static_cast<double>(index)));
    return mesh;
}

} // namespace bench
