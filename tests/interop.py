#!/usr/bin/python3
"""Compares what krohost shows of a file with what the VTK toolkit reads in it.

    interop.py [--samples DIR] [--keep DIR] KROHOST

The files are written by the toolkit's own writers in every encoding they have, one per cell type and order, in pieces
and as collections; those in --samples are compared as well. Closes with "interop: N passed, N failed"; exits with 1 on
a failure and with 77 where the toolkit is not installed.
"""

import argparse
import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import zlib

try:
    from vtkmodules import vtkCommonCore as core
    from vtkmodules import vtkCommonDataModel as model
    from vtkmodules import vtkIOXML as xml
    from vtkmodules.vtkFiltersParallel import vtkExtractUnstructuredGridPiece
    from vtkmodules.vtkIOParallelXML import vtkXMLPUnstructuredGridWriter
except ImportError as reason:
    print(f"interop: vtk not installed ({reason}); on Debian it is the package python3-vtk9")
    sys.exit(77)

# ---- What the host must show -----------------------------------------------------------------------------------------

LINE, TRIANGLE, QUADRILATERAL, TETRAHEDRON, HEXAHEDRON, PYRAMID, PRISM, POINT = 0, 1, 2, 3, 4, 5, 6, 255

# Cell type: shape, lowest and highest order.
KINDS = {
    1: (POINT, 1, 1), 3: (LINE, 1, 1), 5: (TRIANGLE, 1, 1), 8: (QUADRILATERAL, 1, 1), 9: (QUADRILATERAL, 1, 1),
    10: (TETRAHEDRON, 1, 1), 11: (HEXAHEDRON, 1, 1), 12: (HEXAHEDRON, 1, 1), 13: (PRISM, 1, 1), 14: (PYRAMID, 1, 1),
    21: (LINE, 2, 2), 22: (TRIANGLE, 2, 2), 24: (TETRAHEDRON, 2, 2), 28: (QUADRILATERAL, 2, 2), 32: (PRISM, 2, 2),
    68: (LINE, 1, 4), 69: (TRIANGLE, 1, 4), 70: (QUADRILATERAL, 1, 4), 71: (TETRAHEDRON, 1, 4),
    72: (HEXAHEDRON, 1, 4), 73: (PRISM, 1, 4),
}
ZONE_TYPES = {1: 0, 3: 5, 5: 1, 8: 2, 9: 2, 10: 3, 11: 4, 12: 4}  # of a zone with one kind of cells; else 8

# Toolkit's array type: the host's storage and its struct letter.
STORAGE = {
    core.VTK_FLOAT: ("float32", "f"), core.VTK_DOUBLE: ("float64", "d"),
    core.VTK_CHAR: ("byte", "B"), core.VTK_SIGNED_CHAR: ("byte", "B"), core.VTK_UNSIGNED_CHAR: ("byte", "B"),
    core.VTK_SHORT: ("int16", "h"), core.VTK_UNSIGNED_SHORT: ("int16", "h"),
    core.VTK_INT: ("int32", "i"), core.VTK_UNSIGNED_INT: ("int32", "i"), core.VTK_LONG: ("int32", "i"),
    core.VTK_UNSIGNED_LONG: ("int32", "i"), core.VTK_LONG_LONG: ("int32", "i"),
    core.VTK_UNSIGNED_LONG_LONG: ("int32", "i"), core.VTK_ID_TYPE: ("int32", "i"),
}


