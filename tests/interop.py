#!/usr/bin/python3
"""Compares what krohost shows of a file with what the VTK toolkit reads in it.

    interop.py --samples DIR KROHOST

The files are written by the toolkit's own writers in every encoding, with every element type and number of components,
with cells of every type and order, in pieces and as collections; those in --samples are compared as well. Closes with
"interop: N passed, N failed"; exits with 1 on a failure and with 77 where the toolkit is not installed.
"""

import itertools
import json
import pathlib
import re
import tempfile
import zlib

import report
from cells import KINDS, NODE_ORDERS, PARTS, POINT, TETRAHEDRON, inside, node_count

try:
    import numpy
    from vtkmodules import vtkCommonCore as core
    from vtkmodules import vtkCommonDataModel as model
    from vtkmodules import vtkIOXML as xml
    from vtkmodules.vtkFiltersParallel import vtkExtractUnstructuredGridPiece
    from vtkmodules.vtkFiltersSources import vtkCellTypeSource
    from vtkmodules.util.numpy_support import vtk_to_numpy
    from vtkmodules.vtkIOParallelXML import vtkXMLPUnstructuredGridWriter
except ImportError as reason:
    report.skip("interop", f"vtk not installed ({reason})", "python3-vtk9")

# ---- What the host must show -----------------------------------------------------------------------------------------

ZONE_TYPES = {1: 0, 3: 5, 5: 1, 8: 2, 9: 2, 10: 3, 11: 4, 12: 4}  # of a zone with one kind of cells; else 8

# The toolkit's array classes by the word in their name, and the host's storage with numpy's name for it.
ARRAYS = {
    word: (getattr(core, f"vtk{word}Array"), storage) for storage, words in {
        ("byte", "u1"): "SignedChar UnsignedChar Char", ("int16", "<i2"): "Short UnsignedShort",
        ("int32", "<i4"): "Int UnsignedInt Long UnsignedLong LongLong UnsignedLongLong IdType",
        ("float32", "<f4"): "Float", ("float64", "<f8"): "Double"}.items() for word in words.split()}
STORAGE = {array_class().GetDataType(): storage for array_class, storage in ARRAYS.values()}


def check_node_order(cell_type, order):
    """Finds the host's nodes where those of a cell lie that the toolkit makes."""
    source = vtkCellTypeSource()
    source.SetCellType({28: 70, 32: 73}.get(cell_type, cell_type))  # whose nodes are in the same order
    source.SetCellOrder(order)
    source.Update()
    _, nodes = next(cells_of(source.GetOutput()))
    points = vtk_to_numpy(source.GetOutput().GetPoints().GetData())[nodes]
    shape = KINDS[cell_type][0]
    corners = points[:node_count(shape, 1)]
    places = [*corners, *(node for part in PARTS[shape].split() for node in inside(corners[[*map(int, part)]], order))]
    if (shape, order) == (TETRAHEDRON, 4):
        places.append(corners.mean(0))
    found = points[NODE_ORDERS.get((cell_type, len(nodes)), slice(None))]
    assert numpy.allclose(found, places, atol=1e-6), f"{found} instead of {places}"


def crc(values):
    return f"{zlib.crc32(values.tobytes()):08x}"


def variables_of(arrays_of_pieces, names, location):
    kind, stored = STORAGE[arrays_of_pieces[0].GetDataType()]
    rows = numpy.concatenate([vtk_to_numpy(array).reshape(-1, len(names)) for array in arrays_of_pieces])
    for name, column in zip(names, rows.astype(stored).T):
        numbers = column[column == column].tolist()
        yield {"name": name, "type": kind, "location": location, "count": len(column),
               "min": min(numbers, default=None), "max": max(numbers, default=None), "crc32": crc(column)}


