"""Drives the program as a person would: on a display, a message bus and a home
folder of its own, with its sound going to a file. To be run by `session`."""

import array
import contextlib
import os
import pathlib
import queue
import re
import shutil
import subprocess
import tempfile
import threading
import time
import unittest

PATIENCE = 60  # seconds; only a test that fails waits so long

# The colour of the manual's page, which nothing else on the screen has.
MAGENTA = b"\xff\x00\xff"

# Lines that tell how far the program has come.
LOADED = "WARNING: Audio unit is nil (yet?)."
STARTING = "AUEnginePlayer: Audio engine starting."
STOPPING = "AUEnginePlayer: Audio engine stopping."
DISK_DRIVER = re.compile(r"CRITICAL: +(You are using the SDL disk|Writing to file \[)")


class Display:
    """An X server of its own, as `with Display("1280x800"):`."""

    def __init__(self, size):
        self.size = size

    def __enter__(self):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", self.size + "x24",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb does not start.")
        os.environ["DISPLAY"] = f":{number}"
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()


class Installation:
    """A copy of the built program with short demonstration loops, in a temporary
    folder, as `with Installation(build_folder) as installation:`."""

    def __init__(self, build, loop_seconds=0.5):
        self.loop_seconds = loop_seconds
        self.build = pathlib.Path(build)
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="parvane-end-to-end-"))
        self.program = self.root / "bin" / "parvane-host"
        self.resources = self.root / "share" / "parvane-host"
        self.home = self.root / "home"
        self.runtime = self.root / "run"

    def __enter__(self):
        self.program.parent.mkdir()
        self.home.mkdir()
        self.runtime.mkdir(mode=0o700)
        shutil.copy2(self.build / "bin" / "parvane-host", self.program)
        modules = self.build / "lib" / "parvane-host"
        if modules.exists():
            shutil.copytree(modules, self.root / "lib" / "parvane-host")
        shutil.copytree(self.build / "libexec", self.root / "libexec")
        shutil.copytree(self.build / "share" / "parvane-host", self.resources,
                        ignore=shutil.ignore_patterns("*.m4a"))
        self._make_loops()
        self.make_manual()
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root)

    def _make_loops(self):
        """Eighty files, all the same: which one is picked does not matter."""
        first = self.resources / "1.m4a"
        subprocess.run(
            ["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
             f"sine=frequency=330:sample_rate=48000:duration={self.loop_seconds},volume=4,"
             "aformat=channel_layouts=stereo",
             "-c:a", "aac", "-b:a", "128k", str(first)], check=True)
        for number in range(2, 81):
            shutil.copy2(first, self.resources / f"{number}.m4a")

    def make_manual(self):
        """One page, all in magenta."""
        content = b"1 0 1 rg 0 0 595 842 re f"
        objects = [b"<</Type/Catalog/Pages 2 0 R>>",
                   b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
                   b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 595 842]/Contents 4 0 R"
                   b"/Resources<<>>>>",
                   b"<</Length %d>>stream\n%s\nendstream" % (len(content), content)]
        document = b"%PDF-1.4\n"
        table = b"0000000000 65535 f \n"
        for number, each in enumerate(objects, 1):
            table += b"%010d 00000 n \n" % len(document)
            document += b"%d 0 obj\n%s\nendobj\n" % (number, each)
        count = len(objects) + 1
        document += (b"xref\n0 %d\n%strailer<</Size %d/Root 1 0 R>>\nstartxref\n%d\n%%%%EOF\n"
                     % (count, table, count, len(document)))
        (self.resources / "manual.pdf").write_bytes(document)

    def recording(self):
        return recording(self.root)

    def run(self, lv2_path, **environment):
        """Starts the program; a variable of the environment that is None is unset."""
        return Program(self, lv2_path, environment)


