#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>

namespace test {

namespace {

std::vector<std::int64_t> range(std::int64_t first, std::int64_t last) {
    std::vector<std::int64_t> numbers(static_cast<std::size_t>(last - first));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

MeshPiece withoutCells(MeshPiece piece) {
    for (Array* array : {&piece.points, &piece.pointData[0], &piece.pointData[1], &piece.cellData[0]})
        array->values = std::vector<double>{};
    piece.cells.clear();
    return piece;
}

/// So many kinds of cells of one dimension, each in one cell.
MeshPiece kindsOfSolids(std::size_t count) {
    std::vector<MeshPiece> cells;
    for (const CellKind& kind : acceptedCells)
        for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
            if (kind.dimension == 3 && cells.size() < count)
                cells.push_back(singleCell(kind.type, order));
    return sideBySide(cells);
}

} // namespace

TEST(Cells, EveryKindIsReadAloneAndInOneOfSeveralPieces) {
    const std::map<int, int> zoneTypes{{1, 0}, {3, 5}, {5, 1}, {8, 2}, {9, 2}, {10, 3}, {11, 4}, {12, 4}};
    for (const CellKind& kind : acceptedCells)
        for (int order = kind.lowestOrder; order <= kind.highestOrder; ++order)
            for (const FileVersion version : {FileVersion{1, 0}, FileVersion{2, 0}, FileVersion{2, 1}}) {
                SCOPED_TRACE(std::to_string(kind.type) + " of order " + std::to_string(order) + ", version " +
                             std::to_string(version.major) + "." + std::to_string(version.minor));
                const MeshPiece cell = singleCell(kind.type, order);
                {
                    VtuBuilder file = vtu().version(version).piece(cell);
                    Load alone{file};
                    expectZone(alone, file.expected());
                    const auto type = zoneTypes.find(kind.type);
                    EXPECT_EQ(alone.zone().type, type == zoneTypes.end() ? 8 : type->second);
                }
                VtuBuilder file = vtu().version(version).piece(singleCell(12)).piece(cell).piece(cell);
                Load among{file};
                expectZone(among, file.expected());
            }
}

TEST(Cells, LagrangeHexahedraOfOldFilesHaveTwoEdgesInAnotherOrder) {
    const auto nodes = [](FileVersion version) {
        Load load{vtu().version(version).piece(singleCell(72, 2))};
        const auto sections = load.nodeMap().value();
        return std::vector(sections.at(0).begin() + 14, sections.at(0).begin() + 16);
    };
    EXPECT_EQ(nodes({2, 0}), (std::vector<std::int64_t>{19, 18}));
    EXPECT_EQ(nodes({2, 1}), (std::vector<std::int64_t>{18, 19}));
    EXPECT_EQ(nodes({10, 0}), (std::vector<std::int64_t>{18, 19}));
}

TEST(Cells, VerticesAmongOthersBecomeDegenerateCellsOfTheFirstOtherShape) {
    for (const std::vector<MeshPiece>& cells :
         {std::vector{singleCell(5), singleCell(1), singleCell(9)}, std::vector{singleCell(1), singleCell(13)}}) {
        VtuBuilder file = vtu().piece(sideBySide(cells));
        Load load{file};
        expectZone(load, file.expected());
    }
    Load load{vtu().piece(sideBySide({singleCell(5), singleCell(1)}))};
    EXPECT_EQ(load.nodeMap(), (std::vector<std::vector<std::int64_t>>{{0, 1, 2}, {3, 3, 3}}));
}

TEST(Cells, SixteenSectionsAreTheMost) {
    VtuBuilder file = vtu().piece(kindsOfSolids(16));
    Load load{file};
    ASSERT_EQ(file.expected().sections.size(), 16);
    expectZone(load, file.expected());
}

TEST(Cells, ARunOfCellsMayBeLongerThanWhatIsReadAtOnce) {
    const MeshPiece manyKinds = sideBySide(std::vector<MeshPiece>(3000, sideBySide({singleCell(11), singleCell(10)})));
    for (const MeshPiece& piece : {manyKinds, hexahedronBox(21)}) {
        VtuBuilder file = vtu().piece(piece).piece(piece).appendedRaw();
        Load load{file};
        expectZone(load, file.expected());
    }
}

TEST(NodeMap, SecondPieceIsShiftedByTheFirstPiecesPoints) {
    Load load{vtu().piece(hexahedron()).piece(hexahedron())};
    EXPECT_EQ(load.nodeMap(), (std::vector<std::vector<std::int64_t>>{range(0, 16)}));
    EXPECT_EQ(load.zone().type, ZoneType_Brick);
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

TEST(Pieces, HoldTheThreeCellArraysInAnyOrderAndLetterCase) {
    VtuBuilder file =
        vtu().piece(mixed()).markup("\"connectivity\"", "\"CONNECTIVITY\"").markup("\"types\"", "\"Types\"");
    const std::string text = file.text();
    const std::size_t first = text.find("<Cells>\n") + 8;
    const std::size_t second = text.find("<DataArray", first + 1);
    const std::size_t end = text.find("</Cells>");
    Load load{Files{{"mesh.vtu", text.substr(0, first) + text.substr(second, end - second) +
                                     text.substr(first, second - first) + text.substr(end)}}};
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

TEST(Pieces, AnEmptyMemberOfACollectionIsPassedOver) {
    const std::string collection = R"(<VTKFile type="PUnstructuredGrid"><PUnstructuredGrid>
        <Piece Source="empty.vtu"/><Piece Source="full.vtu"/></PUnstructuredGrid></VTKFile>)";
    Load load{Files{{"case.pvtu", collection},
                    {"empty.vtu", vtu().piece(withoutCells(mixed())).text()},
                    {"full.vtu", vtu().piece(mixed()).text()}}};
    ASSERT_EQ(load.host.dataset().zones.size(), 1);
    EXPECT_EQ(load.zone().name, "full");
    expectZone(load, vtu().piece(mixed()).expected());
}

TEST(Variables, OfOneNameAtNodesAndCellsAreTwo) {
    VtuBuilder file = vtu().piece(hexahedron()
                                      .withPointData(variedValues("p", ElementType::Float32, 8))
                                      .withCellData(variedValues("p", ElementType::UInt16, 1)));
    Load load{file};
    expectZone(load, file.expected());
    EXPECT_EQ(load.host.dataset().variables, (std::vector<std::string>{"X", "Y", "Z", "p", "p"}));
}

TEST(Variables, AreNamedAfterTheirComponents) {
    MeshPiece line = singleCell(3);
    line.points = reals("coordinates", ElementType::Float64, {0, 1, 2, 3}, 2);
    line.pointData = {variedValues("a", ElementType::Int8, 2), variedValues("b", ElementType::Int8, 2, 2),
                      variedValues("c", ElementType::Int8, 2, 3), variedValues("d", ElementType::Int8, 2, 4)};
    Load load{vtu().piece(line)};
    EXPECT_EQ(load.host.dataset().variables,
              (std::vector<std::string>{"X", "Y", "a", "b_X", "b_Y", "c_X", "c_Y", "c_Z", "d_1", "d_2", "d_3", "d_4"}));
    EXPECT_EQ(load.values("Y"), (std::vector<double>{1, 3}));
}

} // namespace test