def field_variables(attributes_of_pieces, location):
    for index in range(attributes_of_pieces[0].GetNumberOfArrays()):
        array = attributes_of_pieces[0].GetArray(index)
        same = [attributes.GetArray(array.GetName()) for attributes in attributes_of_pieces]
        name, count = array.GetName(), array.GetNumberOfComponents()
        names = [name] if count == 1 else [f"{name}_{'XYZ'[i] if count <= 3 else i + 1}" for i in range(count)]
        yield from variables_of(same, names, location)


def cells_of(grid):
    """The (type, nodes) of every cell."""
    if grid.GetNumberOfCells() > 0:
        nodes = vtk_to_numpy(grid.GetCells().GetConnectivityArray())
        ends = vtk_to_numpy(grid.GetCells().GetOffsetsArray())
        yield from zip(vtk_to_numpy(grid.GetCellTypesArray()).tolist(), numpy.split(nodes, ends[1:-1]))


def sections_of(pieces):
    """The combinations of (type, node count) in order of appearance, with the node list of each."""
    lists, shift = {}, 0
    for piece in pieces:
        for cell_type, nodes in cells_of(piece):
            kind = cell_type, len(nodes)
            lists.setdefault(kind, []).append(nodes[NODE_ORDERS.get(kind, slice(None))] + shift)
        shift += piece.GetNumberOfPoints()
    return lists or {(1, 1): []}


def section(kind, cells, other_shapes):
    """Vertices beside other cells become cells of the first other shape with the same node throughout."""
    shape, orders = KINDS[kind[0]]
    order = next(order for order in orders if node_count(shape, order) == kind[1])
    if shape == POINT:
        shape = other_shapes[0]
        cells = numpy.repeat(cells, node_count(shape, 1), axis=1)
    return {"shapeCode": shape, "gridOrder": order, "nodesPerElement": node_count(shape, order), "elements": len(cells),
            "crc32": crc(numpy.ravel(cells).astype("<i4"))}


def expected_zone(pieces):
    lists = sections_of(pieces)
    zone_type = ZONE_TYPES.get(next(iter(lists))[0], 8) if len(lists) == 1 else 8
    other_shapes = [KINDS[cell_type][0] for cell_type, _ in lists if cell_type != 1]
    points = [piece.GetPoints().GetData() for piece in pieces]
    nodes = sum(piece.GetNumberOfPoints() for piece in pieces)
    return {
        "zoneType": zone_type, "nodes": nodes,
        "elements": nodes if zone_type == 0 else sum(piece.GetNumberOfCells() for piece in pieces),
        "sections": [] if zone_type == 0 else [section(key, cells, other_shapes) for key, cells in lists.items()],
        "variables": [*variables_of(points, "XYZ", "nodal"),
                      *field_variables([piece.GetPointData() for piece in pieces], "nodal"),
                      *field_variables([piece.GetCellData() for piece in pieces], "cell")],
    }


def member_names(composite, block=None):
    """The name of each grid in a tree of blocks and of the block around it, which ends with the first inner block."""
    for index in range(composite.GetNumberOfBlocks()):
        name = composite.GetMetaData(index).Get(model.vtkCompositeDataSet.NAME())
        if isinstance(composite.GetBlock(index), model.vtkMultiBlockDataSet):
            yield from member_names(composite.GetBlock(index), name)
            block = None
        else:
            yield {"name": name, "aux": {"Block.name": block}}


def read(reader, path, piece=0, piece_count=1):
    reader.SetFileName(str(path))
    reader.UpdatePiece(piece, piece_count, 0)
    return reader.GetOutput()


def expected_zones(path):
    """One zone per file, as the toolkit reads it, piece by piece."""
    markup = path.read_bytes().partition(b"<AppendedData")[0].decode()
    if path.suffix == ".vtu":
        count = markup.count("<Piece ")
        pieces = [read(xml.vtkXMLUnstructuredGridReader(), path, index, count) for index in range(count)]
        return [{"name": path.stem, **expected_zone(pieces)}]
    zones = [zone for member in re.findall(r'(?:file|Source)="([^"]+)"', markup)
             for zone in expected_zones(path.parent / member)]
    if path.suffix == ".vtm":
        names = member_names(read(xml.vtkXMLMultiBlockDataReader(), path))
        zones = [{**zone, **name} for zone, name in zip(zones, names, strict=True)]
    return zones


