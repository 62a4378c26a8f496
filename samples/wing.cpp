// The section of the wing is a grid of quadrilaterals that narrows to one point at either edge, where triangles stand
// in for them. Drawn out along the span these are hexahedra and wedges. On the faces of the last section stand pyramids
// and tetrahedra; the gaps between two of these are tetrahedra, and those between four are pyramids upside down.

#include "samples/wing.h"

#include <cmath>
#include <utility>

namespace test {

namespace {

using Node = std::int64_t;

/// Builds up the cells; the arrays follow from the coordinates at the end.
class Wing {
public:
    Wing(int chordCells, int thicknessCells, int spanCells)
        : chordCells_(chordCells), thicknessCells_(thicknessCells), spanCells_(spanCells) {}

    MeshPiece mesh() {
        for (int k = 0; k <= spanCells_; ++k)
            addSectionPoints(k);
        for (int k = 0; k < spanCells_; ++k)
            addLayer(k);
        addTipPoints();
        addCellsOnFaces();
        addCellsBetween();
        addArrays();
        return std::move(piece_);
    }

private:
    bool atEdge(int i) const { return i == 0 || i == chordCells_; }

    Node sectionPointCount() const { return (chordCells_ - 1) * (thicknessCells_ + 1) + 2; }

    /// The node at a chord and a thickness position; both edges of the wing have one node for all thicknesses.
    Node node(int i, int j, int k) const {
        const Node first = k * sectionPointCount();
        if (i == 0)
            return first;
        return i == chordCells_ ? first + sectionPointCount() - 1 : first + 1 + (i - 1) * (thicknessCells_ + 1) + j;
    }

    /// The tip's point on the face between chord positions i and i + 1.
    Node tip(int i, int j) const { return (spanCells_ + 1) * sectionPointCount() + i * thicknessCells_ + j; }

    void addPoint(double chord, double thickness, double span) {
        const double scale = 1.0 - 0.6 * span;
        const double halfHeight = 0.6 * (0.2969 * std::sqrt(chord) - 0.126 * chord - 0.3516 * chord * chord +
                                         0.2843 * chord * chord * chord - 0.1036 * chord * chord * chord * chord);
        coordinates_.insert(coordinates_.end(),
                            {scale * chord + 0.8 * span, scale * halfHeight * thickness + 0.1 * span, 3.0 * span});
    }

    void addSectionPoints(int k) {
        const double span = static_cast<double>(k) / spanCells_;
        for (int i = 0; i <= chordCells_; ++i)
            for (int j = 0; j <= (atEdge(i) ? 0 : thicknessCells_); ++j)
                addPoint(static_cast<double>(i) / chordCells_, 2.0 * j / thicknessCells_ - 1.0, span);
    }

    void addTipPoints() {
        for (int i = 0; i < chordCells_; ++i)
            for (int j = 0; j < thicknessCells_; ++j)
                addPoint((i + 0.5) / chordCells_, (2.0 * j + 1.0) / thicknessCells_ - 1.0, 1.0 + 0.5 / spanCells_);
    }

    void addCell(int type, std::vector<Node> nodes, std::int64_t layer) {
        piece_.cells.push_back({type, std::move(nodes)});
        layers_.push_back(layer);
    }

    /// The nodes of a face, counterclockwise as seen from the tip; three at an edge of the wing.
    std::vector<Node> face(int i, int j, int k) const {
        if (i == 0)
            return {node(0, 0, k), node(1, j, k), node(1, j + 1, k)};
        if (i == chordCells_ - 1)
            return {node(i, j, k), node(i + 1, 0, k), node(i, j + 1, k)};
        return {node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k)};
    }

    void addLayer(int k) {
        for (int i = 0; i < chordCells_; ++i)
            for (int j = 0; j < thicknessCells_; ++j) {
                const bool isWedge = atEdge(i) || atEdge(i + 1);
                std::vector<Node> nodes = face(i, j, isWedge ? k + 1 : k);
                for (Node opposite : face(i, j, isWedge ? k : k + 1))
                    nodes.push_back(opposite);
                addCell(isWedge ? 13 : 12, std::move(nodes), k);
            }
    }

    void addCellsOnFaces() {
        for (int i = 0; i < chordCells_; ++i)
            for (int j = 0; j < thicknessCells_; ++j) {
                std::vector<Node> nodes = face(i, j, spanCells_);
                nodes.push_back(tip(i, j));
                addCell(nodes.size() == 5 ? 14 : 10, nodes, spanCells_);
            }
    }

    void addCellsBetween() {
        const int k = spanCells_;
        for (int i = 0; i < chordCells_; ++i)
            for (int j = 0; j < thicknessCells_; ++j) {
                if (i > 0)
                    addCell(10, {node(i, j, k), tip(i, j), node(i, j + 1, k), tip(i - 1, j)}, k);
                if (j > 0)
                    addCell(10, {node(i, j, k), node(i + 1, j, k), tip(i, j), tip(i, j - 1)}, k);
                if (i > 0 && j > 0)
                    addCell(14, {tip(i - 1, j - 1), tip(i - 1, j), tip(i, j), tip(i, j - 1), node(i, j, k)}, k);
            }
    }

    void addArrays() {
        const std::size_t pointCount = coordinates_.size() / 3;
        std::vector<double> pressure, temperature, velocity, heat;
        std::vector<std::int64_t> boundary, cellNumber;
        for (std::size_t point = 0; point < pointCount; ++point) {
            const double x = coordinates_[3 * point], y = coordinates_[3 * point + 1], z = coordinates_[3 * point + 2];
            pressure.push_back(1.0 - x * x - 4.0 * y + 0.25 * z);
            temperature.push_back(288.15 - 6.5 * z + 12.0 * x * (1.0 - x));
            velocity.insert(velocity.end(), {68.0 + 20.0 * y, 4.0 * (1.0 - x), 0.5 * z * z});
            boundary.push_back(z == 0.0 ? 1 : 0);
        }
        for (std::size_t cell = 0; cell < layers_.size(); ++cell) {
            cellNumber.push_back(static_cast<std::int64_t>(cell));
            heat.push_back(static_cast<double>(layers_[cell]) * 0.125);
        }
        piece_.points = reals("Points", ElementType::Float32, coordinates_, 3);
        piece_.pointData = {
            reals("pressure", ElementType::Float32, pressure), reals("temperature", ElementType::Float64, temperature),
            reals("velocity", ElementType::Float32, velocity, 3), integers("boundary", ElementType::UInt8, boundary)};
        piece_.cellData = {integers("cellNumber", ElementType::Int32, cellNumber),
                           integers("layer", ElementType::Int16, layers_), reals("heat", ElementType::Float64, heat)};
    }

    int chordCells_;
    int thicknessCells_;
    int spanCells_;
    MeshPiece piece_;
    std::vector<double> coordinates_;
    std::vector<std::int64_t> layers_;
};

} // namespace

MeshPiece wing(int chordCells, int thicknessCells, int spanCells) {
    return Wing(chordCells, thicknessCells, spanCells).mesh();
}

} // namespace test
