// Node maps through the embedded host: meshes of any cells that the host takes, in 32 and 64 bits, against what the
// tests' writer says of them. A byte after the pieces that is not 0 damages an array; then nothing
// but failing properly is asked.

#include "fuzz/fuzz.h"
#include "fuzz/hostLoad.h"
#include "fuzz/meshInput.h"

#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

namespace {

/// Up to twelve cells of one dimension, with nodes of up to 200 points as the input has them.
test::MeshPiece takePiece(fuzz::Input& input, int dimension, bool hasVertices) {
    test::MeshPiece piece;
    const std::size_t pointCount = 1 + input.byte() % 200;
    piece.points = test::integers("Points", test::ElementType::Float32, test::numbers(3 * pointCount), 3);
    piece.cellArrayTypes[0] = static_cast<test::ElementType>(2 + input.byte() % 6);
    for (int cell = input.byte() % 12; cell > 0; --cell) {
        const std::uint8_t choice = input.byte(), firstNode = input.byte();
        const test::CellKind& kind = test::acceptedCells[choice % test::acceptedCells.size()];
        if (kind.dimension != dimension && !(hasVertices && kind.type == 1))
            continue;
        const int order = hasVertices ? 1 : std::min(kind.lowestOrder + choice / 64, kind.highestOrder);
        if (order < kind.lowestOrder)
            continue;
        test::Cell made{kind.type, {}};
        for (std::size_t node = 0; node < test::nodeCount(kind.shape, order); ++node)
            made.nodes.push_back(static_cast<std::int64_t>((firstNode + node * 3) % pointCount));
        piece.cells.push_back(std::move(made));
    }
    return piece;
}

void damage(test::VtuBuilder& file, bool isCompressed, std::uint8_t choice) {
    const char* array = std::array{"connectivity", "offsets", "types"}[choice % 3];
    if (choice % 2 == 0)
        file.values(array, test::numbers(choice));
    else
        file.headerWord(array, isCompressed ? choice / 8 % 3 : 0, choice * 0x1234567u);
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    const int nodeBitCount = input.flag() ? 64 : 32;
    const std::uint8_t kind = input.byte();
    const bool hasVertices = kind % 2 == 1;
    const int dimension = 1 + kind / 2 % 3;
    const test::Encoding encoding = takeEncoding(input);
    test::VtuBuilder file =
        test::vtu().encoding(encoding).version(kind < 128 ? test::FileVersion{1, 0} : test::FileVersion{2, 1});
    for (int count = 1 + input.byte() % 3; count > 0; --count)
        file.piece(takePiece(input, dimension, hasVertices));
    const test::ExpectedZone expected = file.expected();
    const std::uint8_t damageChoice = input.byte();
    if (damageChoice != 0)
        damage(file, encoding.compressed, damageChoice);
    bool isCompared = false;
    const std::string shown = loadInHost(scratchFile("mesh.vtu", file.text()), nodeBitCount, [&](krohost::Host& host) {
        isCompared = damageChoice == 0 && !expected.sections.empty();
        if (!isCompared)
            return;
        const auto nodes = host.demandNodeMap(1);
        require(nodes && nodes->size() == expected.sections.size(), "each section has nodes");
        for (std::size_t index = 0; index < nodes->size(); ++index)
            require((*nodes)[index] == expected.sections[index].nodes, "nodes are those of the cells");
    });
    require(damageChoice != 0 || shown == "loaded" || expected.sections.size() > 16, "a sound file loads");
    return shown + (isCompared ? ", " + std::to_string(nodeBitCount) + " bits" : "");
}