# ---- Files -----------------------------------------------------------------------------------------------------------

def make_array(kind, name, tuple_count, components=1):
    """Values all over the range of the type, so that narrowing and signs show."""
    array = ARRAYS[kind][0]()
    array.SetName(name)
    array.SetNumberOfComponents(components)
    array.SetNumberOfTuples(tuple_count)
    index = numpy.arange(tuple_count * components, dtype="u8")
    values = vtk_to_numpy(array).reshape(-1)
    if values.dtype.kind == "f":
        values[:] = (index * 37 % 101 - 50.0) / 7 * 10.0 ** (index % 9 - 4.0)
    elif kind == "IdType":  # written in 32 bits as well
        values[:] = index * 3
    else:
        values[:] = (index * 0x9E3779B97F4A7C15).astype(values.dtype)
    return array


def make_grid(cells, point_count, arrays=(), point_kind="Float"):
    """With a nodal and a cell-centred array of each (element type, components)."""
    grid, points = model.vtkUnstructuredGrid(), core.vtkPoints()
    points.SetData(make_array(point_kind, "Points", point_count, 3))
    grid.SetPoints(points)
    grid.Allocate(len(cells))
    for cell_type, nodes in cells:
        grid.InsertNextCell(cell_type, len(nodes), nodes)
    for kind, components in arrays:
        name = f"{kind}x{components}"
        grid.GetPointData().AddArray(make_array(kind, name, point_count, components))
        grid.GetCellData().AddArray(make_array(kind, f"cell {name}", len(cells), components))
    return grid


def kind_grid(cell_type, order):
    """Three cells of one kind over shuffled nodes; vertices, which make an ordered zone, one on each node."""
    nodes = node_count(KINDS[cell_type][0], order)
    points = 3 if cell_type == 1 else nodes + 5
    cells = [(cell_type, [(index * 17 + first) % points for index in range(nodes)]) for first in (4, 0, 2)]
    assert all(len(set(nodes)) == len(nodes) for _, nodes in cells), "a repeated node would hide a wrong order"
    return make_grid(cells, points, [("Double", 1)])


def mixed_grid(cell_count, arrays=(), point_kind="Float"):
    kinds = itertools.cycle([(12, 8), (12, 8), (13, 6), (12, 8), (14, 5), (10, 4), (10, 4)])
    cells = [(cell_type, [(3 * cell + 11 * index) % cell_count for index in range(nodes)])
             for cell, (cell_type, nodes) in zip(range(cell_count), kinds)]
    return make_grid(cells, cell_count, arrays, point_kind)


# An encoding is where and how data are stored, compression, byte order, header words and the integers of cells.
COMPRESSIONS = {"plain": (0, 32768), "zlib": (5, 32768), "dense": (9, 1000)}  # level, block size
ENCODINGS = [*itertools.product(["ascii"], ["plain"], ["LittleEndian"], ["UInt32"], ["Int32", "Int64"]),
             *itertools.product(["binary", "raw", "base64"], COMPRESSIONS, ["LittleEndian", "BigEndian"],
                                ["UInt32", "UInt64"], ["Int32", "Int64"])]
FEW = [words.split() for words in ("ascii plain LittleEndian UInt32 Int32", "binary zlib LittleEndian UInt32 Int32",
                                   "raw plain BigEndian UInt64 Int64", "base64 dense BigEndian UInt32 Int64")]


