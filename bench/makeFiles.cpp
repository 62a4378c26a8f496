// Writes the files that are measured: makeFiles FOLDER [--scale S] [--only NAME...]. What is there already stays.

#include "bench/Mesh.h"
#include "bench/writeVtu.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace bench;
namespace fs = std::filesystem;

/// A cube of about so many lattice cells.
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

/// `count` boxes that lie apart.
std::vector<Box> row(std::size_t count, double cellCount) {
    std::vector<Box> boxes;
    for (std::size_t index = 0; index < count; ++index) {
        boxes.push_back(cube(cellCount));
        boxes.back().begin[0] = 50 * index;
    }
    return boxes;
}

/// Writes the boxes into a folder of their own, as files named by their numbers, and returns their names.
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

struct Job {
    std::string name;
    fs::path result; ///< is there when the job has been done
    std::function<void(const fs::path&)> write;
};

/// The mesh that several jobs in a row are about, made when it is first asked for.
class SharedMesh {
public:
    using Make = Mesh (*)(const Box&);

    const Mesh& get(Make make, const Box& box) {
        if (make_ != make)
            mesh_ = make(box);
        make_ = make;
        return mesh_;
    }

private:
    Make make_ = nullptr;
    Mesh mesh_;
};

std::vector<Job> jobs(const fs::path& folder, double scale, SharedMesh& shared) {
    std::vector<Job> list;
    const auto add = [&](const std::string& name, const std::string& extension, auto write) {
        list.push_back({name, folder / (name + extension), write});
    };
    const auto addKind = [&](const std::string& kind, SharedMesh::Make make, double cellCount) {
        for (const Encoding& encoding : encodings)
            add(kind + "-" + encoding.name, ".vtu", [&shared, make, cellCount, &encoding](const fs::path& path) {
                writeVtu(path, shared.get(make, cube(cellCount)), encoding);
            });
    };
    addKind("hexahedra", hexahedra, 1e6 * scale);
    addKind("mixed", mixedCells, 1e6 / 3 * scale);
    add("pieces", ".pvtu", [=](const fs::path& path) {
        writeText(path, pvtuText(writeBoxes(folder / "parts", parts(1e6 * scale), raw)));
    });
    add("members", ".vtm",
        [=](const fs::path& path) { writeText(path, vtmText(writeBoxes(folder / "parts", parts(1e6 * scale), raw))); });
    add("series", "", [=](const fs::path& path) { writeBoxes(path, row(200, 2e4 * std::min(scale, 1.0)), rawZlib); });
    for (const std::size_t count : {50, 500, 5000, 50000})
        add("tiny-" + std::to_string(count), ".vtm",
            [=](const fs::path& path) { writeText(path, vtmText(writeBoxes(folder / "tiny", row(count, 64), raw))); });
    for (const std::size_t count : {10, 100, 1000, 10000})
        add("arrays-" + std::to_string(count), ".vtu",
            [=](const fs::path& path) { writeVtu(path, manyArrays(cube(1000), count), raw); });
    return list;
}

/// Nothing when the arguments are none that are taken.
struct Arguments {
    fs::path folder;
    double scale = 1;
    std::vector<std::string> only;
};

std::optional<Arguments> parse(const std::vector<std::string>& words) {
    if (words.empty() || words.front().starts_with("--"))
        return std::nullopt;
    Arguments arguments{words.front(), 1, {}};
    for (std::size_t index = 1; index < words.size(); ++index) {
        if (words[index] == "--scale" && index + 1 < words.size())
            arguments.scale = std::stod(words[++index]);
        else if (words[index] == "--only")
            arguments.only.assign(words.begin() + static_cast<std::ptrdiff_t>(index) + 1, words.end());
        else if (arguments.only.empty())
            return std::nullopt;
    }
    return arguments;
}

void run(const Arguments& arguments) {
    fs::create_directories(arguments.folder);
    SharedMesh shared;
    for (const Job& job : jobs(arguments.folder, arguments.scale, shared)) {
        const bool isWanted = arguments.only.empty() ||
                              std::find(arguments.only.begin(), arguments.only.end(), job.name) != arguments.only.end();
        if (!isWanted || (fs::exists(job.result) && !fs::is_directory(job.result)))
            continue;
        std::fprintf(stderr, "writing %s\n", job.result.c_str());
        job.write(job.result);
    }
}

} // namespace

int main(int argumentCount, char** words) {
    try {
        const auto arguments = parse({words + 1, words + argumentCount});
        if (arguments)
            run(*arguments);
        else
            std::fprintf(stderr, "usage: makeFiles FOLDER [--scale S] [--only NAME...]\n");
        return arguments ? 0 : 2;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "makeFiles: %s\n", exception.what());
        return 1;
    }
}
