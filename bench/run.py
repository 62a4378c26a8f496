#!/usr/bin/env python3
"""Measures how long files take to load in krohost, VTK's reader and meshio; see docs/performance.md.

Every measurement is a process of its own. The processes for one file take turns, round by round, so that a disturbance
of the machine affects all of them."""

import argparse
import json
import math
import os
import pathlib
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
PAGE = ROOT / "docs/performance.md"
BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"

# The files of the table. For each, how many times faster than VTK a load has to be with one thread and with two.
GOALS = {
    "hexahedra-ascii": (4.0, 7.5),
    "hexahedra-base64": (5.7, 9.5),
    "hexahedra-base64-zlib": (1.9, 3.6),
    "hexahedra-raw": (1.05, 1.8),
    "hexahedra-raw-bigendian": (1.15, 2.0),
    "hexahedra-raw-zlib": (1.15, 2.2),
    "hexahedra-appended-base64": (5.4, 9.5),
    "hexahedra-appended-base64-zlib": (1.65, 3.2),
    "mixed-raw": (1.05, 1.7),
    "pieces": (2.0, 3.5),
    "series": (1.25, 2.3),
    "tiny-5000": (3.0, 3.5),
}
EXTENSIONS = {"pieces": ".pvtu", "series": "", "tiny": ".vtm"}
SCALES = (0.1, 1, 10)
GROWTH = [(name, [(f"{scale:g} million cells", scale, name, scale) for scale in SCALES])
          for name in ("hexahedra-raw", "hexahedra-raw-zlib", "hexahedra-ascii", "mixed-raw")]
GROWTH += [("members of a collection", [(f"{count:,}", count, f"tiny-{count}", 1) for count in (50, 500, 5000, 50000)]),
           ("arrays in a file", [(f"{count:,}", count, f"arrays-{count}", 1) for count in (10, 100, 1000, 10000)])]

MESHIO = """import json, meshio, sys, time
start = time.perf_counter()
kept = [meshio.read(name) for name in sys.argv[1:]]
print(json.dumps({"update_s": time.perf_counter() - start}))"""
LOAD = ("register_s", "demand_s")
failures = []


def run(*command):
    """The JSON that a process prints, or None when it fails."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, errors="replace")
    if result.returncode == 0:
        return json.loads(result.stdout)
    failures.append(pathlib.Path(command[0]).name)
    print(f"failed: {failures[-1]} {command[-1]}: {result.stderr.strip()[-300:]}", file=sys.stderr)
    return None


class File:
    """A generated file, or series of files, and what was measured for it."""

    def __init__(self, name, scale):
        kind, _, count = name.partition("-")
        folder = ROOT / f"build/bench-files/{scale:g}"
        self.name, self.scale = name, scale
        path = folder / (name + EXTENSIONS.get(kind, ".vtu"))
        subprocess.run([BIN / "makeFiles", folder, str(scale), name], check=True)
        self.paths = leaves = sorted(path.iterdir()) if path.is_dir() else [path]
        if kind == "pieces":
            leaves = sorted((folder / "parts").iterdir())
        elif kind == "tiny":
            leaves = sorted((folder / "tiny").iterdir())[:int(count)]
        self.byte_count = sum(len(leaf.read_bytes()) for leaf in leaves)  # reading puts them into the page cache
        self.runs = {}

    def load(self, thread_count):
        return BIN / "krohost", "bench", "--json", f"-j{thread_count}", *self.paths

    def contenders(self, has_meshio):
        yield "one", self.load(1)
        if (BIN / "vtkPeer").exists():
            yield "vtk", (BIN / "vtkPeer", *self.paths)
        yield "two", self.load(2)
        if has_meshio and self.paths[0].suffix == ".vtu":
            yield "meshio", (sys.executable, "-c", MESHIO, *self.paths)

    def measure(self, rounds, contenders):
        for turn in range(rounds):
            first = turn % len(contenders)  # the first one has to fetch the memory that the others gave back
            for key, command in contenders[first:] + contenders[:first]:
                is_done = key == "meshio" and turn > 0  # it may take a minute
                if not is_done and None not in self.runs.setdefault(key, []):  # a failed command is not run again
                    self.runs[key].append(run(*command))
        print(f"measured {self.name} at scale {self.scale:g}", file=sys.stderr)

    def values(self, key, *figures):
        """The sum of the figures of one contender, for each round."""
        runs = self.runs.get(key, [])
        return [sum(figure[name] for name in figures) for figure in runs] if None not in runs else []

    def median(self, key, *figures):
        values = self.values(key, *figures)
        return statistics.median(values) if values else None

    def times_faster(self, key):
        """The median of the rounds' ratios, because a disturbance affects both times of a round."""
        ratios = [vtk / own for vtk, own in zip(self.values("vtk", "update_s"), self.values(key, *LOAD)) if own > 0]
        return statistics.median(ratios) if ratios else None


def number(value, places=3):
    return "-" if value is None else f"{value:.{places if abs(value) < 10 else 1}f}"


def table(head, rows):
    lines = ["| " + " | ".join(str(cell) for cell in row) + " |" for row in [head, ["---"] * len(head), *rows]]
    return "\n".join(lines) + "\n"


