// The steps of a load, one at a time, from memory or from small files in a temporary folder.

#include "krohost/host/runtime/Host.h"
#include "loader/mesh/sections.h"
#include "loader/sdk/ByteInputStream.h"
#include "loader/sdk/base64.h"
#include "loader/streams/Inflater.h"
#include "loader/streams/InterleavedInflater.h"
#include "loader/streams/readValues.h"
#include "loader/xml/VtkFileXMLParser.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>
#include <stdexcept>

namespace {

using namespace veltra;
using namespace veltra::vtkfile;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t valueCount = 1 << 20;

void setBytes(benchmark::State& state, std::size_t byteCount) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(byteCount));
}

void setItems(benchmark::State& state, std::size_t itemCount) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(itemCount));
}

std::vector<float> wave(std::size_t count) {
    std::vector<float> values;
    for (std::size_t index = 0; index < count; ++index)
        values.push_back(static_cast<float>(std::sin(0.001 * static_cast<double>(index))));
    return values;
}

template <class T>
Bytes bytesOf(const std::vector<T>& values) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(values.data());
    return {bytes, bytes + values.size() * sizeof(T)};
}

struct NoProgress final : ParseProgress {
    bool report(const std::string&, std::uint64_t) override { return true; }
};

std::vector<Piece> pieces(const std::filesystem::path& path) {
    VtkFileXMLParser parser(std::make_shared<boost::filesystem::path>(path.string()), std::make_unique<NoProgress>());
    parser.parse();
    return parser.takePieces();
}

/// Copies of a mesh in a row.
test::MeshPiece repeated(const test::MeshPiece& piece, std::size_t count) {
    return test::sideBySide(std::vector<test::MeshPiece>(count, piece));
}

/// What opening a file with many arrays waits for.
void scanDocument(benchmark::State& state) {
    test::MeshPiece piece = test::hexahedron();
    for (int index = 0; index < state.range(0); ++index)
        piece.pointData.push_back(test::variedValues("u" + std::to_string(index), test::ElementType::Float32, 8));
    const test::TemporaryFolder folder;
    test::vtu().piece(piece).appendedRaw().write(folder / "a.vtu");
    for (auto _ : state)
        benchmark::DoNotOptimize(pieces(folder / "a.vtu"));
    setItems(state, static_cast<std::size_t>(state.range(0)));
}
BENCHMARK(scanDocument)->Range(16, 4096);

/// What opening a file with inline data waits for: skipping the text.
void scanInlineText(benchmark::State& state) {
    const test::TemporaryFolder folder;
    const std::string text(static_cast<std::size_t>(state.range(0)) << 20, 'A');
    test::vtu()
        .piece(test::hexahedron().withPointData(test::variedValues("u", test::ElementType::Float32, 8)))
        .base64()
        .inlineText("u", text)
        .write(folder / "a.vtu");
    for (auto _ : state)
        benchmark::DoNotOptimize(pieces(folder / "a.vtu"));
    setBytes(state, text.size());
}
BENCHMARK(scanInlineText)->Arg(64);

void decodeBase64Text(benchmark::State& state) {
    const Bytes values = bytesOf(wave(valueCount));
    const std::string text = test::base64({reinterpret_cast<const char*>(values.data()), values.size()});
    const Bytes characters(text.begin(), text.end());
    Bytes decoded(values.size() + 3);
    for (auto _ : state)
        benchmark::DoNotOptimize(dataio::decodeBase64(characters, decoded).bytesProduced);
    setBytes(state, values.size());
}
BENCHMARK(decodeBase64Text);

/// A block of floats and the same compressed, each followed by bytes that InterleavedInflater may touch.
struct Block {
    Bytes bytes = bytesOf(wave(32768 / sizeof(float)));
    std::size_t size = bytes.size();
    Bytes compressed = Bytes(compressBound(bytes.size()) + InterleavedInflater::readSlack);
    uLongf compressedSize = compressBound(bytes.size());

    Block() {
        compress2(compressed.data(), &compressedSize, bytes.data(), size, 5);
        bytes.resize(size + InterleavedInflater::writeSlack);
    }
};

void inflateBlock(benchmark::State& state) {
    Block block;
    Inflater inflater;
    for (auto _ : state)
        benchmark::DoNotOptimize(inflater.inflate({block.compressed.data(), block.compressedSize},
                                                  std::span(block.bytes).first(block.size)));
    setBytes(state, block.size);
}
BENCHMARK(inflateBlock);

