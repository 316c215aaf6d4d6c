"""The libraries' package as it has been installed: the program that comes with it, and
a program of another's built with what compilers and pkg-config find by themselves."""

import filecmp
import gzip
import pathlib
import subprocess
import sys
import tempfile
import unittest

SHARE = pathlib.Path("/usr/share")
SOURCE = pathlib.Path(__file__).parent / "ten-lines.cpp"


def said_by(*command):
    """What a command prints when it succeeds."""
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


class CurvesProgram(unittest.TestCase):
    def test_draws_the_page_that_is_installed(self):
        installed = SHARE / "doc" / "parvane-host" / "curves"
        with tempfile.TemporaryDirectory() as folder:
            said_by("parvane-curves", folder)
            names = sorted(file.name for file in installed.iterdir())
            self.assertEqual(sorted(file.name for file in pathlib.Path(folder).iterdir()), names)
            self.assertEqual(filecmp.cmpfiles(installed, folder, names, shallow=False),
                             (names, [], []))

    def test_has_the_version_of_the_package(self):
        package = said_by("dpkg-query", "-W", "-f", "${Version}", "libparvane-dev")
        self.assertEqual(said_by("parvane-curves", "--version"),
                         f"parvane-curves {package.rsplit('-', 1)[0]}\n")

    def test_has_a_manual_page(self):
        with gzip.open(SHARE / "man" / "man1" / "parvane-curves.1.gz", "rt") as page:
            self.assertTrue(page.readline().startswith(".TH PARVANE-CURVES 1 "))


class Libraries(unittest.TestCase):
    def test_serve_a_program_without_a_path_to_them(self):
        flags = said_by("pkg-config", "--cflags", "--libs", "parvane-animation-glib").split()
        with tempfile.TemporaryDirectory() as folder:
            program = folder + "/ten-lines"
            said_by("g++", "-std=c++20", str(SOURCE), "-o", program, *flags)
            self.assertEqual(said_by(program), "0\n12.5\n50\n87.5\n")


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
