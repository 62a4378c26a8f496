#include "tests/load/refusals.h"
#include "tests/support/meshes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace test {

namespace {

MeshPiece withoutCells(MeshPiece piece) {
    for (Array* array : {&piece.points, &piece.pointData[0], &piece.pointData[1], &piece.cellData[0]})
        array->values = std::vector<double>{};
    piece.cells.clear();
    return piece;
}

void expectUndisturbed(const VtuBuilder& file) {
    Load load{file};
    expectZone(load, file.expected());
}

std::string unsupportedCell(const std::string& name) {
    return "VTK cell type \"" + name + "\" is not yet supported by the VTK loader";
}
std::string mixedDimensions(const std::string& name, int dimension, int previous) {
    return fmt::format(
        "VTK cell type \"{}\" has a dimensionality of {} but one or more cells of dimensionality {} have "
        "already been discovered in this VTK file. All cell types of a zone must have the same "
        "dimensionality",
        name, dimension, previous);
}

} // namespace

TEST(Cells, EveryKindIsReadAloneAndInOneOfSeveralPieces) {
    for (const CellKind& kind : acceptedCells)
        for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
            for (const FileVersion& version : {FileVersion{1, 0}, {2, 0}, {2, 1}, {65537, 0}}) {
                SCOPED_TRACE(std::to_string(kind.type) + " of order " + std::to_string(order) + ", version " +
                             std::to_string(version.first) + "." + std::to_string(version.second));
                const MeshPiece cell = singleCell(kind.type, order);
                expectUndisturbed(vtu().version(version).piece(cell));
                expectUndisturbed(vtu().version(version).piece(singleCell(12)).piece(cell).piece(cell));
            }
}

TEST(Cells, VerticesAmongOthersBecomeDegenerateCellsOfTheFirstOtherShape) {
    expectUndisturbed(vtu().piece(sideBySide({singleCell(5), singleCell(1), singleCell(9)})));
    expectUndisturbed(vtu().piece(sideBySide({singleCell(1), singleCell(13)})));
}

TEST(Cells, ThatAreVerticesMayHaveValuesWhereThereAreAsManyAsPoints) {
    const MeshPiece points = sideBySide(std::vector(20, singleCell(1)));
    const MeshPiece piece = points.withCellData(variedValues("c", ElementType::Int16, 20));
    expectUndisturbed(vtu().piece(piece).piece(piece));
}

TEST(Cells, SixteenSectionsAreTheMost) {
    std::vector<MeshPiece> cells;
    for (const CellKind& kind : acceptedCells)
        for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
            if (kind.dimension == 3 && cells.size() < 16)
                cells.push_back(singleCell(kind.type, order));
    const VtuBuilder file = vtu().piece(sideBySide(cells));
    ASSERT_EQ(file.expected().sections.size(), 16);
    expectUndisturbed(file);
}

TEST(Cells, ARunOfCellsMayBeLongerThanWhatIsReadAtOnce) {
    const MeshPiece twoKinds = sideBySide({singleCell(11), singleCell(10)});
    for (const MeshPiece& piece :
         {sideBySide(std::vector(33000, twoKinds)),
          sideBySide({sideBySide(std::vector(70000, singleCell(5))), sideBySide(std::vector(500, singleCell(9)))})})
        expectUndisturbed(vtu().piece(piece).piece(piece).appendedRaw());
}

TEST(Pieces, ListTheirArraysInAnyOrderAndLetterCase) {
    const MeshPiece first = mixed();
    MeshPiece second = first;
    std::swap(second.pointData[0], second.pointData[1]);
    second.pointData[0].name = "VELOCITY";
    second.pointData[1].name = "Pressure";
    Load load{vtu().piece(first).piece(second)};
    expectZone(load, vtu().piece(first).piece(first).expected());
}

TEST(Pieces, ContinueTheArraysOfTheirExactNamesFirst) {
    const std::vector<std::string> names{"p", "P", "q"};
    // The arrays of the second piece, and which of the first each continues.
    const std::vector<std::vector<std::pair<std::string, std::size_t>>> rows{{{"P", 1}, {"p", 0}, {"q", 2}},
                                                                             {{"q", 2}, {"P", 1}, {"p", 0}},
                                                                             {{"Q", 2}, {"P", 1}, {"p", 0}},
                                                                             {{"P", 1}, {"P", 0}, {"q", 2}},
                                                                             {{"p", 0}, {"p", 1}, {"Q", 2}}};
    const auto add = [&](MeshPiece& piece, const std::string& name, std::size_t index) {
        std::vector<std::int64_t> list = numbers(8 + index); // each begins with another number
        piece = piece.withPointData(integers(name, ElementType::Int16, {list.end() - 8, list.end()}));
    };
    for (const auto& row : rows) {
        MeshPiece first = hexahedron(), second = hexahedron();
        for (std::size_t index = 0; index < names.size(); ++index)
            add(first, names[index], index);
        for (const auto& [name, index] : row)
            add(second, name, index);
        Load load{vtu().piece(first).piece(second)};
        expectZone(load, vtu().piece(first).piece(first).expected());
    }
    const Array one = integers("p", ElementType::Int16, numbers(8)),
                two = integers("p", ElementType::Int16, numbers(16), 2);
    const MeshPiece first = hexahedron().withPointData(one).withPointData(two);
    Load load{vtu().piece(first).piece(hexahedron().withPointData(two).withPointData(one))};
    expectZone(load, vtu().piece(first).piece(first).expected());
}

