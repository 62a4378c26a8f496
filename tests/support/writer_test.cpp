#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace test {

namespace {

using namespace std::string_literals;

MeshPiece line() {
    MeshPiece piece;
    piece.points = reals("Points", ElementType::Float32, {0, 1.5});
    piece.cells = {{3, {0, 1}}};
    return piece;
}

TEST(Writer, AsciiFileReadsAsWritten) {
    EXPECT_EQ(vtu().piece(line()).text(), R"(<?xml version="1.0"?>
<VTKFile type="UnstructuredGrid" version="1.0" byte_order="LittleEndian" header_type="UInt32">
<UnstructuredGrid>
<Piece NumberOfPoints="2" NumberOfCells="1">
<PointData>
</PointData>
<CellData>
</CellData>
<Points>
<DataArray type="Float32" Name="Points" NumberOfComponents="1" format="ascii">
          0 1.5
        </DataArray>
</Points>
<Cells>
<DataArray type="Int64" Name="connectivity" NumberOfComponents="1" format="ascii">
          0 1
        </DataArray>
<DataArray type="Int64" Name="offsets" NumberOfComponents="1" format="ascii">
          2
        </DataArray>
<DataArray type="UInt8" Name="types" NumberOfComponents="1" format="ascii">
          3
        </DataArray>
</Cells>
</Piece>
</UnstructuredGrid>
</VTKFile>
)");
}

TEST(Writer, Base64EndsInPadding) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64("\xfb\xff\xfe"), "+//+");
}

TEST(Writer, HeaderWordsStandBeforeTheValues) {
    const Array array = integers("a", ElementType::Int16, {1, -2});
    EXPECT_EQ(encodedArray(array, {.format = Format::AppendedRaw}), "\4\0\0\0\1\0\xfe\xff"s);
    EXPECT_EQ(encodedArray(array, {.format = Format::AppendedRaw, .bigEndian = true, .header64 = true}),
              "\0\0\0\0\0\0\0\4\0\1\xff\xfe"s);
    EXPECT_EQ(encodedArray(array, {.format = Format::Base64}), "BAAAAA==AQD+/w==");
    EXPECT_EQ(encodedArray(array, {.format = Format::Base64, .inOneRun = true, .lineLength = 8}), "BAAAAAEA\n/v8=\n");
    EXPECT_EQ(encodedArray(array, {.format = Format::AppendedRaw}, {{0, 0xffffffffu}}),
              "\xff\xff\xff\xff\1\0\xfe\xff"s);
}

TEST(Writer, BlocksInflateToTheValues) {
    const Array array = integers("a", ElementType::UInt8, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    const std::string bytes =
        encodedArray(array, {.format = Format::AppendedRaw, .compressed = true, .blockByteCount = 4});
    EXPECT_EQ(bytes.substr(0, 12), "\3\0\0\0\4\0\0\0\2\0\0\0"s);
    std::string inflated;
    for (std::size_t block = 0, start = 24; block < 3; ++block) {
        const auto byteCount = static_cast<std::uint8_t>(bytes[12 + 4 * block]);
        std::string values(4, '\0');
        uLongf valueByteCount = 4;
        ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(values.data()), &valueByteCount,
                             reinterpret_cast<const Bytef*>(&bytes[start]), byteCount),
                  Z_OK);
        inflated += values.substr(0, valueByteCount);
        start += byteCount;
    }
    EXPECT_EQ(inflated, "\x0a\x0b\x0c\x0d\x0e\x0f\x10\x11\x12\x13"s);
}

using Edges = std::vector<std::pair<std::size_t, std::size_t>>;

struct HostEdges {
    Shape shape;
    std::size_t corners;
    Edges edges;
};

/// The host goes around the lower face, up, and around the upper face; the inner nodes of an edge follow its direction.
const std::vector<HostEdges> hostEdges{
    {Shape::Line, 2, {{0, 1}}},
    {Shape::Triangle, 3, {{0, 1}, {1, 2}, {2, 0}}},
    {Shape::Quadrilateral, 4, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}},
    {Shape::Tetrahedron, 4, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}},
    {Shape::Hexahedron,
     8,
     {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 5}, {2, 6}, {3, 7}, {4, 5}, {5, 6}, {6, 7}, {7, 4}}},
    {Shape::Prism, 6, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 4}, {2, 5}, {3, 4}, {4, 5}, {5, 3}}},
};

void expectNodesAlongEdges(const CellKind& kind, int order, const HostEdges& host) {
    const std::vector<double> inFile = cellPoints(kind.type, order);
    const std::vector<std::size_t> places = nodeOrder(kind.type, nodeCount(kind.shape, order), {2, 1});
    ASSERT_EQ(inFile.size(), 3 * places.size());
    std::size_t node = host.corners;
    for (const auto& [from, to] : host.edges)
        for (int step = 1; step < order; ++step, ++node)
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(inFile[3 * places[node] + axis],
                            (inFile[3 * places[from] + axis] * (order - step) + inFile[3 * places[to] + axis] * step) /
                                order,
                            1e-12)
                    << "type " << kind.type << ", order " << order << ", host node " << node;
}

TEST(NodeOrder, InnerNodesOfEdgesFollowTheHostsEdges) {
    for (const CellKind& kind : acceptedCells)
        for (const HostEdges& host : hostEdges)
            for (int order = kind.lowestOrder; order <= kind.highestOrder && kind.shape == host.shape; ++order)
                expectNodesAlongEdges(kind, order, host);
}

TEST(NodeOrder, OldHexahedraSwapTwoUprightEdges) {
    for (std::size_t nodes : {27u, 64u, 125u})
        EXPECT_NE(nodeOrder(72, nodes, {2, 0}), nodeOrder(72, nodes, {2, 1})) << nodes;
    EXPECT_EQ(nodeOrder(72, 27, {2, 0})[14], 19u);
    EXPECT_EQ(nodeOrder(72, 27, {3, 0})[14], 18u);
}

TEST(Oracle, PiecesAreJoinedAndValuesNarrowed) {
    const MeshPiece piece = hexahedron().withPointData(
        integers("n", ElementType::UInt64, {0x1'0000'0002, -1, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8, 9, 10, 11, 12}, 2));
    const ExpectedZone zone = vtu().piece(piece).piece(piece).expected();
    EXPECT_EQ(zone.zoneType, 4);
    EXPECT_EQ(zone.sections.at(0).nodes,
              (std::vector<std::int64_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(zone.variable("n_X").storageType, 3);
    EXPECT_EQ(zone.variable("n_X").bytes.substr(0, 4), "\2\0\0\0"s);
    EXPECT_EQ(zone.variable("n_Y").valueCount, 16u);
    EXPECT_EQ(zone.variable("n_Y").bytes.substr(0, 4), "\xff\xff\xff\xff"s);
}

TEST(Oracle, VerticesBecomeDegenerateCells) {
    const ExpectedZone zone = expectedZone({sideBySide({singleCell(1), singleCell(5)})});
    ASSERT_EQ(zone.sections.size(), 2u);
    EXPECT_EQ(zone.sections[0].shape, Shape::Triangle);
    EXPECT_EQ(zone.sections[0].nodes, (std::vector<std::int64_t>{0, 0, 0}));
    EXPECT_EQ(zone.sections[1].nodes, (std::vector<std::int64_t>{1, 2, 3}));
}

} // namespace

} // namespace test
