"""What the checks of krohost share: their command lines, how they run things, and how they close."""

import argparse
import os
import pathlib
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor


def path(text):
    return pathlib.Path(text).resolve()


def options(description, *names, **others):
    """The command line: krohost, a path for each of these names, and others of these types, which are 1 unless given."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("krohost", type=path)
    for name in names:
        parser.add_argument(f"--{name}", type=path, required=True)
    for name, kind in others.items():
        parser.add_argument(f"--{name}", type=kind, default=1)
    return parser.parse_args()


def run(*command, exit_code=0, **options):
    """What a command writes to standard output; its exit code has to be this one, or any where that is None."""
    result = subprocess.run([*map(str, command)], capture_output=True, timeout=300, **options)
    assert exit_code in (None, result.returncode), f"{command}: exit code {result.returncode}: {result.stderr.decode()}"
    return result.stdout


def complaints(check, *arguments):
    """A check either gives back sentences, if any, or ends with an exception."""
    try:
        return list(check(*arguments) or [])
    except Exception as problem:
        return [f"{type(problem).__name__}: {problem}"[:2000]]


class Report:
    """Counts what holds and prints what does not."""

    def __init__(self, name):
        self.name, self.passed, self.failed = name, 0, 0

    def expect(self, holds, claim):
        self.passed, self.failed = self.passed + bool(holds), self.failed + (not holds)
        if not holds:
            print(claim)

    def run(self, tasks, thread_count=os.cpu_count()):
        """Makes the checks, each given by its subject, a function and its arguments."""
        with ThreadPoolExecutor(thread_count) as pool:
            for subject, found in [(subject, pool.submit(complaints, *task)) for subject, *task in tasks]:
                self.expect(not found.result(), "\n".join(f"{subject}: {text}" for text in found.result()[:5]))

    def close(self):
        print(f"{self.name}: {self.passed} passed, {self.failed} failed")
        sys.exit(0 if self.passed and not self.failed else 1)


def skip(name, reason, package):
    """Ends a check that lacks a tool; 77 is what the test runner takes for skipped."""
    print(f"{name}: {reason}; on Debian it is the package {package}")
    sys.exit(77)
