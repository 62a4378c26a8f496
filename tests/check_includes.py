"""Holds the direction in which the folders depend on each other: a folder includes itself and those named behind it."""

import pathlib
import re
import sys

ALLOWED = {
    "host": "",
    "xml": "host",
    "streams": "xml host",
    "mesh": "streams xml host",
    "output": "mesh streams xml host",
    "addon": "output mesh streams xml host",
    "krohost": "host/kro.h host/nodeOrder.h",
}


def violations(root):
    for folder, others in ALLOWED.items():
        prefixes = tuple(name if name.endswith(".h") else name + "/" for name in [folder, *others.split()])
        sources = [path for path in (root / folder).rglob("*") if path.suffix in (".h", ".cpp", ".inc")]
        assert sources, f"no sources in {folder}"
        for source in sources:
            for included in re.findall(r'^\s*#\s*include\s*"([^"]+)"', source.read_text(), re.MULTILINE):
                if not included.startswith(prefixes):
                    yield f"{source.relative_to(root)} includes {included}"


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
