#!/usr/bin/python3
"""Holds README.md and the pages in docs to what krohost does.

    documents.py --root DIR KROHOST

Command lines in code blocks are run, page by page, in a folder with the samples and what earlier lines of the page
made. They end with 0 or, where the line says `# exit code N`, with N, and print what is beneath them; a line `...`
stands for any lines left out, `...` after other text for the rest of its line, and `# figures vary` lets numbers
differ. The examples of the page about the file format are built and loaded, and tables are compared with what they are
of. Closes with "documents: N passed, N failed"; exits with 1 on a failure.
"""

import base64
import itertools
import os
import pathlib
import re
import subprocess
import tempfile
import textwrap

import report

# What is not run, by how it begins, with the reason.
NOT_RUN = {
    "./kro build": "builds the tree that is being tested",
    "./kro coverage": "builds and tests once more",
    "./kro fuzz": "takes minutes",
    "./kro package": "needs a system to install on",
    "./kro test": "runs this very test",
    "tests/mutate": "takes hours",
    "source ": "changes the shell of the person at the keyboard",
    "build/release/bin/fuzz_load ": "writes into the tree",
    "krohost completion fish >~": "writes into the person's home",
    "krohost convert FILE... -o OUT": "says how a command is put together",
    "krohost convert --repair FILE.vtu -o OUT.vtu": "says how a command is put together",
}
COMMAND = re.compile(r"    (\$ )?(?(1)|(?=(?:krohost|source|\./kro|tests/mutate|build/\S+) ))(.+)")


def code_blocks(text):
    """Runs of indented lines, with blank lines only within them; fenced ones count as indented."""
    text = re.sub(r"(?m)^```.*\n((?:.*\n)*?)```$", lambda fenced: textwrap.indent(fenced[1], "    "), text)
    for is_code, lines in itertools.groupby(text.split("\n"), lambda line: line.startswith("    ") or not line):
        block = "\n".join(lines).strip("\n")
        if is_code and block:
            yield block.split("\n")


def commands(block):
    """Each command line of a block with the lines that it prints; None where it is only said what it does."""
    found = [(number, match) for number, line in enumerate(block) if (match := COMMAND.fullmatch(line))]
    for (number, match), (end, _) in itertools.pairwise([*found, (len(block), None)]):
        output = "\n".join(line[4:] for line in block[number + 1:end]).strip("\n")
        yield match[2], output.split("\n") if output else [] if match[1] else None


def pattern(lines, figures_vary):
    text = ""
    for line in lines:
        expected = re.escape(line.removesuffix("..."))
        if figures_vary:
            expected = re.sub(r"(\\ )+", r"\\s+", re.sub(r"\d+(\\\.\d+)?", r"[\\d.]+", expected))
        text += "(?:.*\n)*?" if line == "..." else expected + (".*\n" if line.endswith("...") else "\n")
    return text