def write(folder, name, source, encoding, pieces=1, writer_class=xml.vtkXMLUnstructuredGridWriter,
          compressor="ZLIB"):
    mode, compression, byte_order, header, identifiers = encoding
    writer = writer_class()
    path = folder / f"{name}-{pieces}-{'-'.join(encoding)}.{writer.GetDefaultFileExtension()}"
    writer.SetFileName(str(path))
    writer.SetDataMode({"ascii": writer.Ascii, "binary": writer.Binary}.get(mode, writer.Appended))
    writer.SetEncodeAppendedData(mode == "base64")
    level, block_size = COMPRESSIONS[compression]
    writer.SetCompressorType(getattr(writer, compressor if level else "NONE"))
    writer.SetCompressionLevel(level)
    writer.SetBlockSize(block_size)
    writer.SetByteOrder(getattr(writer, byte_order))
    writer.SetHeaderType(getattr(writer, header))
    writer.SetIdType(getattr(writer, identifiers))
    if isinstance(source, model.vtkUnstructuredGrid):
        getattr(source.GetCells(), f"ConvertTo{identifiers[3:]}BitStorage")()
    writer.SetInputData(source)
    if pieces > 1:
        writer.SetNumberOfPieces(pieces)
        splitter = vtkExtractUnstructuredGridPiece()
        splitter.CreateGhostCellsOff()
        splitter.SetInputData(source)
        writer.SetInputConnection(splitter.GetOutputPort())
    if writer_class is vtkXMLPUnstructuredGridWriter:
        writer.SetEndPiece(pieces - 1)
    if writer.Write() != 1:
        raise RuntimeError(f"the toolkit did not write {path}")
    return path


def encoding_files(folder):
    """Every encoding of every element type, in one piece and in several; every element type in tuples of every size."""
    grid = mixed_grid(400, zip(ARRAYS, itertools.cycle([1, 2, 3, 4, 9])))
    for encoding, pieces in itertools.product(ENCODINGS, (1, 3)):
        yield write(folder, "encoding", grid, encoding, pieces)
    for kind, encoding in itertools.product(ARRAYS, ENCODINGS):
        if encoding[1] != "dense" and encoding[3:] == ("UInt32", "Int32"):
            grid = mixed_grid(60, [(kind, components) for components in (1, 2, 3, 4, 9)])
            yield write(folder, f"element-{kind}", grid, encoding)


def cell_files(folder):
    kinds = [(cell_type, order) for cell_type, (_, orders) in KINDS.items() for order in orders]
    for (cell_type, order), encoding, pieces in itertools.product(kinds, FEW, (1, 2)):
        if cell_type == 1 and pieces > 1:  # the toolkit leaves nodes without vertices in the pieces
            continue
        path = write(folder, f"cell{cell_type}-{order}", kind_grid(cell_type, order), encoding, pieces)
        yield path
        if cell_type == 72:
            old = path.with_stem(f"{path.stem}-old")
            old.write_bytes(re.sub(rb'(<VTKFile[^>]* version=")[^"]*', rb"\g<1>2.0", path.read_bytes(), count=1))
            yield old


def make_blocks(members):
    blocks = model.vtkMultiBlockDataSet()
    for index, (name, member) in enumerate(members.items()):
        blocks.SetBlock(index, member)
        blocks.GetMetaData(index).Set(model.vtkCompositeDataSet.NAME(), name)
    return blocks


def collection_files(folder):
    grid = mixed_grid(100, [("Float", 3), ("Short", 1)])
    inner = make_blocks({"first": kind_grid(5, 1), "größer": grid})
    outer = make_blocks({"tip": kind_grid(10, 1), "inner": inner, "behind it": kind_grid(13, 1)})
    blocks = make_blocks({"block 0": grid, "outer": outer, "block 2": kind_grid(12, 1)})
    for encoding in FEW:
        yield write(folder, "parallel", grid, encoding, 3, vtkXMLPUnstructuredGridWriter)
        yield write(folder, "blocks", blocks, encoding, writer_class=xml.vtkXMLMultiBlockDataWriter)


