"""The program as a package has installed it: started with the command of the menu's
entry by an ordinary user, and walked through once."""

import configparser
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

from program import (DISK_DRIVER, LOADED, STARTING, STOPPING, Display, Program, recording,
                     wait_until)

IDENTIFIER = "example.qrvx.ParvaneHost"
SHARE = pathlib.Path("/usr/share")
RESOURCES = SHARE / "parvane-host"
EFFECT = "/usr/lib/lv2/parvane.lv2/"


def menu_entry():
    """What the desktop reads for its menu."""
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(SHARE / "applications" / f"{IDENTIFIER}.desktop")
    return entry["Desktop Entry"]


class Installed:
    """Stands for the installation, with folders for what one user has of it."""

    def __init__(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.home = self.root / "home"
        self.runtime = self.root / "run"
        self.home.mkdir()
        self.runtime.mkdir(mode=0o700)
        command, = shlex.split(menu_entry()["Exec"])
        self.program = shutil.which(command)


def code_of(process):
    """The files that the process has code from."""
    code = set()
    for line in pathlib.Path(f"/proc/{process}/maps").read_text(encoding="utf-8").splitlines():
        fields = line.split(maxsplit=5)
        if "x" in fields[1] and len(fields) == 6 and fields[5].startswith("/"):
            code.add(fields[5])
    return code


def owners_of(files):
    """The packages that the files belong to, by file; None where there is none."""
    owners = {}
    for file in files:
        # The folders at the root are links into /usr, and packages name either.
        names = [file, file.removeprefix("/usr")]
        answer = subprocess.run(["dpkg-query", "-S", *names], capture_output=True, text=True,
                                check=False).stdout
        owners[file] = answer.split(":")[0] if answer else None
    return owners


class InstalledProgram(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.enterContext(Display())
        self.installed = Installed()
        # Without a path the registry looks in the system's own folders.
        self.program = Program(self.installed, None, {"LV2_PATH": None})
        self.addCleanup(self.program.kill)

    def check_code(self, process, own):
        """All code is of packages, and that of this one is the code expected."""
        owners = owners_of(code_of(process))
        self.assertEqual([file for file, owner in owners.items() if owner is None], [])
        self.assertEqual({file for file, owner in owners.items() if owner == "parvane-host"}, own)

    def test_plays_when_started_from_the_menu(self):
        program = self.program
        program.wait_for(LOADED)
        self.assertIn(f"ViewController: The app's resources path is: {RESOURCES}", program.lines)
        self.assertIn("AUExtensionManager: Performed audio unit connection.", program.lines)

        program.press("Play")
        program.wait_for(STARTING)
        program.wait_for(f"'{RESOURCES}/")
        program.wait_for("looped: 1.")
        program.wait_for("AUEnginePlayer: MIDI event from audio unit at: ")
        effect = program.effect()
        self.check_code(program.process.pid,
                        {"/usr/bin/parvane-host", "/usr/lib/parvane-host/ffmpeg_reader.so"})

        program.press("Effect")
        wait_until(lambda: EFFECT + "parvane-view.so" in code_of(effect), "view of the effect")
        self.check_code(effect, {"/usr/libexec/parvane-host/parvane-effect",
                                 EFFECT + "parvane.so", EFFECT + "parvane-view.so"})

        program.press("Help")
        program.wait_for("navigationResponse: ")
        self.assertIn("/usr/lib/parvane-host/web_view.so", code_of(program.process.pid))
        program.press("Back")
        program.press("Stop")
        program.wait_for(STOPPING)
        program.button("Play")
        program.type("ctrl+q")
        self.assertEqual(program.wait(), 0)

        self.assertEqual([line for line in program.errors if not DISK_DRIVER.match(line)], [])
        self.assertGreater(max(map(abs, recording(self.installed.root))), 0.05,
                           "The recording is silent.")
        self.assertEqual([str(path) for path in self.installed.home.rglob("*")], [],
                         "The program left something in the home folder.")


class MenuEntry(unittest.TestCase):
    def test_has_its_icon_in_both_forms(self):
        icons = SHARE / "icons" / "hicolor"
        icon = menu_entry()["Icon"]
        self.assertTrue((icons / "scalable" / "apps" / f"{icon}.svg").is_file())
        self.assertTrue((icons / "symbolic" / "apps" / f"{icon}-symbolic.svg").is_file())


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
