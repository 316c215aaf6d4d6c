"""The screen from end to end: by accessible names alone, under a window manager, and
with two pixels a point."""

import os
import signal
import subprocess
import sys
import unittest

from program import (LOADED, STARTING, STOPPING, EndToEndTest, Extent, output_of, wait_until)

SITE = "https://qrvx.example/"
TITLE = "Parvane Host"


class Screen(EndToEndTest):
    """Tests of the whole screen."""
    screen_size = "2000x1500"

    def is_in_place(self, program, scale=1):
        """Whether the effect's view is seen in the middle between the window's sides,
        with room above and below it."""
        view = program.view_window()
        if not view:
            return False
        view, window = Extent(view), Extent(program.window())
        return (view.width > 400 * scale and view.left > window.left and
                abs((view.left - window.left) - (window.right - view.right)) <= 2 * scale and
                view.top > window.top + 30 * scale and
                view.bottom < window.bottom - 30 * scale)

    def wait_until_in_place(self, program, scale=1):
        wait_until(lambda: self.is_in_place(program, scale), "view of the effect in its place")

    def end(self, program):
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        self.check_faults(program)

    def test_is_walked_through_by_accessible_names(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Play")
        program.wait_for(STARTING)
        program.button("Stop")
        self.assertFalse(program.shows("Play"))
        program.press("Effect")
        self.wait_until_in_place(program)
        program.press("Help")
        program.wait_for("navigationResponse: ")
        program.button("Back")
        # What is covered is not there to be pressed.
        wait_until(lambda: not program.shows("Stop"), "end of the main screen")
        self.assertIsNone(program.view_window())
        program.press("Back")
        program.button("Stop")
        self.wait_until_in_place(program)
        program.press("Info")
        program.wait_for(SITE)
        program.press("Back")
        program.press("Stop")
        program.wait_for(STOPPING)
        program.button("Play")
        self.assertFalse(program.shows("Stop"))
        program.press("Effect")
        wait_until(lambda: not program.view_window(), "end of the view")
        self.end(program)

    def test_is_drawn_in_full_at_two_pixels_a_point(self):
        program = self.start(GDK_SCALE="2")
        program.wait_for(LOADED)
        program.press("Effect")
        self.wait_until_in_place(program, scale=2)
        view = program.view_window()
        wait_until(lambda: self.detail(view) > 0.02, "detail in the view")
        # What stood in its place is covered: the margin goes on up to the view.
        extent, margin = Extent(view), Extent(program.window()).left + 20
        above = extent.top - 1
        wait_until(lambda: self.colour(extent.left + extent.width // 2, above) ==
                   self.colour(margin, above), "plain colour around the view")
        # The pointer means what is under it: the switch at the upper right.
        before = self.picture(view)
        subprocess.run(["xdotool", "mousemove", str(extent.left + extent.width * 915 // 1000),
                        str(extent.top + extent.height * 6 // 100), "click", "1"], check=True)
        wait_until(lambda: self.differs_most_at_the_right(before, self.picture(view), extent),
                   "change of the switch")
        self.end(program)

    def colour(self, x, y):
        """Of one pixel of the screen."""
        return subprocess.run(["import", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8",
                               "rgb:-"], capture_output=True, check=True).stdout

    def picture(self, window):
        """The pixels of a window, three bytes each."""
        extent = Extent(window)
        return subprocess.run(
            ["import", "-window", "root", "-crop",
             f"{extent.width}x{extent.height}+{extent.left}+{extent.top}", "-depth", "8", "rgb:-"],
            capture_output=True, check=True).stdout

    def detail(self, window):
        """The share of pixels that differ from the one that a picture of half the size,
        drawn twice as large, would have in their place, wherever it began."""
        pixels = self.picture(window)
        stride = Extent(window).width * 3
        shares = []
        for shift in (0, 3):
            differing = total = 0
            for row in range(0, len(pixels) - stride, 4 * stride):
                line = pixels[row + shift:row + stride]
                for at in range(0, len(line) - 6, 6):
                    total += 1
                    differing += line[at:at + 3] != line[at + 3:at + 6]
            shares.append(differing / total)
        return min(shares)

    def differs_most_at_the_right(self, before, after, extent):
        """Whether the upper right corner has changed, where the switch is."""
        if len(before) != len(after):
            return False
        stride = extent.width * 3
        return any(before[row * stride + stride * 85 // 100:(row + 1) * stride] !=
                   after[row * stride + stride * 85 // 100:(row + 1) * stride]
                   for row in range(extent.height * 4 // 100, extent.height * 8 // 100))


class ManagedScreen(Screen):
    """Tests under a window manager."""

    def setUp(self):
        super().setUp()
        environment = dict(os.environ, HOME=str(self.installation.root))
        manager = subprocess.Popen(["openbox", "--sm-disable"], env=environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(manager.wait)
        self.addCleanup(manager.terminate)
        wait_until(lambda: "Openbox" in output_of("wmctrl", "-m"), "window manager")

    def manage(self, *orders):
        subprocess.run(["wmctrl", "-r", TITLE, *orders], check=True)

    def test_keeps_the_view_in_its_place(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Play")
        program.press("Effect")
        self.wait_until_in_place(program)
        number = program.window()
        for size in ("1200,900", "800,600"):
            self.manage("-e", "0,120,90," + size)
            width = int(size.split(",")[0])
            wait_until(lambda: abs(Extent(number).width - width) < 20, "new size")
            self.wait_until_in_place(program)
        small = Extent(program.view_window()).width
        self.manage("-b", "add,maximized_vert,maximized_horz")
        wait_until(lambda: Extent(number).width > 1900, "large window")
        wait_until(lambda: Extent(program.view_window()).width > 1.5 * small, "large view")
        self.wait_until_in_place(program)
        self.manage("-b", "remove,maximized_vert,maximized_horz")
        wait_until(lambda: Extent(number).width < 900, "small window")
        self.wait_until_in_place(program)

        subprocess.run(["xdotool", "windowminimize", number], check=True)
        wait_until(lambda: "IsViewable" not in output_of("xwininfo", "-id", number),
                   "end of the window")
        program.drain()
        loops = sum("looped" in line for line in program.lines)
        program.wait_for("looped", count=loops + 2)
        subprocess.run(["wmctrl", "-a", TITLE], check=True)
        self.wait_until_in_place(program)
        self.end(program)

    def test_takes_keys_where_they_belong(self):
        program = self.start()
        program.wait_for(LOADED)
        program.press("Effect")
        self.wait_until_in_place(program)
        self.take_keyboard(program)
        # The view's, who does nothing with it; then one that is not the view's: the manual.
        subprocess.run(["xdotool", "key", "ctrl+space", "key", "F1"], check=True)
        program.wait_for("ShowHelp")
        self.assertNotIn(STARTING, program.lines)
        # Before it is drawn the process of the page may still be starting, which then
        # warns, when the program ends, that there is nobody left to talk to.
        wait_until(program.shows_manual, "picture of the manual")
        # Then the host has the keyboard again.
        subprocess.run(["xdotool", "key", "Escape"], check=True)
        self.wait_until_in_place(program)
        subprocess.run(["xdotool", "key", "ctrl+space"], check=True)
        program.wait_for(STARTING)
        self.take_keyboard(program)
        subprocess.run(["xdotool", "key", "ctrl+q"], check=True)
        self.assertEqual(program.wait(), 0)
        self.check_faults(program)

    def take_keyboard(self, program):
        """Clicks beside the knobs of the view; again when it is brought to the size of
        its place at that moment, and the click was none on it."""
        clicked_at = None

        def has_keyboard():
            nonlocal clicked_at
            view = program.view_window()
            if not view:
                return False
            extent = Extent(view)
            if extent != clicked_at:
                clicked_at = extent
                subprocess.run(["xdotool", "mousemove", str(extent.left + 20),
                                str(extent.bottom - 20), "click", "1"], check=True)
            return int(output_of("xdotool", "getwindowfocus", "-f")) == int(view, 16)
        wait_until(has_keyboard, "keyboard in the view")

    def test_ends_when_the_manager_closes_the_window(self):
        program = self.start()
        program.wait_for(LOADED)
        program.window()
        subprocess.run(["wmctrl", "-c", TITLE], check=True)
        self.assertEqual(program.wait(), 0)
        self.check_faults(program)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
