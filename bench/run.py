#!/usr/bin/env python3
"""Measures the add-on in the embedded host beside a peer and beside the machine's limits; see docs/performance.md.

Every measurement is a process of its own. The processes for one file take turns, round by round, so that a disturbance
of the machine meets all of them."""

import argparse
import json
import math
import os
import pathlib
import platform
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
DOCUMENT = ROOT / "docs/performance.md"
BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"
LIMIT_GOAL = 1.3

# File: the goals for "times faster than the peer" with one thread and with two.
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
ENCODINGS = [name.removeprefix("hexahedra-") for name in GOALS if name.startswith("hexahedra-")]
FILES = [*(f"{kind}-{name}" for kind in ("hexahedra", "mixed") for name in ENCODINGS),
         "pieces", "members", "series", "tiny-5000"]
EXTENSIONS = {"pieces": ".pvtu", "members": ".vtm", "series": "", "tiny": ".vtm"}
SCALES = (0.1, 1, 10)
GROWTH = [(name, [(f"{scale:g} million cells", scale, name, scale) for scale in SCALES])
          for name in ("hexahedra-raw", "hexahedra-raw-zlib", "hexahedra-ascii", "mixed-raw")]
GROWTH += [("members of a collection", [(f"{count:,}", count, f"tiny-{count}", 1) for count in (50, 500, 5000, 50000)]),
           ("arrays in a file", [(f"{count:,}", count, f"arrays-{count}", 1) for count in (10, 100, 1000, 10000)])]

MESHIO = """import json, meshio, sys, time
start = time.perf_counter()
kept = [meshio.read(name) for name in sys.argv[1:]]
print(json.dumps({"update_s": time.perf_counter() - start}))"""
complaints = []


def run(*command):
    """The JSON that a process prints, or None when it fails."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, errors="replace")
    if result.returncode == 0:
        return json.loads(result.stdout)
    complaints.append(f"{pathlib.Path(command[0]).name} {command[-1]}: {result.stderr.strip()[-300:]}")
    print(f"failed: {complaints[-1]}", file=sys.stderr)
    return None


class File:
    """A generated file, or series of files, and what was measured of it."""

    def __init__(self, name, scale):
        self.folder = ROOT / f"build/bench-files/{scale:g}"
        self.name, self.scale = name, scale
        path = self.folder / (name + EXTENSIONS.get(name.split("-")[0], ".vtu"))
        subprocess.run([BIN / "makeFiles", self.folder, "--scale", str(scale), "--only", name], check=True)
        self.paths = sorted(path.iterdir()) if path.is_dir() else [path]
        members = {"pieces": "parts", "members": "parts", "tiny": "tiny"}.get(name.split("-")[0])
        self.leaves = sorted((self.folder / members).iterdir()) if members else self.paths
        if name.startswith("tiny-"):
            self.leaves = self.leaves[:int(name.split("-")[1])]
        self.byte_count = sum(leaf.stat().st_size for leaf in self.leaves)
        self.runs = {}

    def krohost(self, *options):
        return BIN / "krohost", "bench", "--json", *options, *self.paths

    def limits(self):
        stored = self.median("one", "bytes_stored") or 0
        return BIN / "limits", "--stored", int(stored), "--variable", "pressure", *self.leaves

    def contenders(self, has_meshio):
        yield "one", lambda: self.krohost("-j1")
        if (BIN / "vtkPeer").exists():
            yield "peer", lambda: (BIN / "vtkPeer", *self.paths)
        yield "two", lambda: self.krohost("-j2")
        yield "variable", lambda: self.krohost("--variable", "pressure")
        yield "limits", self.limits
        if has_meshio and self.paths[0].suffix == ".vtu":
            yield "meshio", lambda: (sys.executable, "-c", MESHIO, *self.paths)

    def measure(self, rounds, contenders):
        for leaf in self.leaves:
            leaf.read_bytes()  # so that it is in the page cache
        contenders = list(contenders)
        for turn in range(rounds):
            first = turn % len(contenders)  # who begins has to fetch the memory that others gave back
            for key, command in contenders[first:] + contenders[:first]:
                is_done = key == "meshio" and turn > 0  # it may take a minute
                if not is_done and None not in self.runs.setdefault(key, []):  # what failed is not tried again
                    self.runs[key].append(run(*command()))
        print(f"measured {self.name} at scale {self.scale:g}", file=sys.stderr)

    def values(self, key, *figures):
        """Of every round, the sum of the figures that one contender gave."""
        runs = self.runs.get(key, [])
        return [sum(figure[name] for name in figures) for figure in runs] if None not in runs else []

    def median(self, key, *figures):
        values = self.values(key, *figures)
        return statistics.median(values) if values else None

    def ratio(self, above, below):
        """The median of the rounds' ratios, since what disturbs a round disturbs both."""
        ratios = [a / b for a, b in zip(self.values(*above), self.values(*below)) if b > 0]
        return statistics.median(ratios) if ratios else None


