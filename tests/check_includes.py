"""Holds the direction in which the rooms depend on each other: a room includes itself and those named after it."""

import pathlib
import re
import sys

LINE = "interface/kro.h"
HOST = "krohost/host/runtime krohost/host/model krohost/host/line"
ROOMS = {
    "interface": "",
    "loader/cells": LINE,
    "loader/sdk": LINE,
    "loader/xml": f"loader/sdk {LINE}",
    "loader/streams": f"loader/xml loader/sdk {LINE}",
    "loader/mesh": f"loader/streams loader/xml loader/sdk loader/cells {LINE}",
    "loader/output": f"loader/mesh loader/streams loader/xml loader/sdk {LINE}",
    "loader/addon": f"loader/output loader/mesh loader/streams loader/xml loader/sdk {LINE}",
    "krohost/text": "",
    "krohost/host/line": f"krohost/text {LINE}",
    "krohost/host/model": f"krohost/host/line krohost/text {LINE}",
    "krohost/host/runtime": f"krohost/host/model krohost/host/line krohost/text {LINE}",
    "krohost/host/api": f"krohost/host/runtime krohost/host/model krohost/host/line krohost/text {LINE}",
    "krohost/reader": "krohost/text",
    "krohost/check": f"krohost/reader krohost/text loader/cells {LINE}",
    "krohost/convert": "krohost/reader krohost/host/runtime krohost/host/model krohost/text loader/cells",
    "krohost/cli/shell": "",
    "krohost/cli/terminal": "krohost/convert krohost/text",
    "krohost/cli/input": f"krohost/cli/terminal krohost/convert krohost/reader {HOST} krohost/text",
    "krohost/cli/report": f"krohost/cli/input krohost/cli/terminal krohost/convert krohost/reader {HOST} krohost/text",
    "krohost/cli/commands": "krohost/cli/report krohost/cli/input krohost/cli/terminal krohost/cli/shell krohost/check "
    f"krohost/convert krohost/reader {HOST} krohost/text",
    "krohost/cli": "krohost/cli/commands krohost/cli/report krohost/cli/input krohost/cli/terminal krohost/cli/shell "
    f"krohost/convert {HOST} krohost/text",
}


def room_of(path):
    return max((room for room in ROOMS if path.startswith(room + "/")), key=len, default=None)


def violations(root):
    seen = set()
    for source in [path for top in ("interface", "loader", "krohost") for path in (root / top).rglob("*.*")]:
        if source.suffix not in (".h", ".cpp"):
            continue
        name = str(source.relative_to(root))
        room = room_of(name)
        if not room:
            yield f"{name} is in no room"
            continue
        seen.add(room)
        prefixes = tuple(other if other.endswith(".h") else other + "/" for other in [room, *ROOMS[room].split()])
        for included in re.findall(r'^\s*#\s*include\s*"([^"]+)"', source.read_text(), re.MULTILINE):
            if not included.startswith(prefixes):
                yield f"{name} includes {included}"
    yield from (f"no sources in {room}" for room in ROOMS.keys() - seen)


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
