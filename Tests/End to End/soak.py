"""Many loops in a row: what the program needs does not grow."""

import signal
import sys
import unittest

from program import Display, Installation, environment_argument

BUILD = environment_argument("PARVANE_BUILD")


class Soak(unittest.TestCase):
    def test_memory_does_not_grow_over_a_thousand_loops(self):
        with Display(), Installation(BUILD, loop_seconds=0.02) as installation:
            program = installation.run(BUILD / "lib" / "lv2", SDL_AUDIODRIVER="dummy")
            self.addCleanup(program.kill)
            program.wait_for("WARNING: Audio unit is nil (yet?).")
            program.press("Play")
            program.wait_for("looped: 200.")
            before = program.resident_memory()
            program.wait_for("looped: 1200.")
            after = program.resident_memory()
            print(f"resident: {before} KiB after 200 loops, {after} KiB after 1200")
            # Far less than a block of audio a loop: a leak would show.
            self.assertLess(after - before, 1000)
            self.assertEqual(program.end_with(signal.SIGTERM), 0)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
