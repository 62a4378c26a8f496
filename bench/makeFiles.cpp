// makeFiles FOLDER SCALE NAME writes a file to measure, with SCALE million cells. Files that exist are kept.

#include "bench/Mesh.h"
#include "bench/writeVtu.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace bench;
namespace fs = std::filesystem;

/// A cube of about `cellCount` lattice cells.
Box cube(double cellCount) {
    const auto edge = static_cast<std::size_t>(std::max(1.0, std::round(std::cbrt(cellCount))));
    return {{0, 0, 0}, {edge, edge, edge}};
}

/// A cube of 4 x 4 x 4 boxes.
std::vector<Box> parts(double cellCount) {
    const std::size_t edge = cube(cellCount / 64).size[0];
    std::vector<Box> boxes;
    for (std::size_t index = 0; index < 64; ++index)
        boxes.push_back({{index % 4 * edge, index / 4 % 4 * edge, index / 16 * edge}, {edge, edge, edge}});
    return boxes;
}

/// `count` boxes with gaps between them.
std::vector<Box> row(std::size_t count, double cellCount) {
    std::vector<Box> boxes;
    for (std::size_t index = 0; index < count; ++index) {
        boxes.push_back(cube(cellCount));
        boxes.back().begin[0] = 50 * index;
    }
    return boxes;
}

/// Writes each box as a numbered file in `folder` and returns the files' names.
std::vector<std::string> writeBoxes(const fs::path& folder, const std::vector<Box>& boxes, const Encoding& encoding) {
    fs::create_directories(folder);
    std::vector<std::string> names;
    for (const Box& box : boxes) {
        char name[32];
        std::snprintf(name, sizeof name, "%04zu.vtu", names.size());
        names.push_back((folder.filename() / name).string());
        if (!fs::exists(folder / name))
            writeVtu(folder / name, hexahedra(box), encoding);
    }
    return names;
}

std::string pvtuText(const std::vector<std::string>& names) {
    const auto array = [](const char* name, const char* type, const char* components = "1") {
        return std::string("      <PDataArray type=\"") + type + "\" Name=\"" + name + "\" NumberOfComponents=\"" +
               components + "\"/>\n";
    };
    std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"PUnstructuredGrid\" version=\"1.0\" "
                       "byte_order=\"LittleEndian\" header_type=\"UInt32\">\n  <PUnstructuredGrid GhostLevel=\"0\">\n"
                       "    <PPointData>\n" +
                       array("pressure", "Float32") + array("temperature", "Float32") +
                       array("velocity", "Float32", "3") + "    </PPointData>\n    <PCellData>\n" +
                       array("quality", "Float32") + "    </PCellData>\n    <PPoints>\n" +
                       array("Points", "Float32", "3") + "    </PPoints>\n";
    for (const std::string& name : names)
        text += "    <Piece Source=\"" + name + "\"/>\n";
    return text + "  </PUnstructuredGrid>\n</VTKFile>\n";
}

std::string vtmText(const std::vector<std::string>& names) {
    std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"vtkMultiBlockDataSet\" version=\"1.0\" "
                       "byte_order=\"LittleEndian\" header_type=\"UInt32\">\n  <vtkMultiBlockDataSet>\n";
    for (std::size_t index = 0; index < names.size(); ++index)
        text += "    <DataSet index=\"" + std::to_string(index) + "\" name=\"part" + std::to_string(index) +
                "\" file=\"" + names[index] + "\"/>\n";
    return text + "  </vtkMultiBlockDataSet>\n</VTKFile>\n";
}

/// A file or folder that can be asked for by name.
struct Result {
    std::string name;
    std::string extension; ///< empty for a folder
    std::function<void(const fs::path&)> write;
};

std::vector<Result> results(const fs::path& folder, double scale) {
    std::vector<Result> list;
    for (const Encoding& encoding : encodings)
        list.push_back({std::string("hexahedra-") + encoding.name, ".vtu", [=, &encoding](const fs::path& path) {
                            writeVtu(path, hexahedra(cube(1e6 * scale)), encoding);
                        }});
    list.push_back(
        {"mixed-raw", ".vtu", [=](const fs::path& path) { writeVtu(path, mixedCells(cube(1e6 / 3 * scale)), raw); }});
    list.push_back({"pieces", ".pvtu", [=](const fs::path& path) {
                        writeText(path, pvtuText(writeBoxes(folder / "parts", parts(1e6 * scale), raw)));
                    }});
    list.push_back(
        {"series", "", [=](const fs::path& path) { writeBoxes(path, row(200, 2e4 * std::min(scale, 1.0)), rawZlib); }});
    for (const std::size_t count : {50, 500, 5000, 50000})
        list.push_back({"tiny-" + std::to_string(count), ".vtm", [=](const fs::path& path) {
                            writeText(path, vtmText(writeBoxes(folder / "tiny", row(count, 64), raw)));
                        }});
    for (const std::size_t count : {10, 100, 1000, 10000})
        list.push_back({"arrays-" + std::to_string(count), ".vtu",
                        [=](const fs::path& path) { writeVtu(path, manyArrays(cube(1000), count), raw); }});
    return list;
}

void run(const fs::path& folder, double scale, const std::string& name) {
    fs::create_directories(folder);
    const std::vector<Result> list = results(folder, scale);
    const auto result = std::ranges::find(list, name, &Result::name);
    if (result == list.end())
        throw std::invalid_argument("no file is called " + name);
    const fs::path path = folder / (name + result->extension);
    if (fs::exists(path) && !fs::is_directory(path))
        return;
    std::fprintf(stderr, "writing %s\n", path.c_str());
    result->write(path);
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 4) {
        std::fprintf(stderr, "usage: makeFiles FOLDER SCALE NAME\n");
        return 2;
    }
    try {
        run(arguments[1], std::stod(arguments[2]), arguments[3]);
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "makeFiles: %s\n", exception.what());
        return 1;
    }
}
