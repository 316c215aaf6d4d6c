"""Whether the page of the benchmarks tells what they found: report.py SOURCES"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCES = pathlib.Path(sys.argv.pop())
TOOLS = SOURCES / "Benchmarks" / "Report"
sys.dont_write_bytecode = True
sys.path.insert(0, str(TOOLS))

from groups import GROUPS  # pylint: disable=wrong-import-position
from rows import Row  # pylint: disable=wrong-import-position

RUN = {"date": "2024-06-01 12:00 UTC", "machine": "2 × Processor", "compiler": "c++ 12",
       "commit": "0123456", "other work": 0.01, "peers": ["peer 1.2"]}


def tool(name, *arguments, said=""):
    return subprocess.run([TOOLS / name, *map(str, arguments)], input=said, capture_output=True,
                          text=True, check=False,
                          env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"})


def row(what, figures, peer="", goal=None, unit=""):
    return json.dumps({"what": what, "peer": peer, "goal": goal, "figures": figures,
                       "unit": unit}) + "\n"


class Page(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def measured(self, group, text, **circumstances):
        (self.folder / group).mkdir()
        (self.folder / group / "run.json").write_text(json.dumps({**RUN, **circumstances}))
        (self.folder / group / "rows.txt").write_text(text)

    def made(self):
        """The page, the table for people and the one for programs."""
        done = tool("page", self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        return [(self.folder / name).read_text() for name in ("index.html", "table.md",
                                                              "table.tsv")]

    def test_knows_every_group_that_is_measured(self):
        command = (SOURCES / "bench").read_text()
        groups, = re.findall(r"^all=\((.*)\)$", command, re.MULTILINE)
        self.assertEqual(sorted(groups.split()), sorted(GROUPS))
        for group in GROUPS:
            self.measured(group, row(f"Speed of {group}", [0.5], "a peer", 1))
        for text in self.made():
            for group in GROUPS:
                self.assertIn(f"Speed of {group}", text)

    def test_says_of_each_goal_whether_it_is_met(self):
        self.measured("midi", row("Fast", [0.9, 1, 1.1], "peer", 1) +
                      row("Slow", [1.9, 2, 2.1], "peer", 1) + row("Late", [0], "", 0, "blocks") +
                      row("Early", [-3], "", 20, "µs") + row("Shown", [7], "", None, "ms"))
        _, people, programs = self.made()
        self.assertIn("3 of 4 goals met", people)
        self.assertIn("| Fast | peer | 1 × | 1 × | 0.9 – 1.1 | 3 | met |", people)
        self.assertIn("| Slow | peer | 2 × | 1 × | 1.9 – 2.1 | 3 | missed |", people)
        self.assertIn("| Late | – | 0 blocks | 0 blocks | – | 1 | met |", people)
        self.assertIn("| Early | – | -3 µs | 20 µs | – | 1 | met |", people)
        self.assertIn("| Shown | – | 7 ms | – | – | 1 | no goal |", people)
        self.assertEqual(len(programs.splitlines()), 6)

    def test_names_what_failed_and_when_the_machine_was_busy(self):
        self.measured("midi", "", **{"other work": 0.5})
        (self.folder / "midi" / "meta-event.failed").touch()
        for text in self.made()[:2]:
            self.assertIn("0 of 0 goals met, 1 not measured to the end", text)
            self.assertIn("meta-event did not run to its end", text)
            self.assertIn("busy with other work", text)

    def test_refuses_a_folder_without_figures(self):
        done = tool("page", self.folder)
        self.assertEqual(done.returncode, 1)
        self.assertIn("Nothing has been measured", done.stderr)


class Rows(unittest.TestCase):
    def test_leave_a_tenth_out_at_each_end_of_the_range(self):
        found = Row("", "", 1, list(range(11)), "")
        self.assertEqual((found.low, found.median, found.high), (1, 5, 9))

    def test_are_shown_in_words_among_what_else_is_said(self):
        shown = tool("show", said="before\n" + row("Speed", [0.5], "peer", 1) + "after\n").stdout
        self.assertEqual(shown, "before\n* Speed: 0.5 × peer; at most 1 ×: met\nafter\n")

    def test_of_long_runs_come_from_what_these_print(self):
        with tempfile.NamedTemporaryFile("w", encoding="utf-8") as file:
            file.write("| calm minutes of playing | 2 |  |\n"
                       "| drop-outs: blocks that the device did without | 4 |  |\n"
                       "| drop-outs: blocks that the player had too few frames for | 0 |  |\n"
                       "| drop-outs: blocks that the effect was late with | 1 |  |\n"
                       "| node, as the sound server sees it | cycles | missed | a minute |\n"
                       "| Another host | 500 | 8 | 4.00 |\n"
                       "| Demonstration loop | 500 | 2 | 1.00 |\n"
                       "from the kill to sound again: p50 16.8 ms, p99 57.0 ms, at most 148.1 ms\n")
            file.flush()
            playing = tool("soak-rows", "playing", file.name).stdout.splitlines()
            kills = tool("soak-rows", "kills", file.name).stdout.splitlines()
        self.assertEqual([json.loads(line)["figures"] for line in playing],
                         [[1.0], [2.0], [0.0], [0.5]])
        self.assertEqual(json.loads(playing[0])["goal"], 4.0)
        self.assertEqual([json.loads(line)["figures"] for line in kills], [[16.8], [57.0], [148.1]])

    def test_of_a_long_run_that_said_nothing_are_an_error(self):
        done = tool("soak-rows", "kills", "/dev/null")
        self.assertEqual(done.returncode, 1)
        self.assertIn("has no line", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
