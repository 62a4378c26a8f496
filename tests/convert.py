#!/usr/bin/python3
"""Compares what independent readers find in files that krohost convert wrote with what they find in the originals.

    convert.py --samples DIR KROHOST

The originals are written by the VTK toolkit, with cells of every type and order, in several pieces, and in compressions
that have to be repaired; those in --samples are converted as well. The toolkit reads back .vtu, .vtkhdf and .cgns, whose
datasets h5py reads as well. Closes with "convert: N passed, N failed"; exits with 1 on a
failure and with 77 where the toolkit is not installed.
"""

import pathlib
import re
import tempfile

import interop  # which ends the run where the toolkit is not installed
import report
import h5py
import numpy
from vtkmodules import vtkCommonDataModel as model
from vtkmodules import vtkIOXML as xml
from vtkmodules.util.numpy_support import vtk_to_numpy
from vtkmodules.vtkIOCGNSReader import vtkCGNSReader
from vtkmodules.vtkIOHDF import vtkHDFReader

# A type that only the toolkit's CGNS reader makes; its nodes have the order of a Lagrange cell.
interop.NODE_ORDERS[29, 27] = interop.NODE_ORDERS[72, 27]


def read_cgns(path):
    reader = vtkCGNSReader()
    reader.SetFileName(str(path))
    reader.UpdateInformation()
    reader.EnableAllBases()
    reader.Update()
    return reader.GetOutput().GetBlock(0).GetBlock(0)


def node_lists(sections):
    return [list(nodes) for cells in sections.values() for nodes in cells]


def contents(grids):
    """The sections, the types and sizes of cells in their order, and the values."""
    zone = interop.expected_zone(grids)
    kinds = [(cell_type, len(nodes)) for grid in grids for cell_type, nodes in interop.cells_of(grid)]
    return (kinds, sorted(str(section) for section in zone["sections"]), zone["nodes"],
            sorted((variable["location"], variable["count"], variable["crc32"]) for variable in zone["variables"]))


def check_cgns(path, pieces):
    """Looks at the bare datasets: elements by section in the host's order of nodes, values in that of elements."""
    sections = interop.sections_of(pieces)
    kinds = [(cell_type, len(nodes)) for piece in pieces for cell_type, nodes in interop.cells_of(piece)]
    by_section = sorted(range(len(kinds)), key=lambda cell: list(sections).index(kinds[cell]))
    with h5py.File(path) as file:
        zone = next(group for group in file["Base"].values() if group.attrs.get("label") == b"Zone_t")
        elements = [group["ElementConnectivity/ data"][()] for group in zone.values()
                    if group.attrs.get("label") == b"Elements_t"]
        lists = [numpy.ravel(cells) + 1 for cells in sections.values()]
        assert sorted(map(list, elements)) == sorted(map(list, lists)), "cgns: elements"
        fields = {name: zone[f"{solution}/{name}/ data"][()] for solution in ("FlowSolution", "CellSolution")
                  if solution in zone for name in zone[solution] if name not in (" data", "GridLocation")}
    for data in (model.vtkUnstructuredGrid.GetPointData, model.vtkUnstructuredGrid.GetCellData):
        for index in range(data(pieces[0]).GetNumberOfArrays()):
            array = data(pieces[0]).GetArray(index)
            rows = numpy.concatenate([vtk_to_numpy(data(piece).GetArray(array.GetName())) for piece in pieces])
            if data is model.vtkUnstructuredGrid.GetCellData:
                rows = rows[by_section]
            for axis, column in zip("XYZ" if rows.ndim > 1 else [""], rows.reshape(len(rows), -1).T):
                assert numpy.array_equal(fields[array.GetName() + axis], column), f"cgns: {array.GetName()}"


def greatest_order(pieces):
    return max(section["gridOrder"] for section in interop.expected_zone(pieces)["sections"] or [{"gridOrder": 1}])


def originals(folder):
    encoding = interop.FEW[2]
    for cell_type, (_, orders) in interop.KINDS.items():
        for order in orders:
            yield interop.write(folder, f"cell{cell_type}-{order}", interop.kind_grid(cell_type, order), encoding)
    # Types alternate here, so that values at cells come in another order than node lists.
    mixed = interop.mixed_grid(400, [("Float", 3), ("Double", 1), ("Short", 1)])
    yield interop.write(folder, "mixed", mixed, encoding)
    yield interop.write(folder, "pieces", mixed, encoding, 3)