def seconds(value):
    return "-" if value is None else f"{value:.4f}" if value < 0.1 else f"{value:.3f}" if value < 10 else f"{value:.1f}"


def spread(values):
    return f"{seconds(statistics.median(values))} ({seconds(min(values))}..{seconds(max(values))})" if values else "-"


def against(value, goal, is_met):
    if value is None:
        return "-"
    return f"{value:.2f}" + (f" (goal {goal:g}: {'met' if is_met(value) else 'missed'})" if goal else "")


def table(head, rows):
    lines = ["| " + " | ".join(str(cell) for cell in row) + " |" for row in [head, ["---"] * len(head), *rows]]
    return "\n".join(lines) + "\n"


def speed_table(files):
    rows = []
    for file in files:
        peer = ("peer", "update_s")
        goals = GOALS.get(file.name, (None, None))
        ratios = [against(file.ratio(peer, (key, "register_s", "demand_s")), goal, lambda value: value >= goal)
                  for key, goal in zip(("one", "two"), goals)]
        cpu = file.ratio(("peer", "update_cpu_s"), ("one", "load_cpu_s"))
        rows.append([file.name, f"{file.byte_count / 1e6:.1f}", *ratios, "-" if cpu is None else f"{cpu:.2f}",
                     *(spread(file.values(key, "register_s", "demand_s")) for key in ("one", "two")),
                     spread(file.values(*peer)), spread(file.values("meshio", "update_s"))])
    return table(["file", "MB", "times faster than VTK, 1 thread", "2 threads",
                  "by processor time, 1 thread", "product, 1 thread: s", "2 threads: s",
                  "VTK's Update(): s", "meshio: s"], rows)


def limit_table(files):
    rows = []
    for file in files:
        rows.append([file.name])
        for key, figure, name in (("one", "register_s", "register_s"), ("variable", "demand_s", "variable_s")):
            product, limit = (key, figure), ("limits", name)
            rows[-1] += [spread(file.values(*product)), seconds(file.median(*limit)),
                         against(file.ratio(product, limit), LIMIT_GOAL, lambda value: value <= LIMIT_GOAL)]
    return table(["file", "registration: s", "limit: s", "ratio", "one variable: s", "limit: s", "ratio"], rows)


def memory_table(files):
    rows = []
    for file in files:
        own, registering = file.median("one", "own_peak_kib"), file.median("one", "register_peak_kib")
        figures = [registering - own if own else None, *(file.median(key, "peak_kib") for key in ("one", "peer"))]
        bytes_read = file.median("one", "bytes_read")
        rows.append([file.name, *("-" if value is None else f"{value / 1024:.1f}" for value in figures),
                     f"{bytes_read / file.byte_count:.2f}" if bytes_read else "-",
                     seconds(file.median("one", "demand_s")),
                     *(seconds(file.median("limits", f"{name}_s")) for name in ("read", "copy", "inflate", "numbers"))])
    return table(["file", "registering, above the process's own: MiB", "peak: MiB", "VTK's peak: MiB",
                  "bytes read per byte of file", "demands: s", "plain read: s", "copy into fresh memory: s",
                  "bare inflate: s", "bare numbers: s"], rows)


