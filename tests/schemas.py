#!/usr/bin/python3
"""Validates what krohost prints for programs, in successes and failures, against the schemas in docs/schemas.

    schemas.py --addon LIBRARY --faulty-addon LIBRARY --samples DIR --schemas DIR KROHOST

Every field must be in the schema, although the schemas let other programs meet new ones. Closes with
"schemas: N passed, N failed"; exits with 1 on a failure and with 77 where the validator is not installed.
"""

import json
import os
import pathlib
import tempfile

import report

try:
    import jsonschema
except ImportError as reason:
    report.skip("schemas", reason, "python3-jsonschema")

# Each command by its schema (after a # the definition that each line fits, instead of the whole), and how it ends with
# one file or another, or none, in the place of FILE.
COMMANDS = {
    "info": "info --json --demand FILE",
    "bench": "bench --json FILE",
    "check": "check --json --deep --explain FILE",
    "dump": "dump --json FILE --node-map",
    "diff": "diff --json wing.vtu FILE",
    "convert": "convert --json FILE -o of-FILE --to vtu",
    "trace": "trace --json --lists --demand FILE",
    "trace#line": "trace --jsonl --lists --demand FILE",
}
EXIT_CODES = {"wing.vtu": 0, "short.vtu": 1, "empty.vtu": 1, "": 2, "missing.vtu": 3}
# Schema, exit code, arguments.
ROWS = [
    ("info", 0, "wing.vtu --json"),
    ("info", 0, "--json --demand run.pvd"),
    ("info", 0, "--json --demand blocks.vtm --append wing.vtu"),
    ("info", 0, "replay --json --demand layout.json"),
    ("info", 1, "--json wing.vtu --addon {faulty}"),
    ("info", 1, "replay --json wing.vtu"),
    ("info", 2, "--json wing.vtu --demnad"),
    ("info", 2, "inof wing.vtu --json"),
    ("info", 2, "--json wing.vtu --loader Other"),
    ("info", 4, "--json wing.vtu --addon missing.so"),
    ("bench", 2, "bench --json wing.vtu --variable q"),
    ("check", 1, "check --json --deep --explain run.pvd short.vtu empty.vtu wing.vtu"),
    ("dump", 0, "dump --json wing.vtu --variable pressure --variable X --range :3"),
    ("dump", 2, "dump --json wing.vtu"),
    ("diff", 5, "diff --json wing.vtu other.vtu"),
    ("convert", 0, "convert --json --repair wing.vtu -o repaired.vtu"),
    ("convert", 1, "convert --json --repair mixed.vtu -o parts.vtu"),
    ("convert", 2, "convert --json wing.vtu -o wing.vtu"),
    ("addons", 0, "addons --json"),
    ("addons", 2, "addons --json wing.vtu"),
    ("addons", 4, "addons --json --addon missing.so"),
    ("trace#line", 0, "trace --jsonl --only KroUtilData wing.vtu"),
    ("trace#line", 1, "trace --jsonl wing.vtu --addon {faulty}"),
    *((schema, exit_code, command.replace("FILE", file))
      for schema, command in COMMANDS.items() for file, exit_code in EXIT_CODES.items()),
]


def write_files(folder, samples):
    wing = (samples / "wing.vtu").read_bytes()
    (folder / "wing.vtu").write_bytes(wing)
    (folder / "short.vtu").write_bytes(wing[:len(wing) * 9 // 10])
    (folder / "other.vtu").write_bytes((samples / "wing-and-tail.vtu").read_bytes())
    (folder / "empty.vtu").write_text("<VTKFile/>")
    (folder / "mixed.vtu").write_text(
        '<VTKFile type="UnstructuredGrid"><Piece NumberOfPoints="3" NumberOfCells="2"><Points>'
        '<DataArray NumberOfComponents="3">0 0 0 1 0 0 0 1 0</DataArray></Points><Cells>'
        '<DataArray type="Int8" Name="connectivity">0 1 2 0 1</DataArray><DataArray type="Int8" Name="offsets">3 5'
        '</DataArray><DataArray type="Int8" Name="types">5 3</DataArray></Cells></Piece></VTKFile>')
    (folder / "run.pvd").write_text('<VTKFile type="Collection"><Collection><DataSet timestep="1" file="wing.vtu"/>'
                                    '<DataSet timestep="2" file="wing.vtu"/></Collection></VTKFile>')
    (folder / "blocks.vtm").write_text('<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><Block name="a">'
                                       '<DataSet name="b" file="wing.vtu"/></Block></vtkMultiBlockDataSet></VTKFile>')
    (folder / "layout.json").write_text(json.dumps({"loader": "VTK Data Loader", "instructions": [
        "STANDARDSYNTAX", "1.0", "FILENAME_FILE", "wing.vtu"]}))


def closed(schema):
    """The schema with no other fields allowed than those it names. A condition stays as it is."""
    if isinstance(schema, list):
        return [closed(item) for item in schema]
    if not isinstance(schema, dict):
        return schema
    result = {key: value if key == "if" else closed(value) for key, value in schema.items()}
    if "properties" in schema and isinstance(schema.get("type"), str):
        result.setdefault("additionalProperties", False)
    return result


def validator(schemas, name):
    file, _, definition = name.partition("#")
    schema = json.loads((schemas / f"{file}.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    schema = closed(schema)
    if definition:
        schema = {"$ref": f"#/$defs/{definition}", "$defs": schema["$defs"]}
    return jsonschema.Draft202012Validator(schema)


def check(options, folder, name, exit_code, arguments):
    environment = {**os.environ, "KROHOST_ADDON_PATH": str(options.addon)}
    words = arguments.format(faulty=options.faulty_addon).split()
    text = report.run(options.krohost, *words, exit_code=exit_code, cwd=folder, env=environment)
    documents = [json.loads(part) for part in (text.splitlines() if "#" in name else [text])]
    for document in documents:
        yield from (f"{error.json_path}: {error.message[:300]}"
                    for error in validator(options.schemas, name).iter_errors(document))
    if (exit_code in (0, 5)) != (documents[-1].get("error") is None):
        yield f"the error is {documents[-1].get('error')!r}"


def main():
    options = report.options(__doc__, "addon", "faulty-addon", "samples", "schemas")
    outcomes = report.Report("schemas")
    with tempfile.TemporaryDirectory() as folder:
        write_files(pathlib.Path(folder), options.samples)
        outcomes.run((f"{row[0]}: krohost {row[2]}", check, options, folder, *row) for row in ROWS)
    outcomes.close()


if __name__ == "__main__":
    main()
