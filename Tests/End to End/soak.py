"""Many loops in a row: what the program needs does not grow."""

import signal
import sys
import unittest

from program import LOADED, EndToEndTest


class Soak(EndToEndTest):
    loop_seconds = 0.02

    def test_memory_does_not_grow_over_a_thousand_loops(self):
        program = self.start(SDL_AUDIODRIVER="dummy")
        program.wait_for(LOADED)
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
