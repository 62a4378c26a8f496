"""Runs every command of krohost on every sample and stored fuzz input, in text and in JSON.

    sweep.py --addon FILE --samples DIR --seeds DIR [--stride N] KROHOST

Each run ends with a documented exit code, says what went wrong if something did, breaks no contract, prints UTF-8 without
control characters and, asked for it, JSON that can be parsed; in a build with sanitizers these find nothing. With a
stride, every Nth of the runs is made. Closes with "sweep: N passed, N failed".
"""

import itertools
import json
import os
import pathlib
import re
import shlex
import subprocess
import tempfile

import report

# FILE is what is loaded, NEW a file that does not exist yet.
COMMANDS = [
    "info FILE",
    "info --demand -j 4 --all FILE",
    "info --demand --max-memory 4K FILE --record NEW.json",
    "info --times 1 --loader 'TRIX Loader' FILE --append FILE",
    "check --deep --explain FILE",
    "check -j 1 FILE",
    "trace --demand --lists FILE",
    "bench -j 2 FILE",
    "dump --node-map FILE",
    "dump --variable X --variable Y --format csv FILE",
    "dump --variable p --zone 1 FILE -o NEW.txt",
    "diff FILE FILE",
    "diff --rtol 1e-3 FILE SAMPLE",
    "convert FILE -o NEW.vtu --encoding ascii",
    "convert FILE -o NEW.vtm --compress none --byte-order big",
    "convert FILE -o NEW.pvd",
    "convert FILE -o NEW.vtkhdf",
    "convert FILE -o NEW.cgns",
    "convert FILE -o NEW.csv --max-memory 4K",
    "convert --repair FILE -o NEW.vtu",
    "convert --repair FILE -o NEW.vtkhdf",
]
WITHOUT_JSON = {"--format", "-o NEW.txt"}
CONTROLS = re.compile("[\x00-\x09\x0b-\x1f\x7f-\x9f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]")
NO_RESULT = "SUMMARY: [A-Za-z]*Sanitizer|runtime error:|terminate called|contract violation"


def stored_files(folder, seeds):
    """The inputs as files to load, collections with their members in a folder of their own."""
    for target in ["load", "document", "collection"]:
        for seed in sorted((seeds / target).iterdir()):
            place = folder / target / seed.name
            place.mkdir(parents=True)
            parts = seed.read_bytes().split(b"\n@@@@\n") if target == "collection" else [seed.read_bytes()]
            for number, part in enumerate(parts):
                suffix = "vtm" if number == 0 and target == "collection" else "vtu"
                (place / f"{number}.{suffix}").write_bytes(part)
            yield place / f"0.{'vtm' if target == 'collection' else 'vtu'}"


def command_lines(folder, options):
    """Lists of command lines to be run one after the other."""
    files = [*sorted(options.samples.glob("*.vtu")), *stored_files(folder, options.seeds)]
    for number, (file, command) in enumerate(itertools.product(files, COMMANDS)):
        def words(form, *more):
            meanings = {"FILE": file, "NEW": folder / f"{form}{number}", "SAMPLE": options.samples / "wing.vtu"}
            text = re.sub("|".join(meanings), lambda name: str(meanings[name.group()]), command)
            return [*shlex.split(text), *more]

        lines = [words("text")]
        if not any(text in command for text in WITHOUT_JSON):
            lines.append(words("json", "--json"))
        if command.startswith("trace"):
            lines.append(words("lines", "--jsonl"))
        if "--record" in command:
            lines.append(["replay", str(folder / f"text{number}.json"), "--demand", "--json"])
        yield lines


def no_constant(text):
    raise ValueError(f"{text} is not JSON")


def complaints(krohost, words):
    run = subprocess.run([krohost, *words], capture_output=True, timeout=300)
    output, errors = run.stdout.decode(), run.stderr.decode()
    if run.returncode not in (0, 1, 2, 3, *([5] if words[0] == "diff" else [])):
        yield f"exit code {run.returncode}: {errors[-2000:]}"
    if match := re.search(NO_RESULT, errors):
        yield errors[max(0, match.start() - 3000):match.end() + 300]
    if run.returncode not in (0, 5) and not errors and not (words[0] == "check" and output):
        yield f"exit code {run.returncode} without a word"
    if control := CONTROLS.search(output + errors):
        yield f"it prints {control.group()!r}"
    try:
        for document in [output] if "--json" in words else output.splitlines() if "--jsonl" in words else []:
            last = json.loads(document, parse_constant=no_constant)
        if {"--json", "--jsonl"} & set(words) and (last["error"] is None) != (run.returncode in (0, 5)):
            yield f"exit code {run.returncode} with the error {last['error']!r}"
    except (ValueError, KeyError, NameError) as error:
        yield f"{error!r} in {output[:300]!r}"


def check(krohost, lines):
    """The lines one after the other."""
    return [f"krohost {shlex.join(words)}: {text}" for words in lines for text in complaints(krohost, words)]


def main():
    options = report.options(__doc__, "addon", "samples", "seeds", stride=int)
    os.environ["KROHOST_ADDON_PATH"] = str(options.addon)
    outcomes = report.Report("sweep")
    with tempfile.TemporaryDirectory() as name:
        groups = list(command_lines(pathlib.Path(name), options))[::options.stride]
        outcomes.run((f"run {number}", check, options.krohost, lines) for number, lines in enumerate(groups))
    outcomes.close()


if __name__ == "__main__":
    main()