def growth_table(rounds, largest_scale):
    rows = []
    for name, sizes in GROWTH:
        earlier = None
        for label, size, file_name, scale in sizes:
            if scale > largest_scale:
                continue
            file = File(file_name, scale)
            file.measure(rounds, [("one", lambda: file.krohost("-j1"))])
            own = file.median("one", "own_peak_kib")
            figures = [file.median("one", "register_s"), file.median("one", "demand_s"),
                       *((file.median("one", peak) - own) / 1024 for peak in ("register_peak_kib", "peak_kib"))]
            row = [name, label]
            for index, figure in enumerate(figures):
                exponent = (math.log(figure / earlier[1][index]) / math.log(size / earlier[0])
                            if earlier and figure and earlier[1][index] else None)
                row += [f"{figure:.1f}" if index > 1 else seconds(figure),
                        "-" if exponent is None else f"{exponent:.2f}"]
            rows.append(row)
            earlier = (size, figures)
    return table(["what grows", "size", "registration: s", "exponent", "demands: s", "exponent",
                  "registering, above the process's own: MiB", "exponent", "all kept: MiB", "exponent"], rows)


def rounded(value):
    return f"{value:,.0f}" if value >= 10 else f"{value:.2f}"


def micro_table():
    result = run(BIN / "micro", "--benchmark_format=json", "--benchmark_min_time=0.1")
    rows = []
    for step in result["benchmarks"] if result else []:
        rates = [rounded(step[key] / 1e6) if key in step else "-" for key in ("bytes_per_second", "items_per_second")]
        rows.append([step["name"], rounded(step["cpu_time"]), *rates])
    return table(["step", "ns", "MB/s", "million items/s"], rows)


def machine():
    model = [line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout.splitlines()[0]
    return (f"{(model or ['?'])[0]}, {os.cpu_count()} cores, {memory:.0f} GiB, Linux {platform.release()}, {compiler}; "
            f"load average at the start {os.getloadavg()[0]:.1f}")


def write(text):
    before, _, rest = DOCUMENT.read_text().partition(BEGIN)
    after = rest.partition(END)[2]
    DOCUMENT.write_text(f"{before}{BEGIN}\n\n{text}\n{END}{after}")


def main():
    parser = argparse.ArgumentParser(prog="kro bench", description=__doc__.split("\n")[0])
    parser.add_argument("--scale", type=float, help="million cells of a file (default: 1)")
    parser.add_argument("--rounds", type=int, help="times that each is measured (default: 5)")
    parser.add_argument("--only", nargs="+", metavar="NAME", help="of the files (" + ", ".join(FILES) + "), growth and micro")
    parser.add_argument("--quick", action="store_true", help="two rounds with small files, for a first look")
    parser.add_argument("--write", action="store_true", help="put the tables into docs/performance.md")
    options = parser.parse_args()
    scale = options.scale or (0.1 if options.quick else 1)
    rounds = options.rounds or (2 if options.quick else 5)
    others = ["growth", "micro"]
    names = options.only or [*FILES, *others]
    if unknown := set(names) - {*FILES, *others}:
        parser.error("no such file: " + ", ".join(sorted(unknown)))
    has_meshio = subprocess.run([sys.executable, "-c", "import meshio"], capture_output=True).returncode == 0

    files = [File(name, scale) for name in names if name not in others]
    for file in files:
        file.measure(rounds, file.contenders(has_meshio))
    parts = [f"{machine()}; scale {scale:g}, {rounds} rounds.\n"]
    if files:
        parts += ["### Against VTK\n", speed_table(files), "### Against the limits\n", limit_table(files),
                  "### Memory and work\n", memory_table(files)]
    if "growth" in names:
        parts += ["### Growth\n", growth_table(min(rounds, 3), 1 if options.quick else SCALES[-1])]
    if "micro" in names:
        parts += ["### Single steps\n", micro_table()]
    text = "\n".join(parts)
    print(text)
    if options.write:
        write(text)
    sys.exit(any(complaint.startswith("krohost") for complaint in complaints))


if __name__ == "__main__":
    main()
