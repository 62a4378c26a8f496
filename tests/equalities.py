#!/usr/bin/python3
"""Compares the ways in which krohost gives the same data away.

    equalities.py --samples DIR KROHOST

For each of the samples, and for collections of them, what info shows with --demand is the same with memory for the
largest array only and with eight threads, each format of dump holds what the checksums say, as numpy and Python's own
modules read it, and so do files that convert wrote, in every encoding, when they are loaded again. Closes with
"equalities: N passed, N failed"; exits with 1 on a failure and with 77 where numpy is not installed.
"""

import csv
import io
import itertools
import json
import os
import pathlib
import subprocess
import tempfile
import zlib
from concurrent.futures import ThreadPoolExecutor

import report

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


class Tool:
    def __init__(self, krohost):
        self.krohost = krohost

    def __call__(self, *arguments):
        result = subprocess.run([self.krohost, *map(str, arguments)], capture_output=True, timeout=60)
        assert result.returncode == 0, f"{arguments}: exit code {result.returncode}: {result.stderr.decode()}"
        return result.stdout

    def info(self, path, *options):
        return json.loads(self("info", "--json", "--demand", path, *options))

    def zones(self, path):
        """What a conversion keeps: the names of variables instead of their numbers, no auxiliary data."""
        document = self.info(path)
        for zone in document["zones"]:
            del zone["aux"], zone["strandGroup"]
            for variable in zone["variables"]:
                variable["number"] = document["variables"][variable["number"] - 1]["name"]
        return document["zones"]


def typed(texts, storage):
    numbers = numpy.array(list(map(float if "f" in storage else int, texts)))
    return numbers.astype(storage)


def table(text):
    rows = list(csv.reader(io.StringIO(text.decode(), newline="")))
    return list(zip(*rows[1:]))


def parts_of(document):
    """Everything that can be dumped: its options, its type, the length of its rows and its checksum."""
    for zone in document["zones"]:
        which = ["--zone", str(zone["number"])]
        for variable in zone["variables"]:
            name = document["variables"][variable["number"] - 1]["name"]
            yield ([*which, "--variable", name, "--location", variable["location"]], STORAGE[variable["type"]], 1,
                   variable["crc32"])
        for section in zone["sections"]:
            yield ([*which, "--node-map", "--section", str(section["number"])], "<i4", section["nodesPerElement"],
                   section["crc32"])


def dumps(tool, path, options, storage, columns):
    """The bytes of the items by each format."""
    def dump(form, *more):
        return tool("dump", path, *options, *([form] if form == "--json" else ["--format", form]), *more)
    array = numpy.load(io.BytesIO(dump("npy")))
    assert array.dtype == storage and array.size == len(array) * columns, "npy: type or shape"
    yield "npy", array.tobytes()
    yield "raw", dump("raw")
    yield "raw with little memory", dump("raw", "--max-memory", array.nbytes if columns == 1 else "1G")
    yield "csv", typed([cell for row in zip(*table(dump("csv"))) for cell in row], storage).tobytes()
    lines = [line.split()[1:] for line in dump("text").decode().splitlines() if not line.startswith("#")]
    yield "text", typed(itertools.chain(*lines), storage).tobytes()
    document = json.loads(dump("--json"), parse_int=float if "f" in storage else int)  # there is a -0
    found = document.get("variables", document.get("sections"))[0]
    yield "json", numpy.array(found.get("values", found.get("nodes"))).astype(storage).tobytes()


def check_dumps(tool, path, folder):
    for options, storage, columns, checksum in parts_of(tool.info(path)):
        for form, items in dumps(tool, path, options, storage, columns):
            assert f"{zlib.crc32(items):08x}" == checksum, f"dump {options} as {form}"


def check_ways(tool, path, folder):
    plain = tool.info(path)
    sizes = [variable["count"] * numpy.dtype(STORAGE[variable["type"]]).itemsize
             for zone in plain["zones"] for variable in zone["variables"]]
    sizes += [sum(4 * section["elements"] * section["nodesPerElement"] for section in zone["sections"])
              for zone in plain["zones"]]
    for options in (["--max-memory", max(sizes)], ["-j", "8"], ["-j", "8", "--max-memory", max(sizes)]):
        assert tool.info(path, *options) == plain, f"info {options}"


def check_csv(tool, path, folder):
    document = tool.info(path)
    target = folder / "table.csv"
    tool("convert", path, "-o", target)
    for location, file in (("nodal", target), ("cell", folder / "table-cells.csv")):
        names = [variable["name"] for variable in document["variables"]]
        supplied = {(zone["number"], names[variable["number"] - 1]): variable for zone in document["zones"]
                    for variable in zone["variables"] if variable["location"] == location}
        if not supplied:
            continue
        rows = list(csv.DictReader(file.open(newline="")))
        for (zone, name), variable in supplied.items():
            values = typed([row[name] for row in rows if row["zone"] == str(zone)], STORAGE[variable["type"]])
            assert f"{zlib.crc32(values.tobytes()):08x}" == variable["crc32"], f"csv: {name} of zone {zone}"


def check_conversions(tool, path, folder):
    expected = tool.zones(path)
    suffix = ".vtu" if path.suffix == ".vtu" else ".pvd" if path.suffix == ".pvd" else ".vtm"
    for options in (ENCODINGS if path.stem == "wing" else ENCODINGS[::5]) + [["--node-bits", "64"], ["--max-memory", "1M"]]:
        target = folder / f"{path.stem}{suffix}"  # zones are named after it
        tool("convert", path, "-o", target, "--force", *options)
        found = tool.zones(target)
        assert found == expected, f"converted {options}: {found} instead of {expected}"


def main():
    options = report.options(__doc__, "samples")
    outcomes = report.Report("equalities")
    tool = Tool(options.krohost)

    def attempt(check, path):
        with tempfile.TemporaryDirectory() as name:
            try:
                check(tool, path, pathlib.Path(name))
            except AssertionError as problem:
                return f"{path.name}: {check.__name__}", [str(problem)[:2000]]
        return path.name, []

    with tempfile.TemporaryDirectory() as name:
        paths = sorted(options.samples.glob("*.vtu"))
        names = {word: options.samples / f"{file}.vtu"
                 for word, file in {"wing": "wing", "cells": "cells-3d", "points": "points"}.items()}
        for file, text in COLLECTIONS.items():
            paths.append(pathlib.Path(name) / file)
            paths[-1].write_text(text.format(**names))
        checks = (check_ways, check_dumps, check_csv, check_conversions)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            for subject, complaints in pool.map(lambda task: attempt(*task), itertools.product(checks, paths)):
                outcomes.add(subject, complaints)
    outcomes.close()


if __name__ == "__main__":
    main()
