"""Makes the package, unpacks it below an empty folder and uses what is in it; the same for an install below a prefix."""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv.pop(1))
SOURCE = pathlib.Path(__file__).resolve().parent.parent
ENVIRONMENT = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": "/nonexistent"}


def run(*command, expected=0):
    """What a command prints on both streams."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, env=ENVIRONMENT)
    assert done.returncode == expected, f"{command} ends with {done.returncode}:\n{done.stdout}"
    return done.stdout


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", cls.folder / "package")
        (cls.package,) = (cls.folder / "package").glob("krohost_*.deb")
        run("dpkg-deb", "-x", cls.package, cls.folder / "root")
        cls.usr = cls.folder / "root/usr"
        run("cmake", "--install", BUILD, "--prefix", cls.folder / "a prefix")

    def files(self, pattern):
        return sorted(path for path in self.usr.rglob(pattern) if path.is_file())

    def test_a_sample_is_loaded_from_either_place(self):
        for prefix in [self.usr, self.folder / "a prefix"]:
            sample = prefix / "share/doc/krohost/examples/wing.vtu"
            shown = json.loads(run(prefix / "bin/krohost", "info", "--demand", "--json", sample))
            self.assertEqual([shown["loader"], shown["dialogs"], len(shown["zones"])], ["VTK Data Loader", [], 1])

    def test_the_error_names_every_place_looked_at(self):
        (add_on,) = self.files("vtk-data-loader.so")
        moved = add_on.rename(self.folder / "moved.so")
        text = run(self.usr / "bin/krohost", self.usr / "share/doc/krohost/examples/wing.vtu", expected=4)
        moved.rename(add_on)
        for place in [self.usr / "lib/vtk-data-loader.so", add_on]:
            self.assertIn(f'"{place}"', text)

    def test_nothing_refers_to_the_places_of_the_build(self):
        for file in self.files("*"):
            self.assertNotIn(str(BUILD).encode(), file.read_bytes(), file)

    def test_no_file_runs_or_looks_for_code_where_a_stranger_may_put_it(self):
        places = [BUILD / "bin", BUILD / "lib", self.usr, self.folder / "a prefix"]
        files = [file for place in places for file in place.rglob("*") if file.is_file()]
        binaries = [file for file in files if file.read_bytes()[:4] == b"\x7fELF"]
        self.assertGreater(len(binaries), 12)
        checked = []  # calls of the C library that know how much room there is
        for file in binaries:
            text = run("readelf", "-hldW", "--dyn-syms", file)
            for path in re.findall(r"(?:RPATH|RUNPATH).*\[(.*)\]", text):
                for entry in path.split(":"):
                    self.assertRegex(entry, r"^(/|\$ORIGIN(/|$))", file)
            for expected in [r"Type: +DYN", "BIND_NOW|FLAGS_1.* NOW", "GNU_RELRO", "GNU_STACK .* RW "]:
                self.assertRegex(text, expected, file)
            if self.usr in file.parents:
                self.assertIn("__stack_chk_fail@", text, file)
                checked += re.findall(r"__mem\w+_chk@", text)
        self.assertTrue(checked)

    def test_the_libraries_it_needs_are_dependencies(self):
        depends = run("dpkg-deb", "-f", self.package, "Depends")
        for library in ["libc6", "libstdc++6", "libfmt", "libqt", "libdeflate", "libboost-filesystem", "zlib1g"]:
            self.assertIn(library, depends)
        self.assertEqual(run("dpkg-deb", "-f", self.package, "Section"), "science\n")

    def test_the_checker_of_packages_finds_no_errors(self):
        self.assertNotRegex(run("lintian", "--allow-root", self.package), r"(?m)^[EW]: ")

    def test_the_public_header_compiles_alone_in_both_languages(self):
        header = self.usr / "include/krohost/kro.h"
        for language in ["c", "c++"]:
            run("g++", "-x", language, "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only", header)

    def test_the_manual_page_is_shown_without_warnings(self):
        (page,) = self.files("krohost.1.gz")
        text = run("man", "--warnings", "-l", page)
        self.assertNotIn("warning:", text)
        for word in ["COMMANDS", "krohost info FILE...", "--time-source", "EXIT CODES", "KROHOST_ADDON_PATH", "FILES"]:
            self.assertIn(word, text)
        self.assertNotIn("--man", text)

    def test_completions_are_where_the_shells_look(self):
        for file in ["bash-completion/completions/krohost", "zsh/vendor-completions/_krohost",
                     "fish/vendor_completions.d/krohost.fish"]:
            self.assertIn("pvtu", (self.usr / "share" / file).read_text())


unittest.main()