def recording(folder):
    """What reached the disk driver: samples of all channels, in turn."""
    samples = array.array("f")
    content = (folder / "recording.raw").read_bytes()
    samples.frombytes(content[:len(content) // 4 * 4])
    return samples


def thread_names(pid):
    """Of a process's threads; none when it has gone."""
    names = []
    for name in pathlib.Path(f"/proc/{pid}/task").glob("*/comm"):
        with contextlib.suppress(OSError):
            names.append(name.read_text(encoding="utf-8").strip())
    return names


class Program:
    """The running program, its lines and its buttons."""

    def __init__(self, installation, lv2_path, changes):
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(("XDG_", "GTK_", "GDK_", "GSK_", "WAYLAND_"))}
        environment.update(
            HOME=str(installation.home),
            # Without one GLib makes do with a folder in the home folder.
            XDG_RUNTIME_DIR=str(installation.runtime),
            LV2_PATH=str(lv2_path),
            SDL_AUDIODRIVER="disk",
            SDL_DISKAUDIOFILE=str(installation.root / "recording.raw"),
            GDK_BACKEND="x11")
        for name, value in changes.items():
            environment.pop(name, None)
            if value is not None:
                environment[name] = value
        self.process = subprocess.Popen([str(installation.program)], env=environment, text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.lines = []
        self.errors = []
        self._arrived = queue.Queue()
        self._readers = [
            threading.Thread(target=self._read, args=(self.process.stdout, self._arrived.put)),
            threading.Thread(target=self._read, args=(self.process.stderr, self.errors.append))]
        for reader in self._readers:
            reader.start()

    @staticmethod
    def _read(stream, take):
        for line in stream:
            take(line.rstrip("\n"))

    def wait_for(self, text, count=1):
        """Reads lines until `count` lines contain `text`; answers the last."""
        end = time.monotonic() + PATIENCE
        while True:
            found = [line for line in self.lines if text in line]
            if len(found) >= count:
                return found[count - 1]
            try:
                self.lines.append(self._arrived.get(timeout=max(0, end - time.monotonic())))
            except queue.Empty:
                raise AssertionError(f"'{text}' was not printed {count} times in:\n" +
                                     "\n".join(self.lines + self.errors)) from None

    def drain(self):
        """Reads the lines that have come so far."""
        with contextlib.suppress(queue.Empty):
            while True:
                self.lines.append(self._arrived.get_nowait())

    def resident_memory(self):
        """In KiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return int(status.split("VmRSS:")[1].split()[0])

    def effect(self):
        """The process that holds the effect; None while there is none."""
        for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
            with contextlib.suppress(OSError):
                name, rest = status.read_text().rsplit(")", 1)
                state, parent = rest.split()[:2]
                if (name.endswith("(parvane-effect") and state != "Z" and
                        int(parent) == self.process.pid):
                    return int(status.parent.name)
        return None

    def end_with(self, number):
        """Sends a signal and answers the exit status."""
        self.process.send_signal(number)
        return self.wait()

    def wait(self):
        status = self.process.wait(PATIENCE)
        for reader in self._readers:
            reader.join()
        self.drain()
        self.process.stdout.close()
        self.process.stderr.close()
        return status

    def kill(self):
        """Makes sure that the program is gone, however the test ended."""
        if self.process.poll() is None:
            self.process.kill()
        if not self.process.stdout.closed:
            self.wait()

    def button(self, name):
        """The visible button of that accessible name, once it is there."""
        return wait_until(lambda: self._find_button(name), f"a button '{name}'")

    def press(self, name):
        button = self.button(name)
        wait_until(lambda: button.queryAction().doAction(0), f"a press of '{name}'")

    def shows(self, name):
        return self._find_button(name) is not None

    def shows_text(self, text):
        return self._find("ROLE_LABEL", text) is not None

    def shows_manual(self):
        """Whether a good part of the screen has the manual's colour."""
        picture = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"],
                                 capture_output=True, check=True).stdout
        pixels = [picture[start:start + 3] for start in range(0, len(picture), 3)]
        return pixels.count(MAGENTA) > len(pixels) // 20

    def page_processes(self):
        """The processes that hold web pages."""
        return [pid for pid in self.descendants()
                if any(name.startswith("WebKitWebProc") for name in thread_names(pid))]

    def has_started_page(self):
        """Whether a page's process talks on the message bus. One that ends before warns
        that there is nobody to talk to."""
        return any("gdbus" in thread_names(pid) for pid in self.page_processes())

    def descendants(self):
        """The processes that the program has started, and those that these have."""
        parents = {}
        for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
            with contextlib.suppress(OSError):
                fields = stat.read_text(encoding="utf-8").rpartition(")")[2].split()
                parents[int(stat.parent.name)] = int(fields[1])
        found = {self.process.pid}
        while True:
            more = {pid for pid, parent in parents.items() if parent in found} - found
            if not more:
                return found - {self.process.pid}
            found |= more

    def window(self):
        """The X window; its number is what xdotool takes."""
        def search():
            found = subprocess.run(
                ["xdotool", "search", "--onlyvisible", "--name", "^Parvane Host$"],
                capture_output=True, text=True, check=False).stdout.split()
            return found[0] if found else None
        return wait_until(search, "a window")

    def view_window(self):
        """The X window that the effect draws its view in; None while none is seen."""
        tree = output_of("xwininfo", "-tree", "-id", self.window())
        inside = re.findall(r"^( +)(0x[0-9a-f]+) .*  \+-?\d+\+-?\d+$", tree, re.MULTILINE)
        depth, deepest = max(((len(indent), number) for indent, number in inside),
                             default=(0, None))
        # Around it are the frame's two windows.
        if depth < 11 or "IsViewable" not in output_of("xwininfo", "-id", deepest):
            return None
        return deepest

    def type(self, keys):
        """Types a combination of keys with the window in focus."""
        window = self.window()
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", keys], check=True)

    def _find_button(self, name):
        return self._find("ROLE_PUSH_BUTTON", name)

    def _find(self, role, name):
        # Not before there is a bus to look at.
        import pyatspi  # pylint: disable=import-outside-toplevel

        def search(node):
            # A page whose process has died leaves dead branches behind.
            with contextlib.suppress(Exception):
                # What is inside something hidden is nothing to anybody.
                if (node.getRole() != pyatspi.ROLE_APPLICATION and
                        not node.getState().contains(pyatspi.STATE_VISIBLE)):
                    return None
                if node.getRole() == getattr(pyatspi, role) and node.name == name:
                    return node
                for index in range(node.childCount):
                    found = search(node.getChildAtIndex(index))
                    if found:
                        return found
            return None

        for application in pyatspi.Registry.getDesktop(0):
            with contextlib.suppress(Exception):
                if application and application.get_process_id() == self.process.pid:
                    return search(application)
        return None


def output_of(*command):
    """What a command prints, also when it fails."""
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


class Extent:
    """Where an X window is on the screen, in pixels."""

    def __init__(self, window):
        text = output_of("xwininfo", "-id", window)
        self.left, self.top, self.width, self.height = (
            int(re.search(rf"{name}: +(-?\d+)", text).group(1))
            for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        self.right = self.left + self.width
        self.bottom = self.top + self.height

    def __eq__(self, other):
        return isinstance(other, Extent) and vars(self) == vars(other)


def wait_until(ask, what):
    """Asks until the answer is true; the accessibility bus and X tell of nothing
    by themselves that a script could wait on."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        answer = ask()
        if answer:
            return answer
        time.sleep(0.05)
    raise AssertionError(f"There was no {what} within {PATIENCE} s.")


class EndToEndTest(unittest.TestCase):
    """A test with a display and an installation of its own. CTest hands over the
    build folder in the environment."""
    maxDiff = None
    loop_seconds = 0.5
    screen_size = "1280x800"

    def setUp(self):
        build = pathlib.Path(os.environ["PARVANE_BUILD"])
        self.effects = build / "lib" / "lv2"
        self.enterContext(Display(self.screen_size))
        self.installation = self.enterContext(
            Installation(build, self.loop_seconds))

    def start(self, lv2_path=None, **environment):
        """Starts the program, with the effect unless another path is given."""
        program = self.installation.run(lv2_path or self.effects, **environment)
        self.addCleanup(program.kill)
        return program

    def check_faults(self, program):
        # SDL announces its disk driver in this way.
        self.assertEqual([line for line in program.errors if not DISK_DRIVER.match(line)], [])
        left = [str(path) for path in self.installation.home.rglob("*")]
        self.assertEqual(left, [], "The program left something in the home folder.")
