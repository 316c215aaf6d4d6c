"""The program's main job from end to end: the effect is found, and Play loops a
file through it until Stop; every line is checked, and what is heard."""

import math
import os
import pathlib
import re
import signal
import sys
import time
import unittest

from program import DISK_DRIVER, LOADED, STARTING, STOPPING, EndToEndTest, wait_until

CONNECTED = "AUExtensionManager: Performed audio unit connection."
NO_VIEW = "ERROR: Something is wrong with the view controller and view of the audio unit."
SESSION = "AUEnginePlayer: Audio session was set active."
NOTHING_FOUND = "ERROR: There were no audio units found."
MIDI = re.compile(r"AUEnginePlayer: MIDI event from audio unit at: \d+, data: \d+, \d+, \d+$")


class Playback(EndToEndTest):
    def main_screen_lines(self):
        return ["ViewController: The app's documents path is: " +
                str(self.installation.home / "Documents"),
                "ViewController: The app's resources path is: " +
                str(self.installation.resources)]

    def search_lines(self, pid):
        return ["AUExtensionManager: Loaded component has following properties.",
                "", f"Process Name: parvane-host PID: {pid}", "",
                "AUExtension (", "type: aumf", "subtype: zvqr", "manufacturer: QRVX",
                "flags: 0x00000002", ")",
                "AUExtensionManager: Audio unit was found, making connections now ...",
                "AUEnginePlayer: A new audio unit will be connected.",
                "AUEnginePlayer: The audio unit reports MIDI output names. "
                "Assigning a handling block.",
                "AUEnginePlayer: Audio unit was attached.",
                "AUEnginePlayer::ERROR: There was a problem with the file processing format or "
                "the file is nil (yet).",
                CONNECTED,
                "ViewController: Loading the audio unit's interface...",
                LOADED]

    def start_lines(self, path):
        return [f"AUEnginePlayer: Audio file at '{path}' was selected for loading into the player.",
                "AUEnginePlayer: Player was (temporarily) disconnecting from the main mixer.",
                "AUEnginePlayer: Audio unit was (temporarily) disconnecting from the player.",
                "2",
                "AUEnginePlayer: Audio unit re-connecting to the player.",
                "AUEnginePlayer: Audio unit re-connectingto the main mixer.",
                path,
                SESSION,
                STARTING]

    def check_start(self, lines, pid):
        """The first two lines come first; then the main thread and the one that
        loads the effect print side by side, each in its order."""
        self.assertEqual(lines[:2], [
            "Info: Main view controller loaded.",
            "NOTE: WE ARE IN AUDIO UNIT RELEASE MODE. ENSURE THE STORYBOARD CONNECTIONS ARE VALID!"])
        of_main = self.main_screen_lines()
        rest = lines[2:]
        self.assertEqual([line for line in rest if line in of_main], of_main)
        self.assertEqual([line for line in rest if line not in of_main], self.search_lines(pid))

    def check_recording(self, seconds):
        samples = self.installation.recording()
        self.assertTrue(all(math.isfinite(sample) for sample in samples))
        # SDL's disk driver runs a little fast, and the effect takes its time to start.
        self.assertGreater(len(samples), 0.9 * seconds * 48000 * 2)
        body = samples[len(samples) // 10:-len(samples) // 10]
        level = math.sqrt(sum(sample * sample for sample in body) / len(body))
        self.assertGreater(level, 0.01, "The recording is silent.")
        self.assertLessEqual(max(map(abs, samples)), 1.0)

    def test_plays_twenty_loops_through_the_effect(self):
        program = self.start()
        program.wait_for(LOADED)
        self.check_start(program.lines, program.process.pid)
        before = len(program.lines)

        program.press("Play")
        program.wait_for("looped: 20.")
        program.button("Stop")
        self.assertFalse(program.shows("Play"))
        program.press("Stop")
        program.wait_for(STOPPING)
        program.button("Play")
        self.assertFalse(program.shows("Stop"))
        self.assertEqual(program.end_with(signal.SIGTERM), 0)

        lines = [line for line in program.lines[before:] if not MIDI.match(line)]
        path = re.search(r"'(.*)'", lines[0]).group(1)
        self.assertRegex(path, re.escape(str(self.installation.resources)) + r"/[1-8]?\d\.m4a$")
        start = self.start_lines(path)
        self.assertEqual(lines[:len(start)], start)
        loops = lines[len(start):-2]
        self.assertGreaterEqual(len(loops), 20)
        # A loop or two may follow while Stop is on its way.
        self.assertEqual(loops, [f"AUEnginePlayer: Current audio file '{path}' looped: {count}."
                                 for count in range(1, len(loops) + 1)])
        self.assertEqual(lines[-2:], [SESSION, STOPPING])
        self.assertNotIn(NO_VIEW, program.lines)
        self.assertTrue(any(MIDI.match(line) for line in program.lines),
                        "The effect's MIDI was not heard.")
        self.check_recording(10)
        self.check_faults(program)

    def test_works_by_keyboard_alone(self):
        program = self.start()
        program.wait_for(LOADED)
        program.button("Play")
        program.type("ctrl+space")
        program.wait_for(STARTING)
        program.button("Stop")
        program.type("ctrl+space")
        program.wait_for(STOPPING)
        program.button("Play")
        # The control in the place of the last has the keyboard.
        program.type("space")
        program.wait_for(STARTING, count=2)
        program.button("Stop")
        program.type("ctrl+q")
        self.assertEqual(program.wait(), 0)
        self.check_faults(program)

    def test_ends_while_playing(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(signal=number):
                program = self.start()
                program.wait_for(LOADED)
                program.press("Play")
                program.wait_for("looped: 2.")
                self.assertEqual(program.end_with(number), 0)
                self.check_faults(program)

    def test_ends_when_the_window_is_closed(self):
        program = self.start()
        program.wait_for(LOADED)
        program.type("ctrl+w")
        self.assertEqual(program.wait(), 0)
        self.check_faults(program)

    def test_starts_and_ends_while_the_effect_hangs(self):
        program = self.start()
        program.wait_for(LOADED)
        program.button("Play")
        effect = program.effect()
        os.kill(effect, signal.SIGSTOP)
        asked = time.monotonic()
        program.type("ctrl+space")
        program.wait_for(STARTING)
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        self.assertLess(time.monotonic() - asked, 15, "Something waited for the effect.")
        wait_until(lambda: not pathlib.Path(f"/proc/{effect}").exists(), "end of the effect")
        self.check_faults(program)

    def test_goes_on_when_the_effect_dies(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Play")
        program.wait_for("looped: 2.")
        first = program.effect()
        os.kill(first, signal.SIGKILL)
        second = wait_until(lambda: program.effect() not in (None, first) and program.effect(),
                            "effect after the first")
        self.assertFalse(pathlib.Path(f"/proc/{first}").exists())
        heard = sum(bool(MIDI.match(line)) for line in program.lines)
        loops = sum("looped:" in line for line in program.lines)
        program.wait_for("looped:", count=loops + 6)
        self.assertGreater(sum(bool(MIDI.match(line)) for line in program.lines), heard,
                           "The effect that was started again turns no rotor.")
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        wait_until(lambda: not pathlib.Path(f"/proc/{second}").exists(), "end of the effect")
        name = "QRVX: KOV TORVELD Parvane Extension (AU)"
        self.assertEqual([line for line in program.errors if not DISK_DRIVER.match(line)],
                         [f"The effect '{name}' ended unexpectedly (SIGKILL); "
                          "it is started again."])
        counts = [int(line.rsplit(" ", 1)[1][:-1]) for line in program.lines if "looped:" in line]
        self.assertEqual(counts, list(range(1, len(counts) + 1)))
        self.check_recording(3)

    def test_takes_the_effect_along_when_it_is_killed(self):
        program = self.start()
        program.wait_for(LOADED)
        effect = program.effect()
        self.assertEqual(program.end_with(signal.SIGKILL), -signal.SIGKILL)
        wait_until(lambda: not pathlib.Path(f"/proc/{effect}").exists(), "end of the effect")

    def test_plays_without_an_effect(self):
        program = self.start(lv2_path=self.installation.home)
        program.wait_for(NOTHING_FOUND)
        program.press("Play")
        program.wait_for("looped: 3.")
        self.assertIn("AUEnginePlayer: The player was connected to the mainMixerNode.",
                      program.lines)
        self.assertNotIn(CONNECTED, program.lines)
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        self.check_recording(1)
        self.check_faults(program)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
