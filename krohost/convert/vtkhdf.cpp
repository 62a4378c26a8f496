#include "krohost/convert/vtkhdf.h"

#include "krohost/convert/WriteError.h"
#include "krohost/convert/blocks.h"
#include "krohost/convert/names.h"

#include <fmt/format.h>
#include <hdf5.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <utility>

namespace krohost::convert {

namespace {

constexpr std::size_t blockByteLimit = 1 << 20;

/// Tuples that are written, and deflated, together.
std::size_t blockTupleCount(const Array& array) {
    constexpr std::size_t tupleLimit = 1 << 14;
    return std::clamp<std::size_t>(blockByteLimit / reader::byteCount(array.type) / array.componentCount, 1,
                                   tupleLimit);
}

/// An open object of the library, closed at the end. Throws FileError for one that could not be made.
class Handle {
public:
    Handle(hid_t id, herr_t (*close)(hid_t), const std::string& what) : id_{id}, close_{close} {
        if (id < 0)
            throw FileError(fmt::format("HDF5 cannot make {}", what));
    }
    ~Handle() { close_(id_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    operator hid_t() const { return id_; }

private:
    hid_t id_;
    herr_t (*close_)(hid_t);
};

void require(herr_t status, const std::string& what) {
    if (status < 0)
        throw FileError(fmt::format("HDF5 cannot write {}", what));
}

hid_t hdfType(ElementType type) {
    switch (type) {
    case ElementType::Int8:
        return H5T_STD_I8LE;
    case ElementType::UInt8:
        return H5T_STD_U8LE;
    case ElementType::Int16:
        return H5T_STD_I16LE;
    case ElementType::UInt16:
        return H5T_STD_U16LE;
    case ElementType::Int32:
        return H5T_STD_I32LE;
    case ElementType::UInt32:
        return H5T_STD_U32LE;
    case ElementType::Int64:
        return H5T_STD_I64LE;
    case ElementType::UInt64:
        return H5T_STD_U64LE;
    case ElementType::Float32:
        return H5T_IEEE_F32LE;
    case ElementType::Float64:
        return H5T_IEEE_F64LE;
    }
    throw FileError("HDF5 has no such type");
}

Handle group(hid_t parent, const char* name) {
    return {H5Gcreate2(parent, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), H5Gclose, name};
}

void attribute(hid_t group, const char* name, hid_t type, hid_t space, const void* value) {
    const Handle attribute{H5Acreate2(group, name, type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose, name};
    require(H5Awrite(attribute, type, value), name);
}

/// Arrays of all pieces one after the other.
class HdfDataset {
public:
    HdfDataset(hid_t parent, const Array& first, std::uint64_t tupleCount, bool isCompressed)
        : name_{first.name}, rank_{first.componentCount > 1 ? 2 : 1}, type_{hdfType(first.type)},
          sizes_{tupleCount, first.componentCount}, space_{H5Screate_simple(rank_, sizes_.data(), nullptr), H5Sclose,
                                                           name_},
          properties_{H5Pcreate(H5P_DATASET_CREATE), H5Pclose, name_},
          dataset_{create(parent, isCompressed && tupleCount > 0, blockTupleCount(first)), H5Dclose, name_} {}

    void append(const Array& array) {
        produceInBlocks(array, blockTupleCount(array), [&](std::span<std::byte> block) {
            const hsize_t tupleByteCount = array.componentCount * reader::byteCount(array.type);
            const std::array<hsize_t, 2> begin{writtenCount_, 0}, count{block.size() / tupleByteCount, sizes_[1]};
            const Handle memory{H5Screate_simple(rank_, count.data(), nullptr), H5Sclose, name_};
            require(H5Sselect_hyperslab(space_, H5S_SELECT_SET, begin.data(), nullptr, count.data(), nullptr), name_);
            require(H5Dwrite(dataset_, type_, memory, space_, H5P_DEFAULT, block.data()), name_);
            writtenCount_ += count[0];
        });
    }

private:
    hid_t create(hid_t parent, bool isCompressed, hsize_t chunkTupleCount) {
        const std::array<hsize_t, 2> chunk{std::min(sizes_[0], chunkTupleCount), sizes_[1]};
        if (isCompressed) {
            require(H5Pset_chunk(properties_, rank_, chunk.data()), name_);
            require(H5Pset_deflate(properties_, 4), name_);
        }
        return H5Dcreate2(parent, name_.c_str(), type_, space_, H5P_DEFAULT, properties_, H5P_DEFAULT);
    }

    std::string name_;
    int rank_;
    hid_t type_;
    std::array<hsize_t, 2> sizes_;
    Handle space_;
    Handle properties_;
    Handle dataset_;
    hsize_t writtenCount_ = 0;
};

/// Writes an array of every grid, one after the other, as one dataset.
template <class ArrayOf>
void writeArrays(hid_t parent, bool isCompressed, const std::vector<Grid>& grids, const ArrayOf& arrayOf) {
    std::vector<Array> pieces;
    std::transform(grids.begin(), grids.end(), std::back_inserter(pieces), arrayOf);
    const std::uint64_t tupleCount =
        std::accumulate(pieces.begin(), pieces.end(), std::uint64_t{0},
                        [](std::uint64_t sum, const Array& array) { return sum + array.tupleCount; });
    HdfDataset dataset{parent, pieces.front(), tupleCount, isCompressed};
    for (const Array& array : pieces)
        dataset.append(array);
}

/// The array under another name and, for offsets, with the zero that this format has in front.
Array renamed(Array array, std::string name, bool hasLeadingZero = false) {
    array.name = std::move(name);
    if (hasLeadingZero) {
        ++array.tupleCount;
        array.produce = [produce = array.produce](const Sink& sink) {
            constexpr std::int64_t zero = 0;
            sink(std::as_bytes(std::span{&zero, 1}));
            produce(sink);
        };
    }
    return array;
}

void writeMesh(hid_t root, bool isCompressed, const std::vector<Grid>& grids) {
    const auto writeCounts = [&](const char* name, const auto& countOf) {
        writeArrays(root, false, grids,
                    [&](const Grid& grid) { return singleValue(name, ElementType::Int64, countOf(grid)); });
    };
    writeCounts("NumberOfPoints", [](const Grid& grid) { return grid.pointCount; });
    writeCounts("NumberOfCells", [](const Grid& grid) { return grid.cellCount; });
    writeCounts("NumberOfConnectivityIds", [](const Grid& grid) { return grid.connectivity.tupleCount; });
    for (const auto& [name, array] : {std::pair{"Points", &Grid::points},
                                      {"Connectivity", &Grid::connectivity},
                                      {"Offsets", &Grid::offsets},
                                      {"Types", &Grid::types}})
        writeArrays(root, isCompressed, grids, [&, name = name, array = array](const Grid& grid) {
            return renamed(grid.*array, name, array == &Grid::offsets);
        });
}

void writeFields(hid_t root, const char* groupName, bool isCompressed, const std::vector<Grid>& grids,
                 std::vector<Array> Grid::*fields, Losses& losses) {
    constexpr std::size_t nameLength = 1024;
    const Handle fieldGroup = group(root, groupName);
    Names names{nameLength, "VTKHDF", losses, true};
    for (std::size_t index = 0; index < (grids.front().*fields).size(); ++index) {
        const std::string name = names.claim((grids.front().*fields)[index].name);
        writeArrays(fieldGroup, isCompressed, grids,
                    [&](const Grid& grid) { return renamed((grid.*fields)[index], name); });
    }
}

void requireSameArrays(const std::vector<Grid>& grids) {
    const auto isSame = [](const Array& left, const Array& right) {
        return left.name == right.name && left.type == right.type && left.componentCount == right.componentCount;
    };
    const auto areSame = [&](const std::vector<Array>& left, const std::vector<Array>& right) {
        return std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame);
    };
    const Grid& first = grids.front();
    for (const Grid& grid : grids)
        if (!isSame(grid.points, first.points) || !areSame(grid.pointData, first.pointData) ||
            !areSame(grid.cellData, first.cellData))
            throw WriteError(fmt::format("The zones \"{}\" and \"{}\" differ in their variables, so that they are no "
                                         "pieces of one grid; write a .vtm instead.",
                                         first.name, grid.name));
}

} // namespace

void writeVtkhdf(const std::filesystem::path& path, bool isCompressed, const std::vector<Grid>& grids, Losses& losses) {
    requireSameArrays(grids);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); // what fails is said by an exception
    const Handle file{H5Fcreate(path.c_str(), H5F_ACC_EXCL, H5P_DEFAULT, H5P_DEFAULT), H5Fclose, path.string()};
    {
        const Handle root = group(file, "VTKHDF");
        constexpr hsize_t partCount = 2;
        constexpr std::array<std::int64_t, 2> version{1, 0};
        attribute(root, "Version", H5T_NATIVE_INT64,
                  Handle{H5Screate_simple(1, &partCount, nullptr), H5Sclose, "Version"}, version.data());
        constexpr std::string_view type = "UnstructuredGrid";
        const Handle text{H5Tcopy(H5T_C_S1), H5Tclose, "Type"};
        require(H5Tset_size(text, type.size()), "Type");
        attribute(root, "Type", text, Handle{H5Screate(H5S_SCALAR), H5Sclose, "Type"}, type.data());
        writeMesh(root, isCompressed, grids);
        writeFields(root, "PointData", isCompressed, grids, &Grid::pointData, losses);
        writeFields(root, "CellData", isCompressed, grids, &Grid::cellData, losses);
        writeFields(root, "FieldData", false, {grids.front()}, &Grid::fieldData, losses);
    }
    require(H5Fflush(file, H5F_SCOPE_GLOBAL), path.string());
}

} // namespace krohost::convert
