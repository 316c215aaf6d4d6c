"""Help and Info from end to end: the manual and the maker's site come up over the
main screen while it plays, and go again; nothing of it is left behind."""

import contextlib
import os
import signal
import sys
import unittest

from program import LOADED, STARTING, EndToEndTest, wait_until

SITE = "https://qrvx.example/"
CANNOT_BE_SHOWN = "This page cannot be shown."
HAS_STOPPED = "This page has stopped working."


class Help(EndToEndTest):
    def open_manual(self, program, open_it):
        """Answers the lines that opening printed."""
        opened = program.lines.count("ShowHelp")
        open_it()
        program.wait_for("ShowHelp", count=opened + 1)
        start = len(program.lines) - 1
        wait_until(program.shows_manual, "picture of the manual")
        # Its process may still be on the way to the message bus, which loading again or
        # going back would cut off.
        wait_until(program.has_started_page, "process of the page")
        program.drain()
        return [line for line in program.lines[start:]
                if "looped" not in line and "MIDI event" not in line]

    def manual_lines(self):
        address = (self.installation.resources / "manual.pdf").as_uri()
        return ["ShowHelp", "navigationAction: ", address, "navigationResponse: ", address]

    def end(self, program):
        """With all that it has started."""
        processes = program.descendants()
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        wait_until(lambda: not any(os.path.exists(f"/proc/{pid}") for pid in processes),
                   "end of the processes")
        self.check_faults(program)
        notes = [str(path) for path in self.installation.runtime.glob(".flatpak/*")]
        self.assertEqual(notes, [], "The sandbox's notes are still there.")

    def test_shows_the_manual_while_it_plays(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Play")
        program.wait_for("looped: 1.")
        lines = self.open_manual(program, lambda: program.press("Help"))
        self.assertEqual(lines, self.manual_lines())
        loops = sum("looped" in line for line in program.lines)
        program.wait_for("looped", count=loops + 2)
        program.press("Back")
        program.button("Stop")
        wait_until(lambda: not program.shows_manual(), "end of the manual")
        self.end(program)

    def test_leaves_the_manual_by_keyboard_and_comes_back(self):
        program = self.start()
        program.wait_for(LOADED)
        program.button("Play")
        for _ in range(2):
            lines = self.open_manual(program, lambda: program.type("F1"))
            self.assertEqual(lines, self.manual_lines())
            program.type("Escape")
            program.button("Play")
            wait_until(lambda: not program.shows_manual(), "end of the manual")
        # The control that had the keyboard has it again.
        program.type("space")
        program.wait_for(STARTING)
        self.end(program)

    def test_ends_with_the_manual_open(self):
        program = self.start()
        program.wait_for(LOADED)
        self.open_manual(program, lambda: program.press("Help"))
        self.end(program)

    def test_goes_to_the_makers_site(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Info")
        program.wait_for("ShowInfo")
        start = len(program.lines) - 1
        program.wait_for(SITE)
        # Where names are not looked up, and where no such name is, the page says so.
        wait_until(lambda: program.shows_text(CANNOT_BE_SHOWN), "message")
        self.assertEqual(program.lines[start:], ["ShowInfo", "navigationAction: ", SITE])
        # The message does not wait for the process of the page.
        wait_until(program.has_started_page, "process of the page")
        program.press("Back")
        program.button("Play")
        self.end(program)

    def test_lives_on_when_the_pages_process_dies(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Play")
        self.open_manual(program, lambda: program.press("Help"))
        for pid in program.page_processes():
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)
        wait_until(lambda: program.shows_text(HAS_STOPPED), "message")
        loops = sum("looped" in line for line in program.lines)
        program.wait_for("looped", count=loops + 2)
        program.type("alt+l")  # the mnemonic of Load Again
        wait_until(program.shows_manual, "picture of the manual")
        program.press("Back")
        program.button("Stop")
        self.end(program)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