class Tests(report.Report):
    def __init__(self, root, krohost):
        super().__init__("documents")
        self.root, self.krohost = root, krohost
        self.pages = {path: path.read_text() for path in [root / "README.md", *sorted(root.glob("docs/*.md"))]}
        self.used = set()

    def run(self, command, folder):
        path = f"{self.krohost.parent}:{os.environ['PATH']}"
        environment = os.environ | {"PATH": path, "HOME": str(folder), "LC_ALL": "C"}
        environment.pop("KROHOST_ADDON_PATH", None)
        result = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
        return result.returncode, result.stdout.decode(errors="replace")

    def page(self, path, folder):
        (folder / "samples").symlink_to(self.root / "samples")
        for command, output in itertools.chain(*map(commands, code_blocks(self.pages[path]))):
            reason = next((start for start in NOT_RUN if command.startswith(start)), None)
            if reason:
                self.used.add(reason)
                continue
            wanted = re.search(r"# exit code (\d+)", command)
            code, text = self.run(re.sub(r"^\./kro run ", "krohost ", command), folder)
            name = f"{path.name}: {command}"
            self.expect(code == int(wanted[1] if wanted else 0), f"{name}\nended with {code}:\n{text}")
            if output is not None:
                fits = re.fullmatch(pattern(output, "# figures vary" in command) + "\n*", text)
                self.expect(fits, f"{name}\nprinted:\n{text}")

    def links(self, path):
        for target in re.findall(r"\]\(([^)#:]+)\)", self.pages[path]):
            self.expect((path.parent / target).exists(), f"{path.name}: {target} does not exist")

    def linked(self):
        first, *others = self.pages
        for path in others:
            self.expect(f"](docs/{path.name})" in self.pages[first], f"README.md does not link {path.name}")

    def tables(self):
        """The functions of the platform interface, and the exit codes."""
        page = self.pages[self.root / "docs/platform-interface.md"]
        listed = re.findall(r"^\| `(KroUtil\w+)` \| .+ \|$", page, re.MULTILINE)
        declared = re.findall(r"^\w.*?\b(KroUtil\w+)\(", (self.root / "interface/kro.h").read_text(), re.MULTILINE)
        self.expect(sorted(listed) == sorted(declared),
                    f"platform-interface.md: {sorted(set(listed) ^ set(declared))} or one twice")
        codes = re.findall(r"^\| (\d+) \|", self.pages[self.root / "docs/guide.md"], re.MULTILINE)
        _, help_text = self.run("krohost --help", self.root)
        self.expect(codes == re.findall(r"^ +(\d+)  ", help_text, re.MULTILINE), f"guide.md: exit codes {codes}")

    def file_format(self, folder):
        """Builds and loads the whole file of the page, its examples, and what its tables say of changes to it."""
        page = self.pages[self.root / "docs/file-format.md"]
        whole, *examples = [block for block in code_blocks(page) if any("<DataArray" in line for line in block)]
        whole = "\n".join(whole)
        start, array = re.match(r" *<VTKFile.*>", whole)[0], re.search(r'<DataArray.*"p".*</DataArray>', whole)[0]
        values = re.search(r">(.+)<", array)[1].split()

        def load(name, content, reason=None):
            (folder / "case.vtu").write_bytes(content if isinstance(content, bytes) else content.encode())
            code, text = self.run("krohost --demand case.vtu && krohost dump case.vtu --variable p", folder)
            fits = reason in text if reason else re.findall(r"^\d+  (\S+)$", text, re.MULTILINE) == values
            self.expect(code == bool(reason) and fits, f"file-format.md: {name}\nended with {code}:\n{text}")

        load("the whole file", whole)
        for block in examples:
            rows = [re.match(r"    ((?:[0-9a-f]{2} ?)+)(?:  |$)", line) for line in block]
            markup = "\n".join(line for line, row in zip(block, rows) if not row)
            data = bytes.fromhex("".join(row[1] for row in rows if row))
            head, tag = re.fullmatch(r"( *<VTKFile.*>\n)?( *<DataArray(?:.|\n)*)", markup).groups()
            text = whole.replace(start, head or start).replace(array, tag)
            if "appended" in tag:
                begin, end = text.encode().split(b"</VTKFile>")
                load(markup, begin + b'<AppendedData encoding="raw">_' + data + b"</AppendedData></VTKFile>" + end)
            else:
                runs = re.findall(r"[^=]+=*", re.search(r">\s*(\S+)<", tag)[1])
                self.expect(b"".join(map(base64.b64decode, runs)) == data, f"file-format.md: other bytes: {markup}")
                load(markup, text)
        for old, new, words in re.findall(r"^\| `([^`]+)` \| (?:`([^`]+)`|nothing) \| (.+) \|$", page, re.MULTILINE):
            self.expect(old in whole, f"file-format.md: {old} is not in the file")
            reason = re.fullmatch(r"“(.+)”", words)
            load(f"{old} as {new}", whole.replace(old, new, 1), reason and reason[1])


def main():
    options = report.options(__doc__, "root")
    tests = Tests(options.root, options.krohost)
    for path in tests.pages:
        tests.links(path)
        with tempfile.TemporaryDirectory() as folder:
            tests.page(path, pathlib.Path(folder))
    tests.expect(tests.used == set(NOT_RUN), f"no page has {sorted(set(NOT_RUN) - tests.used)}")
    tests.linked()
    tests.tables()
    with tempfile.TemporaryDirectory() as folder:
        tests.file_format(pathlib.Path(folder))
    tests.close()


if __name__ == "__main__":
    main()