def node_count(shape, order):
    n = order + 1
    return {POINT: 1, LINE: n, TRIANGLE: n * (n + 1) // 2, QUADRILATERAL: n * n, HEXAHEDRON: n ** 3,
            TETRAHEDRON: n * (n + 1) * (n + 2) // 6, PYRAMID: n * (n + 1) * (2 * n + 1) // 6,
            PRISM: n * n * (n + 1) // 2}[shape]


def order_of(cell_type, nodes):
    shape, lowest, highest = KINDS[cell_type]
    return next(order for order in range(lowest, highest + 1) if node_count(shape, order) == nodes)


def read_node_orders():
    """The tables of the tests. The toolkit gives hexahedra of old files the new order, so that one set serves."""
    rows = (pathlib.Path(__file__).parent / "support" / "nodeOrderRows.inc").read_text()
    wedge = [*range(9), 12, 13, 14, 9, 10, 11, 15, 16, 17]
    orders = {(8, 4): [0, 1, 3, 2], (11, 8): [0, 1, 3, 2, 4, 5, 7, 6], (32, 18): wedge, (73, 18): wedge}
    for cell_type, nodes, version, places in re.findall(r"\{(\d+), (\d+), Version::(\w+),\s*\{([\d,\s]+)\}", rows):
        if version != "Old":
            orders[int(cell_type), int(nodes)] = [int(place) for place in places.split(",")]
    return orders


NODE_ORDERS = read_node_orders()


def crc(data):
    return f"{zlib.crc32(data):08x}"


def tuples(array):
    """The array's values, one list per tuple."""
    if array is None or array.GetNumberOfValues() == 0:
        return []
    view = memoryview(array)
    if view.format == "c":
        view = view.cast("b") if view.ndim == 1 else view.cast("B").cast("b", view.shape)
    return view.tolist() if view.ndim == 2 else [[value] for value in view.tolist()]


def narrowed(value, letter):
    if letter in "fd":
        return value
    bits = 8 * struct.calcsize(letter)
    value &= (1 << bits) - 1
    return value - (1 << bits) if letter != "B" and value >> (bits - 1) else value


def component_names(array, name):
    count = array.GetNumberOfComponents()
    if count == 1:
        return [name]
    return [f"{name}_{'XYZ'[index] if count <= 3 else index + 1}" for index in range(count)]


def variables_of(arrays_of_pieces, names, location):
    kind, letter = STORAGE[arrays_of_pieces[0].GetDataType()]
    rows = [row for array in arrays_of_pieces for row in tuples(array)]
    for component, name in enumerate(names):
        values = [narrowed(row[component], letter) for row in rows]
        numbers = [value for value in values if value == value]
        yield {"name": name, "type": kind, "location": location, "count": len(values),
               "min": min(numbers, default=None), "max": max(numbers, default=None),
               "crc32": crc(struct.pack(f"<{len(values)}{letter}", *values))}


def field_variables(attributes_of_pieces, location):
    first = attributes_of_pieces[0]
    for index in range(first.GetNumberOfArrays()):
        array = first.GetArray(index)
        same = [attributes.GetArray(array.GetName()) for attributes in attributes_of_pieces]
        yield from variables_of(same, component_names(array, array.GetName()), location)


def cells_of(grid):
    """The (type, nodes) of every cell."""
    if grid.GetNumberOfCells() == 0:
        return []
    nodes = memoryview(grid.GetCells().GetConnectivityArray()).tolist()
    ends = memoryview(grid.GetCells().GetOffsetsArray()).tolist()
    types = memoryview(grid.GetCellTypesArray()).tolist()
    return [(types[cell], nodes[ends[cell]:ends[cell + 1]]) for cell in range(len(types))]


def sections_of(pieces):
    """The combinations of (type, node count) in order of appearance, with the node list of each."""
    lists, shift = {}, 0
    for piece in pieces:
        for cell_type, nodes in cells_of(piece):
            places = NODE_ORDERS.get((cell_type, len(nodes)), range(len(nodes)))
            lists.setdefault((cell_type, len(nodes)), []).append([nodes[place] + shift for place in places])
        shift += piece.GetNumberOfPoints()
    return lists or {(1, 1): []}


def section(combination, cells, other_shapes):
    """Vertices beside other cells become cells of the first other shape with the same node throughout."""
    shape, order = KINDS[combination[0]][0], order_of(*combination)
    if shape == POINT and other_shapes:
        shape = other_shapes[0]
        cells = [nodes * node_count(shape, 1) for nodes in cells]
    nodes = [node for cell in cells for node in cell]
    return {"shapeCode": shape, "gridOrder": order, "nodesPerElement": node_count(shape, order),
            "elements": len(cells), "crc32": crc(struct.pack(f"<{len(nodes)}i", *nodes))}


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


def markup(path):
    return path.read_bytes().partition(b"<AppendedData")[0].decode()


def member_names(composite, block=None):
    """The name of each grid in a tree of blocks and of the block around it, which ends with the first inner block."""
    for index in range(composite.GetNumberOfBlocks()):
        name = composite.GetMetaData(index).Get(model.vtkCompositeDataSet.NAME())
        if isinstance(composite.GetBlock(index), model.vtkMultiBlockDataSet):
            yield from member_names(composite.GetBlock(index), name)
            block = None
        else:
            yield {"name": name, "aux": {"Block.name": block}}


def expected_members(path):
    zones = [zone for member in re.findall(r'(?:file|Source)="([^"]+)"', markup(path))
             for zone in expected_zones(path.parent / member)]
    if path.suffix != ".vtm":
        return zones
    reader = xml.vtkXMLMultiBlockDataReader()
    reader.SetFileName(str(path))
    reader.Update()
    return [{**zone, **names} for zone, names in zip(zones, member_names(reader.GetOutput()), strict=True)]


def expected_zones(path):
    """One zone per file, as the toolkit reads it, piece by piece."""
    if path.suffix != ".vtu":
        return expected_members(path)
    piece_count = markup(path).count("<Piece ")
    pieces = []
    for index in range(piece_count):
        reader = xml.vtkXMLUnstructuredGridReader()
        reader.SetFileName(str(path))
        reader.UpdatePiece(index, piece_count, 0)
        pieces.append(reader.GetOutput())
    return [{"name": path.stem, **expected_zone(pieces)}]


# ---- Files -----------------------------------------------------------------------------------------------------------

ARRAY_CLASSES = {
    "Int8": core.vtkSignedCharArray, "UInt8": core.vtkUnsignedCharArray, "Int16": core.vtkShortArray,
    "UInt16": core.vtkUnsignedShortArray, "Int32": core.vtkIntArray, "UInt32": core.vtkUnsignedIntArray,
    "Int64": core.vtkLongLongArray, "UInt64": core.vtkUnsignedLongLongArray, "Float32": core.vtkFloatArray,
    "Float64": core.vtkDoubleArray, "IdType": core.vtkIdTypeArray, "Char": core.vtkCharArray, "Long": core.vtkLongArray,
}


def make_array(kind, name, tuple_count, components=1):
    """Values all over the range of the type, so that narrowing and signs show."""
    array = ARRAY_CLASSES[kind]()
    array.SetName(name)
    array.SetNumberOfComponents(components)
    array.SetNumberOfTuples(tuple_count)
    if tuple_count == 0:
        return array
    data, size = memoryview(array).cast("B"), array.GetDataTypeSize()
    for index in range(tuple_count * components):
        if kind in ("Float32", "Float64"):
            value = struct.pack("f" if kind == "Float32" else "d", (index * 37 % 101 - 50) / 7 * 10.0 ** (index % 9 - 4))
        elif kind == "IdType":  # written in 32 bits as well
            value = (index * 3).to_bytes(size, "little")
        else:
            value = (index * 0x9E3779B97F4A7C15 >> 3).to_bytes(12, "little")[:size]
        data[index * size:(index + 1) * size] = value
    return array


def make_grid(cells, point_count, point_kind="Float32"):
    grid, points = model.vtkUnstructuredGrid(), core.vtkPoints()
    points.SetData(make_array(point_kind, "Points", point_count, 3))
    grid.SetPoints(points)
    grid.Allocate(len(cells))
    for cell_type, nodes in cells:
        grid.InsertNextCell(cell_type, len(nodes), nodes)
    return grid


def kind_grid(cell_type, order):
    """Three cells of one kind over shuffled nodes; vertices, which make an ordered zone, one on each node."""
    nodes = node_count(KINDS[cell_type][0], order)
    if cell_type == 1:
        return with_arrays(make_grid([(1, [node]) for node in (2, 0, 1)], 3), [("Float64", 1)])
    cells = [(cell_type, [(index * 7 + first) % (nodes + 5) for index in range(nodes)]) for first in (4, 0, 2)]
    return with_arrays(make_grid(cells, nodes + 5), [("Float64", 1)])


def mixed_grid(cell_count=400, point_kind="Float32"):
    types = {12: 8, 13: 6, 14: 5, 10: 4}
    cells = [(cell_type, [(3 * cell + 11 * index) % cell_count for index in range(types[cell_type])])
             for cell, cell_type in zip(range(cell_count), itertools.cycle([12, 12, 13, 12, 14, 10, 10]))]
    return make_grid(cells, cell_count, point_kind)


def with_arrays(grid, kinds):
    """Adds a nodal and a cell-centred array of each (element type, components)."""
    for kind, components in kinds:
        name = f"{kind}x{components}"
        grid.GetPointData().AddArray(make_array(kind, name, grid.GetNumberOfPoints(), components))
        grid.GetCellData().AddArray(make_array(kind, f"cell {name}", grid.GetNumberOfCells(), components))
    return grid


def everything_grid():
    components = itertools.cycle([1, 2, 3, 4, 9])
    return with_arrays(mixed_grid(), [(kind, next(components)) for kind in ARRAY_CLASSES])


def encode(writer, mode, compressed, big_endian, header64, block_size=32768):
    {"ascii": writer.SetDataModeToAscii, "binary": writer.SetDataModeToBinary,
     "raw": writer.SetDataModeToAppended, "base64": writer.SetDataModeToAppended}[mode]()
    writer.SetEncodeAppendedData(mode == "base64")
    writer.SetCompressorTypeToZLib() if compressed else writer.SetCompressorTypeToNone()
    writer.SetByteOrderToBigEndian() if big_endian else writer.SetByteOrderToLittleEndian()
    writer.SetHeaderTypeToUInt64() if header64 else writer.SetHeaderTypeToUInt32()
    writer.SetBlockSize(block_size)
    writer.SetIdTypeToInt64() if header64 else writer.SetIdTypeToInt32()


def write(path, source, encoding=("raw", False, False, True), pieces=1, writer_class=xml.vtkXMLUnstructuredGridWriter):
    writer = writer_class()
    encode(writer, *encoding)
    writer.SetFileName(str(path))
    writer.SetNumberOfPieces(pieces) if pieces > 1 else None
    if pieces > 1:
        splitter = vtkExtractUnstructuredGridPiece()
        splitter.CreateGhostCellsOff()
        splitter.SetInputData(source)
        writer.SetInputConnection(splitter.GetOutputPort())
        source = splitter
    else:
        writer.SetInputData(source)
    if "PUnstructured" in writer_class.__name__:
        writer.SetEndPiece(pieces - 1)
    if writer.Write() != 1:
        raise RuntimeError(f"the toolkit did not write {path}")
    return path


def encoding_files(folder):
    grid = everything_grid()
    yield write(folder / "ascii.vtu", grid, ("ascii", False, False, False))
    for mode, *flags in itertools.product(["binary", "raw", "base64"], [False, True], [False, True], [False, True]):
        name = "-".join([mode, *(word for word, flag in zip(["zlib", "big", "uint64"], flags) if flag)])
        yield write(folder / f"{name}.vtu", grid, (mode, *flags, 1024 if flags[2] else 32768))


def cell_files(folder):
    for cell_type, (_, lowest, highest) in KINDS.items():
        for order in range(lowest, highest + 1):
            grid = kind_grid(cell_type, order)
            yield write(folder / f"cell{cell_type}-{order}.vtu", grid)
            path = write(folder / f"cell{cell_type}-{order}-ascii.vtu", grid, ("ascii", False, False, False))
            yield path
            if cell_type == 72:
                old = folder / f"cell{cell_type}-{order}-old.vtu"
                old.write_text(re.sub(r'(<VTKFile[^>]* version=")[^"]*', r"\g<1>2.0", path.read_text(), count=1))
                yield old


def piece_files(folder):
    grid = with_arrays(mixed_grid(), [("Float32", 3), ("Int64", 1), ("UInt8", 1)])
    for pieces, mode in itertools.product([2, 3, 5], ["ascii", "binary", "raw"]):
        yield write(folder / f"{mode}-{pieces}pieces.vtu", grid, (mode, mode != "ascii", False, True), pieces)


def make_blocks(members):
    blocks = model.vtkMultiBlockDataSet()
    for index, (name, member) in enumerate(members.items()):
        blocks.SetBlock(index, member)
        blocks.GetMetaData(index).Set(model.vtkCompositeDataSet.NAME(), name)
    return blocks


def collection_files(folder):
    grid = with_arrays(mixed_grid(100), [("Float32", 3), ("Int16", 1)])
    for mode in ("ascii", "raw"):
        yield write(folder / f"parallel-{mode}.pvtu", grid, (mode, False, False, True), 3, vtkXMLPUnstructuredGridWriter)
        inner = make_blocks({"first": kind_grid(5, 1), "größer": grid})
        outer = make_blocks({"tip": kind_grid(10, 1), "inner": inner, "behind it": kind_grid(13, 1)})
        blocks = make_blocks({"block 0": grid, "outer": outer, "block 2": kind_grid(12, 1)})
        yield write(folder / f"blocks-{mode}.vtm", blocks, (mode, True, False, True),
                    writer_class=xml.vtkXMLMultiBlockDataWriter)


def single_files(folder):
    """What else a grid can hold: other coordinates, few or no cells, names, field data, values that are no numbers."""
    for kind in ("Float64", "Int32"):
        yield write(folder / f"points-{kind}.vtu", mixed_grid(point_kind=kind))
    yield write(folder / "no-cells.vtu", with_arrays(make_grid([], 12), [("Float32", 1)][:0]))
    yield write(folder / "vertices-and-triangles.vtu",
                with_arrays(make_grid([(1, [3]), (5, [0, 1, 2]), (1, [4]), (5, [2, 3, 4])], 5), [("UInt16", 1)]))
    named = kind_grid(10, 1)
    for name in ("in need of escapes", "Größe [m²]", " leading and trailing "):
        named.GetPointData().AddArray(make_array("Float32", name, named.GetNumberOfPoints()))
    named.GetPointData().SetActiveScalars("Größe [m²]")
    for path in (write(folder / "names.vtu", named),
                 write(folder / "names-ascii.vtu", named, ("ascii", False, False, False))):
        # The toolkit writes names as they are, and reads them back only when they are escaped.
        path.write_bytes(path.read_bytes().replace(b"in need of escapes", b"a &lt; b &amp; &quot;c&quot;"))
        yield path
    timed = kind_grid(12, 1)
    timed.GetFieldData().AddArray(make_array("Float64", "TimeValue", 1))
    timed.GetFieldData().AddArray(make_array("Int32", "several", 7))
    text = core.vtkStringArray()
    text.SetName("author")
    text.InsertNextValue("A. B. & <c>")
    timed.GetFieldData().AddArray(text)
    for mode in ("ascii", "binary", "raw"):
        yield write(folder / f"field-data-{mode}.vtu", timed, (mode, mode != "ascii", False, False))
    undefined = kind_grid(9, 1)
    array = make_array("Float32", "undefined", undefined.GetNumberOfPoints())
    for index, value in enumerate([float("nan"), float("inf"), float("-inf"), -0.0, 1e-42]):
        array.SetValue(index, value)
    undefined.GetPointData().AddArray(array)
    yield write(folder / "undefined-values.vtu", undefined)


def all_files(folder, samples):
    writers = [encoding_files, cell_files, piece_files, collection_files, single_files]
    yield from itertools.chain.from_iterable(writer(folder) for writer in writers)
    yield from sorted(samples.glob("*.vtu")) if samples else []


# ---- Comparison ------------------------------------------------------------------------------------------------------


def shown(krohost, path):
    result = subprocess.run([krohost, "info", "--json", "--demand", path], capture_output=True, text=True, timeout=60)
    try:
        document = json.loads(result.stdout)
    except json.JSONDecodeError:
        document = {}
    return result, document


def json_number(value):
    """NaN and infinities are null in the document."""
    return None if value is None or value in (float("inf"), float("-inf")) else value


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
    elif json_number(expected) != actual:
        yield f"{where}: expected {expected!r}, is {actual!r}"


def with_names(zone, document):
    """The document's zone, its variables with the names of the dataset's."""
    names = {variable["number"]: variable["name"] for variable in document["variables"]}
    return {**zone, "variables": [{**entry, "name": names.get(entry["number"])} for entry in zone["variables"]]}


def failures(krohost, path, expected):
    result, document = shown(krohost, path)
    if result.returncode != 0 or not document.get("loaded") or document.get("dialogs"):
        return [f"exit code {result.returncode}: {result.stderr.strip() or result.stdout[:400]}"]
    actual = [with_names(zone, document) for zone in document["zones"]]
    return list(differences(expected, actual, "zones"))


def compare_all(krohost, files):
    passed = failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        # The toolkit reads on this thread while the processes run on the others.
        running = [(path, pool.submit(failures, krohost, path, expected_zones(path))) for path in files]
        for path, outcome in running:
            sentences = outcome.result()
            passed, failed = passed + (not sentences), failed + bool(sentences)
            for sentence in sentences[:5]:
                print(f"{path.name}: {sentence}")
    print(f"interop: {passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("krohost", help="the krohost to run")
    parser.add_argument("--samples", type=pathlib.Path, help="folder of more files to compare")
    parser.add_argument("--keep", type=pathlib.Path, help="write the files here and keep them")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or pathlib.Path(temporary)
        folder.mkdir(parents=True, exist_ok=True)
        return compare_all(options.krohost, all_files(folder, options.samples))


if __name__ == "__main__":
    sys.exit(main())