def single_files(folder):
    """What else a grid can hold: other coordinates, few or no cells, names, field data, values that are no numbers."""
    named, timed, undefined = kind_grid(10, 1), kind_grid(12, 1), kind_grid(9, 1)
    for name in ("in need of escapes", "Größe [m²]", " leading and trailing "):
        named.GetPointData().AddArray(make_array("Float", name, named.GetNumberOfPoints()))
    named.GetPointData().SetActiveScalars("Größe [m²]")
    text = core.vtkStringArray()
    text.SetName("author")
    text.InsertNextValue("A. B. & <c>")
    for array in (make_array("Double", "TimeValue", 1), make_array("Int", "several", 7), text):
        timed.GetFieldData().AddArray(array)
    array = make_array("Float", "undefined", undefined.GetNumberOfPoints())
    vtk_to_numpy(array)[:5] = [float("nan"), float("inf"), float("-inf"), -0.0, 1e-42]
    undefined.GetPointData().AddArray(array)
    vertices = [(1, [3]), (5, [0, 1, 2]), (1, [4]), (5, [2, 3, 4])]
    grids = {"points-double": mixed_grid(50, point_kind="Double"), "points-int": mixed_grid(50, point_kind="Int"),
             "no-cells": make_grid([], 12), "vertices": make_grid(vertices, 5, [("UnsignedShort", 1)]),
             "names": named, "field-data": timed, "undefined": undefined}
    for name, grid in grids.items():
        for encoding in FEW[name == "undefined":]:  # the toolkit does not read such values as text
            path = write(folder, name, grid, encoding)
            # The toolkit writes names as they are, and reads them back only when they are escaped.
            path.write_bytes(path.read_bytes().replace(b"in need of escapes", b"a &lt; b &amp; &quot;c&quot;"))
            yield path


# ---- Comparison ------------------------------------------------------------------------------------------------------

def differences(expected, actual, where):
    """What differs between two values, in sentences; of objects, only the expected members are compared."""
    if isinstance(expected, dict) and isinstance(actual, dict):
        for key, value in expected.items():
            yield from differences(value, actual.get(key), f"{where}.{key}")
    elif isinstance(expected, list) and isinstance(actual, list):
        if len(expected) != len(actual):
            yield f"{where}: expected {len(expected)} of them, is {len(actual)}"
        for index, (left, right) in enumerate(zip(expected, actual), 1):
            yield from differences(left, right, f"{where}[{index}]")
    elif actual != (None if expected in (float("inf"), float("-inf")) else expected):  # which the document lacks
        yield f"{where}: expected {expected!r}, is {actual!r}"


def compare(krohost, path, expected):
    document = json.loads(report.run(krohost, "info", "--json", "--demand", path))
    assert not document["dialogs"], document["dialogs"]
    names = {variable["number"]: variable["name"] for variable in document["variables"]}
    for zone in document["zones"]:
        for variable in zone["variables"]:
            variable["name"] = names.get(variable["number"])
    return differences(expected, document["zones"], "zones")


def main():
    options = report.options(__doc__, "samples")
    outcomes = report.Report("interop")
    with tempfile.TemporaryDirectory() as folder:
        families = encoding_files, cell_files, collection_files, single_files
        files = itertools.chain(*(files(pathlib.Path(folder)) for files in families), options.samples.glob("*.vtu"))
        # The toolkit reads on this thread while the processes run on the others.
        outcomes.run((path.name, compare, options.krohost, path, expected_zones(path)) for path in files)
    kinds = [(kind, order) for kind, (_, orders) in KINDS.items() for order in orders]
    outcomes.run((f"nodes of {kind}", check_node_order, kind, order)
                 for kind, order in kinds if kind not in (1, 8, 11))  # of which the toolkit makes none
    outcomes.close()


if __name__ == "__main__":
    main()