def speed_table(files):
    rows = [[file.name, f"{file.byte_count / 1e6:.1f}", number(file.median("one", "register_s")),
             *(number(file.median(key, *LOAD)) for key in ("one", "two")),
             *(number(file.median(key, "update_s")) for key in ("vtk", "meshio")),
             *(number(file.times_faster(key), 2) for key in ("one", "two"))] for file in files]
    return table(["file", "MB", "opened: s", "loaded, 1 thread: s", "2 threads: s", "VTK: s", "meshio: s",
                  "times faster than VTK, 1 thread", "2 threads"], rows)


def missed_goals(files):
    for file in files:
        for key, goal in zip(("one", "two"), GOALS[file.name]):
            ratio = file.times_faster(key)
            if file.scale == 1 and ratio is not None and ratio < goal:
                yield f"missed: {file.name} with {key} thread{'s' * (key == 'two')}: {ratio:.2f}, goal {goal:g}"


def detail_table(files):
    rows = []
    for file in files:
        own, registering = file.median("one", "own_peak_kib"), file.median("one", "register_peak_kib")
        mebibytes = [registering - own if own else None, *(file.median(key, "peak_kib") for key in ("one", "vtk"))]
        bytes_read = file.median("one", "bytes_read")
        loads = file.values("one", *LOAD)
        rows.append([file.name, f"{number(min(loads))}..{number(max(loads))}" if loads else "-",
                     number(file.median("one", "load_cpu_s")), number(file.median("vtk", "update_cpu_s")),
                     *("-" if kib is None else f"{kib / 1024:.1f}" for kib in mebibytes),
                     number(bytes_read / file.byte_count if bytes_read else None, 2)])
    return table(["file", "loaded, 1 thread: s", "processor: s", "VTK's: s", "memory to open: MiB", "peak: MiB",
                  "VTK's peak: MiB", "bytes read per byte of file"], rows)


def growth_table(rounds, largest_scale):
    rows = []
    for name, sizes in GROWTH:
        earlier = None
        for label, size, file_name, scale in sizes:
            if scale > largest_scale:
                continue
            file = File(file_name, scale)
            file.measure(rounds, [("one", file.load(1))])
            if not file.values("one", *LOAD):
                continue
            own = file.median("one", "own_peak_kib")
            figures = [file.median("one", "register_s"), file.median("one", "demand_s"),
                       *((file.median("one", peak) - own) / 1024 for peak in ("register_peak_kib", "peak_kib"))]
            row = [name, label]
            for index, figure in enumerate(figures):
                exponent = (math.log(figure / earlier[1][index]) / math.log(size / earlier[0])
                            if earlier and figure and earlier[1][index] else None)
                row += [number(figure, 1 if index > 1 else 3), number(exponent, 2)]
            rows.append(row)
            earlier = (size, figures)
    return table(["what grows", "size", "opened: s", "exponent", "demands: s", "exponent", "memory to open: MiB",
                  "exponent", "all kept: MiB", "exponent"], rows)


def machine():
    model = [line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout.splitlines()[0]
    return f"{(model or ['?'])[0]}, {os.cpu_count()} cores, {memory:.0f} GiB, {compiler}; load average at the start " \
           f"{os.getloadavg()[0]:.1f}"


def write(text):
    before, _, rest = PAGE.read_text().partition(BEGIN)
    after = rest.partition(END)[2]
    PAGE.write_text(f"{before}{BEGIN}\n\n{text}\n{END}{after}")


def main():
    parser = argparse.ArgumentParser(prog="kro bench", description=__doc__.split("\n")[0])
    parser.add_argument("--scale", type=float, help="million cells of a file (default: 1)")
    parser.add_argument("--rounds", type=int, help="how often each is measured (default: 5)")
    parser.add_argument("--only", nargs="+", metavar="NAME", choices=[*GOALS, "growth"],
                        help="of the files (" + ", ".join(GOALS) + ") and growth, which is how time and memory grow")
    parser.add_argument("--quick", action="store_true", help="two rounds with small files, for a first look")
    parser.add_argument("--write", action="store_true", help="put the first table into docs/performance.md")
    options = parser.parse_args()
    if options.write and (options.only or options.quick):
        parser.error("--write is for all files at full size: leave out --only and --quick")
    scale = options.scale or (0.1 if options.quick else 1)
    rounds = options.rounds or (2 if options.quick else 5)
    names = options.only or [*GOALS, "growth"]
    has_meshio = subprocess.run([sys.executable, "-c", "import meshio"], capture_output=True).returncode == 0

    files = [File(name, scale) for name in names if name != "growth"]
    for file in files:
        file.measure(rounds, list(file.contenders(has_meshio)))
    if files:
        text = f"{machine()}; scale {scale:g}, {rounds} rounds.\n\n{speed_table(files)}"
        print(text, *missed_goals(files), "", detail_table(files), sep="\n")
        if options.write:
            write(text)
    if "growth" in names:
        print(growth_table(min(rounds, 3), 1 if options.quick else SCALES[-1]))
    sys.exit("krohost" in failures)


if __name__ == "__main__":
    main()