def convert(krohost, source, target, *options):
    report.run(krohost, "convert", *options, source, "-o", target)
    return target


def pieces_of(path):
    markup = path.read_bytes().partition(b"<AppendedData")[0].decode()
    count = markup.count("<Piece ")
    return [interop.read(xml.vtkXMLUnstructuredGridReader(), path, index, count) for index in range(count)]


def check(krohost, folder, path):
    pieces = pieces_of(path)
    expected = contents(pieces)
    for suffix, reader in ((".vtu", xml.vtkXMLUnstructuredGridReader()), (".vtkhdf", vtkHDFReader())):
        target = convert(krohost, path, folder / f"{path.stem}-converted{suffix}")
        found = contents([interop.read(reader, target)])
        assert found == expected, f"{suffix}: {found} instead of {expected}"
    target = convert(krohost, path, folder / f"{path.stem}.cgns")
    check_cgns(target, pieces)
    if greatest_order(pieces) <= 2:  # the toolkit's tables of higher orders are incomplete
        found, cells = interop.sections_of([read_cgns(target)]), interop.sections_of(pieces)
        assert sorted(node_lists(found)) == sorted(node_lists(cells)), "cgns: cells"


def check_repair(krohost, folder, compressor):
    """A file that is not loaded, for its compression."""
    grid = interop.mixed_grid(3000, [("Float", 3), ("Double", 1), ("LongLong", 1)])
    wanted = interop.kind_grid(12, 1)
    for mesh, name in ((grid, "large"), (wanted, "hexahedra")):
        for encoding in (interop.FEW[1], interop.FEW[3]):  # those that compress
            path = interop.write(folder, f"{compressor}-{name}", mesh, encoding, 2 if mesh is grid else 1,
                                 compressor=compressor)
            report.run(krohost, path, exit_code=1)
            target = convert(krohost, path, folder / f"{path.stem}-repaired.vtu", "--repair")
            found = contents([interop.read(xml.vtkXMLUnstructuredGridReader(), target)])
            assert found == contents(pieces_of(path)), f"{path.name}: other contents"
            if mesh is grid:
                check_damage(krohost, folder, path)
            report.run(krohost, target, "--demand")


def check_damage(krohost, folder, path):
    """Blocks that are overwritten within the longest run of base64 text."""
    content = path.read_bytes()
    run = max(re.finditer(rb"[A-Za-z0-9+/]+", content), key=lambda match: len(match[0]))
    middle = (run.start() + run.end()) // 2
    damaged = folder / "damaged.vtu"
    damaged.write_bytes(content[:middle] + b"/" * 1200 + content[middle + 1200:])
    found = report.run(krohost, "check", "--explain", "--deep", damaged, exit_code=1).decode()
    damage = r"block \d+ at byte \d+ is damaged: \d+ of \d+ bytes inflate before the damage shows \[damaged-block\]"
    assert re.search(damage, found), f"{path.name}: damage is not found: {found}"


def check_zones(krohost, folder, path):
    """Zones become pieces in one format and zones in another."""
    collection = folder / "zones.vtm"
    collection.write_text('<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet>'
                          + "".join(f'<DataSet name="{name}" file="{path}"/>' for name in ("one", "one", "two/2"))
                          + "</vtkMultiBlockDataSet></VTKFile>")
    hdf = interop.read(vtkHDFReader(), convert(krohost, collection, folder / "zones.vtkhdf"))
    assert contents([hdf]) == contents(pieces_of(path) * 3), "vtkhdf: zones"
    with h5py.File(convert(krohost, collection, folder / "zones.cgns")) as file:
        zones = [name for name, group in file["Base"].items() if group.attrs.get("label") == b"Zone_t"]
    assert zones == ["one", "one_2", "two_2"], zones


def main():
    options = report.options(__doc__, "samples")
    outcomes = report.Report("convert")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        files = list(originals(folder))
        tasks = [(path.name, check, path) for path in [*files, *sorted(options.samples.glob("*.vtu"))]]
        tasks += [(compressor, check_repair, compressor) for compressor in ("LZ4", "LZMA")]
        tasks.append(("zones", check_zones, files[-2]))
        # The libraries are not made for threads.
        outcomes.run(((subject, check, options.krohost, folder, what) for subject, check, what in tasks), 1)
    outcomes.close()


if __name__ == "__main__":
    main()