TEST(Pieces, HoldTheThreeCellArraysInAnyOrderAndLetterCase) {
    const VtuBuilder file =
        vtu().piece(mixed()).markup("\"connectivity\"", "\"CONNECTIVITY\"").markup("\"types\"", "\"Types\"");
    std::string text = file.text();
    const auto place = [&](const char* start) { return text.begin() + static_cast<std::ptrdiff_t>(text.rfind(start)); };
    std::rotate(place("<Cells>") + 8, place("<DataArray"), place("</Cells>")); // "types" comes first
    Load load{text};
    expectZone(load, file.expected());
}

TEST(Pieces, MayBeEmptyAmongOthers) {
    for (const Encoding& encoding : {Encoding{}, Encoding{Format::Base64, true}, Encoding{Format::AppendedRaw}}) {
        VtuBuilder file = vtu().encoding(encoding);
        file.piece(withoutCells(mixed())).piece(mixed()).piece(withoutCells(mixed())).piece(mixed());
        Load load{file};
        expectZone(load, vtu().piece(mixed()).piece(mixed()).expected());
    }
}

TEST(Pieces, WithoutCellsHaveNoLoaderForTheirValuesInCells) {
    MeshPiece piece = mixed();
    piece.cells.clear();
    piece.cellData[0].values = std::vector<double>{};
    Load load{vtu().piece(piece)};
    EXPECT_TRUE(load.loaded()) << load.dialog();
    EXPECT_TRUE(load.values("pressure"));
    EXPECT_EQ(load.host.dataset().find({1, load.variableNumber("material")}), nullptr);
}

TEST(Variables, OfComponentsAreThoseOfTheirNames) {
    const Array scalar = variedValues("v_Y", ElementType::Float32, 8),
                vector = variedValues("v", ElementType::Int16, 8, 3);
    Load load{Files{{"both.pvtu", R"(<VTKFile type="PUnstructuredGrid"><Piece Source="a.vtu"/><Piece Source="b.vtu"/>
                                     </VTKFile>)"},
                    {"a.vtu", vtu().piece(hexahedron().withPointData(scalar)).text()},
                    {"b.vtu", vtu().piece(hexahedron().withPointData(vector)).text()}}};
    const std::vector<double> second = valuesAs<double>(vector);
    for (std::size_t component = 0; component < 3; ++component) {
        const auto found = load.host.demandValues(2, load.variableNumber(std::string("v_") + "XYZ"[component]));
        ASSERT_TRUE(found) << load.dialog();
        for (std::size_t node = 0; node < 8; ++node)
            EXPECT_EQ((*found)[node], second[3 * node + component]);
    }
}

TEST(Variables, OfOneNameAtNodesAndCellsAreTwoAndPlanesAndLinesHaveFewerCoordinates) {
    MeshPiece line = singleCell(3).withPointData(variedValues("p", ElementType::Float32, 2));
    line.points = reals("coordinates", ElementType::Float64, {0, 1, 2, 3}, 2);
    expectUndisturbed(vtu().piece(line.withCellData(variedValues("p", ElementType::UInt16, 1))));
    line.points = reals("coordinates", ElementType::Float64, {0, 1});
    expectUndisturbed(vtu().piece(line));
}

TEST(Cells, ThatAreRefusedAreNamed) {
    // From 0; "-" for the codes that are not used.
    const std::string names =
        "Empty Cell,Vertex,Poly Vertex,Line,Poly Line,Triangle,Triangle Strip,Polygon,Pixel,Quad,Tetra,Voxel,"
        "Hexahedron,Wedge,Pyramid,Pentagonal Prism,Hexagonal Prism,-,-,-,-,Quadratic Edge,Quadratic Triangle,"
        "Quadratic Quad,Quadratic Tetra,Quadratic Hexahedron,Quadratic Wedge,Quadratic Pyramid,Bi-Quadratic Quad,"
        "Tri-Quadratic Hexahedron,Quadratic Linear Quad,Quadratic Linear Wedge,Bi-Quadratic Quadratic Wedge,"
        "Bi-Quadratic Quadratic Hexahedron,Bi-Quadratic Triangle,Cubic Line,Quadratic Polygon,-,-,-,-,"
        "Convex Point Set,Polyhedron,-,-,-,-,-,-,-,-,Parametric Curve,Parametric Surface,Parametric Tri Surface,"
        "Parametric Quad Surface,Parametric Tetra Region,Parametric Hex Region,-,-,-,Higher Order Edge,"
        "Higher Order Triangle,Higher Order Quad,Higher Order Polygon,Higher Order Tetrahedron,Higher Order Wedge,"
        "Higher Order Pyramid,Higher Order Hexahedron,Lagrange Curve,Lagrange Triangle,Lagrange Quadrilateral,"
        "Lagrange Tetrahedron,Lagrange Hexahedron,Lagrange Wedge,Lagrange Pyramid,Bezier Curve,Bezier Triangle,"
        "Bezier Quadrilateral,Bezier Tetrahedron,Bezier Hexahedron,Bezier Wedge,Bezier Pyramid";
    std::istringstream words(names);
    for (int type = 0; type < 256; ++type) {
        std::string name;
        if (!std::getline(words, name, ',') || name == "-")
            name = "Unknown";
        const auto kind = std::ranges::find(acceptedCells, type, &CellKind::type);
        std::string text = unsupportedCell(name), cells = std::to_string(type) + ":3";
        if (kind != acceptedCells.end() && kind->dimension > 0) {
            const int other = kind->dimension == 3 ? 2 : 3;
            text = mixedDimensions(name, kind->dimension, other);
            cells = (other == 2 ? "5:3 " : "10:4 ") + std::to_string(type) + ":" +
                    std::to_string(nodeCount(kind->shape, kind->lowestOrder));
        } else if (type == 1) {
            text = badNodeCount(name, "2");
            cells = "1:2";
        }
        expectRefusals(fileError, {{withCells(cells), text}});
    }
}

} // namespace test