void inflateFourBlocks(benchmark::State& state) {
    std::array<Block, InterleavedInflater::laneCount> blocks;
    std::array<InterleavedInflater::Stream, InterleavedInflater::laneCount> streams;
    std::ranges::transform(blocks, streams.begin(), [](Block& block) -> InterleavedInflater::Stream {
        return {{block.compressed.data(), block.compressedSize}, std::span(block.bytes).first(block.size)};
    });
    InterleavedInflater inflater;
    for (auto _ : state)
        if (inflater.inflate(streams) != streams.size())
            return state.SkipWithError("not all blocks are inflated");
    setBytes(state, streams.size() * blocks.front().size);
}
BENCHMARK(inflateFourBlocks);

/// Reads one component of an array through a reader over memory.
template <class Dst, class Src>
void readArray(benchmark::State& state, const Bytes& bytes, bool isBinary, short componentCount, bool swaps) {
    const auto shared = std::make_shared<Bytes>(bytes);
    const std::size_t count = valueCount / static_cast<std::size_t>(componentCount);
    std::vector<Dst> values(count);
    for (auto _ : state) {
        StreamReader reader(std::make_shared<dataio::ByteInputStream>(shared), isBinary, swaps);
        reader.readValues<Dst, Src>(values.data(), count, componentCount, 0);
        benchmark::DoNotOptimize(values.data());
    }
    setItems(state, count);
    setBytes(state, bytes.size());
}

void readAsciiFloats(benchmark::State& state) {
    const std::string text = test::asciiText(test::reals("u", test::ElementType::Float32, [] {
        const std::vector<float> values = wave(valueCount);
        return std::vector<double>(values.begin(), values.end());
    }()));
    readArray<float, float>(state, {text.begin(), text.end()}, false, 1, false);
}
BENCHMARK(readAsciiFloats);

void readAsciiIntegers(benchmark::State& state) {
    std::string text;
    for (std::size_t index = 0; index < valueCount; ++index)
        text += std::to_string(index) + ' ';
    readArray<std::int32_t, std::int64_t>(state, {text.begin(), text.end()}, false, 1, false);
}
BENCHMARK(readAsciiIntegers);

template <class Dst, class Src>
void convert(benchmark::State& state) {
    readArray<Dst, Src>(state, bytesOf(std::vector<Src>(valueCount, Src{1})), true, static_cast<short>(state.range(0)),
                        state.range(1) != 0);
}
const std::vector<std::vector<std::int64_t>> shapes{{1, 3}, {0, 1}};
BENCHMARK(convert<float, float>)->ArgsProduct(shapes)->ArgNames({"components", "swapped"});
BENCHMARK(convert<double, double>)->ArgsProduct(shapes)->ArgNames({"components", "swapped"});
BENCHMARK(convert<std::int32_t, std::int64_t>)->ArgsProduct(shapes)->ArgNames({"components", "swapped"});
BENCHMARK(convert<std::uint8_t, std::int8_t>)->ArgsProduct(shapes)->ArgNames({"components", "swapped"});

/// The call that loading an array makes about a hundred times.
void poll(benchmark::State& state) {
    krohost::Host host;
    for (auto _ : state)
        benchmark::DoNotOptimize(KroUtilInterruptIsSet());
}
BENCHMARK(poll);

/// What registering a zone waits for, when all cells have one type and when the type changes at each cell.
void groupCells(benchmark::State& state) {
    const test::TemporaryFolder folder;
    const test::MeshPiece piece = repeated(state.range(0) != 0 ? test::mixed() : test::hexahedron(), 5000);
    test::vtu().piece(piece).appendedRaw().write(folder / "a.vtu");
    Zone zone;
    zone.pieces = pieces(folder / "a.vtu");
    for (auto _ : state)
        benchmark::DoNotOptimize(groupSections(openFile(zone.pieces.front().points), zone));
    setItems(state, piece.cells.size());
}
BENCHMARK(groupCells)->Arg(0)->Arg(1)->ArgName("mixed");

/// Node maps that are copied (hexahedra), reordered (voxels) and distributed to sections (mixed cells).
void loadNodeMap(benchmark::State& state) {
    const std::array meshes{test::hexahedron(), test::singleCell(11), test::mixed()};
    const test::TemporaryFolder folder;
    const test::MeshPiece piece = repeated(meshes.at(static_cast<std::size_t>(state.range(0))), 5000);
    test::vtu().piece(piece).appendedRaw().write(folder / "a.vtu");
    krohost::Host host;
    host.loadAddOn(ADD_ON);
    if (!host.loadFiles({(folder / "a.vtu").string()}))
        throw std::runtime_error("the file cannot be loaded");
    const krohost::Target nodeMap{1};
    for (auto _ : state) {
        host.load(nodeMap);
        host.unload(nodeMap);
    }
    setItems(state, piece.cells.size());
}
BENCHMARK(loadNodeMap)->DenseRange(0, 2)->ArgName("copied-reordered-distributed");

} // namespace

BENCHMARK_MAIN();
