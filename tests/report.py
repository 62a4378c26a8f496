"""What the checks of krohost share: their command lines and how they close."""

import argparse
import pathlib
import sys


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


class Report:
    """Counts what holds and prints what does not."""

    def __init__(self, name):
        self.name, self.passed, self.failed = name, 0, 0

    def expect(self, holds, claim):
        self.passed, self.failed = self.passed + bool(holds), self.failed + (not holds)
        if not holds:
            print(claim)

    def add(self, subject, complaints):
        self.expect(not complaints, "\n".join(f"{subject}: {complaint}" for complaint in complaints[:5]))

    def close(self):
        print(f"{self.name}: {self.passed} passed, {self.failed} failed")
        sys.exit(0 if self.passed and not self.failed else 1)


def skip(name, reason, package):
    """Ends a check that lacks a tool; 77 is what the test runner takes for skipped."""
    print(f"{name}: {reason}; on Debian it is the package {package}")
    sys.exit(77)
