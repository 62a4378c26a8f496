"""The types of cells that are accepted, and the order of their nodes in the host, for numpy's arrays."""

import json
import pathlib

LINE, TRIANGLE, QUADRILATERAL, TETRAHEDRON, HEXAHEDRON, PYRAMID, PRISM, POINT = 0, 1, 2, 3, 4, 5, 6, 255

# Cell type: shape, and its orders.
KINDS = {
    1: (POINT, [1]), 3: (LINE, [1]), 5: (TRIANGLE, [1]), 8: (QUADRILATERAL, [1]), 9: (QUADRILATERAL, [1]),
    10: (TETRAHEDRON, [1]), 11: (HEXAHEDRON, [1]), 12: (HEXAHEDRON, [1]), 13: (PRISM, [1]), 14: (PYRAMID, [1]),
    21: (LINE, [2]), 22: (TRIANGLE, [2]), 24: (TETRAHEDRON, [2]), 28: (QUADRILATERAL, [2]), 32: (PRISM, [2]),
    **{68 + shape: (kind, [1, 2, 3, 4]) for shape, kind in enumerate(
        [LINE, TRIANGLE, QUADRILATERAL, TETRAHEDRON, HEXAHEDRON, PRISM])},
}


def node_count(shape, order):
    n = order + 1
    return {POINT: 1, LINE: n, TRIANGLE: n * (n + 1) // 2, QUADRILATERAL: n * n, HEXAHEDRON: n ** 3,
            TETRAHEDRON: n * (n + 1) * (n + 2) // 6, PYRAMID: n * (n + 1) * (2 * n + 1) // 6,
            PRISM: n * n * (n + 1) // 2}[shape]


# For each of the host's nodes of a cell its place in the file, by the cell's type and number of nodes, where that is
# another. The toolkit gives hexahedra of old files the new order, so that one set serves.
NODE_ORDERS = {(cell_type, nodes): places for cell_type, nodes, places in json.loads(
    (pathlib.Path(__file__).parent / "nodeOrders.json").read_text())}
# The parts of a cell with nodes inside, by their corners: edges, followed from the first to the second, faces, gone
# around from the first corner towards the second and then inwards, and the cell, in layers.
PARTS = {
    LINE: "01", TRIANGLE: "01 12 20 012", QUADRILATERAL: "01 12 23 30 0123",
    TETRAHEDRON: "01 12 20 03 13 23 021 013 231 032",
    HEXAHEDRON: "01 12 23 30 04 15 26 37 45 56 67 74 0123 0154 1265 2376 3047 4567 01234567",
    PRISM: "01 12 20 03 14 25 34 45 53 012 0143 1254 2035 345 012345", PYRAMID: "",
}


def inside(corners, order):
    """The places of the nodes inside a part."""
    count, half = len(corners), len(corners) // 2
    if count not in (3, 4):
        layers = [corners[:half] + (corners[half:] - corners[:half]) * step / order for step in range(1, order)]
        return [node for layer in layers for node in (layer if count == 2 else inside(layer, order))]
    beside = corners[[*range(1, count), 0]] + corners[[*range(-1, count - 1)]]
    ring = corners + (beside - 2 * corners) / order
    ring_order = order - (3 if count == 3 else 2)  # of the smaller face that the nodes make
    if ring_order <= 0:
        return [ring[0]] if ring_order == 0 else []
    sides = [node for at in range(count) for node in (ring[at], *inside(ring[[at, (at + 1) % count]], ring_order))]
    return sides + inside(ring, ring_order)
