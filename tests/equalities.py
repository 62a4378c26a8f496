#!/usr/bin/python3
"""Compares the ways in which krohost gives the same data away.

    equalities.py --samples DIR [--stride N] KROHOST

For each of the samples, and for collections of them, each format of dump holds what the checksums of info say, as numpy
and Python's own modules read it, and so do files that convert wrote, in every encoding, when they are loaded again.
With a stride, every Nth of the checks is made. Closes with "equalities: N passed, N failed"; exits with 1 on a failure
and with 77 where numpy is not installed.
"""

import csv
import io
import itertools
import json
import pathlib
import tempfile
import zlib

import report
from report import run

try:
    import numpy
except ImportError as reason:
    report.skip("equalities", f"numpy not installed ({reason})", "python3-numpy")

STORAGE = {"float32": "<f4", "float64": "<f8", "int32": "<i4", "int16": "<i2", "byte": "|u1"}
ENCODINGS = [["--encoding", encoding, "--compress", compression, *rest]
             for encoding, compression, rest in itertools.product(
                 ("ascii", "base64", "raw", "appended-base64"), ("zlib", "none"),
                 (["--header", "UInt32"], ["--byte-order", "big"]))]
COLLECTIONS = {
    "case.vtm": '<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><DataSet file="{wing}"/><DataSet '
                'file="{cells}"/><DataSet file="{points}"/></vtkMultiBlockDataSet></VTKFile>',
    "case.pvtu": '<VTKFile type="PUnstructuredGrid"><PUnstructuredGrid><Piece Source="{wing}"/><Piece '
                 'Source="{points}"/></PUnstructuredGrid></VTKFile>',
    "case.pvd": '<VTKFile type="Collection"><Collection><DataSet timestep="1" file="{wing}"/><DataSet timestep="2" '
                'file="{points}"/></Collection></VTKFile>'}


def crc(items):
    return f"{zlib.crc32(items):08x}"


def info(krohost, path):
    """With the names of variables beside their numbers."""
    document = json.loads(run(krohost, "info", "--json", "--demand", path))
    for zone in document["zones"]:
        for variable in zone["variables"]:
            variable["name"] = document["variables"][variable.pop("number") - 1]["name"]
    return document["zones"]


def kept_zones(krohost, path):
    """What a conversion keeps."""
    return [{key: value for key, value in zone.items() if key not in ("aux", "strandGroup")}
            for zone in info(krohost, path)]


def typed(texts, storage):
    numbers = numpy.array(list(map(float if "f" in storage else int, texts)))
    return numbers.astype(storage)


def parts_of(zones):
    """Everything that can be dumped: its options, its type, the length of its rows and its checksum."""
    for zone in zones:
        which = ["--zone", zone["number"]]
        for variable in zone["variables"]:
            yield ([*which, "--variable", variable["name"], "--location", variable["location"]],
                   STORAGE[variable["type"]], 1, variable["crc32"])
        for section in zone["sections"]:
            yield ([*which, "--node-map", "--section", section["number"]], "<i4", section["nodesPerElement"],
                   section["crc32"])


def dumps(krohost, path, target, options, storage, columns):
    """The bytes of the items by each format."""
    def dump(form, *more):
        return run(krohost, "dump", path, *options, *([form] if form == "--json" else ["--format", form]), *more)

    def load(*more):
        return numpy.load(io.BytesIO(dump("npy", *more)))
    assert dump("npy", "--force", "-o", target) == b"", "npy: a file and something on standard output"
    array = numpy.load(target)
    assert array.dtype == storage and array.size == len(array) * columns, "npy: type or shape"
    assert (target.stat().st_size - array.nbytes) % 64 == 0, "npy: alignment"
    yield "npy", array.tobytes()
    if path.stem == "wing":  # the others have nothing that it has not
        assert load("--range", f"{len(array)}:").shape == array[:0].shape, "npy: shape of nothing"
        yield "npy in two parts", load("--range", ":1").tobytes() + load("--range", "1:").tobytes()
        wide = load("--node-bits", 64)
        assert wide.shape == array.shape, "npy: shape with 64 bits"
        assert wide.dtype == ("<i8" if "--node-map" in options else storage), "npy: type with 64 bits"
        yield "npy of 64 bits", wide.astype(storage).tobytes()
    yield "raw", dump("raw")
    yield "raw with little memory", dump("raw", "--max-memory", array.nbytes if columns == 1 else "1G")
    rows = list(csv.reader(io.StringIO(dump("csv").decode(), newline="")))[1:]
    yield "csv", typed(itertools.chain(*rows), storage).tobytes()
    lines = [line.split()[1:] for line in dump("text").decode().splitlines() if not line.startswith("#")]
    yield "text", typed(itertools.chain(*lines), storage).tobytes()
    document = json.loads(dump("--json"), parse_int=float if "f" in storage else int)  # there is a -0
    found = document.get("variables", document.get("sections"))[0]
    yield "json", numpy.array(found.get("values", found.get("nodes"))).astype(storage).tobytes()


def check_dumps(krohost, path, folder):
    for options, storage, columns, checksum in parts_of(info(krohost, path)):
        for form, items in dumps(krohost, path, folder / "out.npy", options, storage, columns):
            assert crc(items) == checksum, f"dump {options} as {form}"


def check_csv(krohost, path, folder):
    target = folder / "table.csv"
    run(krohost, "convert", path, "-o", target)
    tables = {location: list(csv.DictReader(file.open(newline="")))
              for location, file in (("nodal", target), ("cell", folder / "table-cells.csv")) if file.exists()}
    for zone in info(krohost, path):
        for variable in zone["variables"]:
            name, rows = variable["name"], tables[variable["location"]]
            values = typed([row[name] for row in rows if row["zone"] == str(zone["number"])], STORAGE[variable["type"]])
            assert crc(values.tobytes()) == variable["crc32"], f"csv: {name} of zone {zone['number']}"


def check_conversions(krohost, path, folder):
    expected = kept_zones(krohost, path)
    suffix = ".vtm" if path.suffix == ".pvtu" else path.suffix
    target = folder / f"{path.stem}{suffix}"  # zones are named after it
    encodings = ENCODINGS if path.stem == "wing" else ENCODINGS[::5]
    for options in [*encodings, ["--node-bits", 64], ["--max-memory", "1M"]]:
        run(krohost, "convert", path, "-o", target, "--force", *options)
        found = kept_zones(krohost, target)
        assert found == expected, f"converted {options}: {found} instead of {expected}"


def main():
    options = report.options(__doc__, "samples", stride=int)
    outcomes = report.Report("equalities")

    def attempt(check, path):
        with tempfile.TemporaryDirectory() as name:
            check(options.krohost, path, pathlib.Path(name))

    with tempfile.TemporaryDirectory() as name:
        paths = sorted(options.samples.glob("*.vtu"))
        names = {word: options.samples / f"{file}.vtu"
                 for word, file in {"wing": "wing", "cells": "cells-3d", "points": "points"}.items()}
        for file, text in COLLECTIONS.items():
            paths.append(pathlib.Path(name) / file)
            paths[-1].write_text(text.format(**names))
        checks = list(itertools.product((check_dumps, check_csv, check_conversions), paths))[::options.stride]
        outcomes.run((f"{path.name}: {check.__name__}", attempt, check, path) for check, path in checks)
    outcomes.close()


if __name__ == "__main__":
    main()
