"""The line format in which every benchmark tells its figures, and what fills it.

A row is one line of JSON with these members:
  what    what was measured
  peer    what it is held against, in the same run; empty for an absolute figure
  goal    the most that the figure may be; null for none
  figures one figure a run: ratios to the peer, or absolute in `unit`
  unit    of absolute figures; empty for ratios
"""
import json
import statistics


def print_row(what, peer, goal, figures, unit=""):
    """Tells one row on standard output."""
    print(json.dumps({"what": what, "peer": peer, "goal": goal,
                      "figures": [float(figure) for figure in figures], "unit": unit},
                     ensure_ascii=False))


def ratios(ours, theirs):
    """Run by run: what drifts from run to run falls out."""
    return [our / their for our, their in zip(ours, theirs)]


def row_in(line):
    """The row that a line of a benchmark's tells, if it is one."""
    return Row(**json.loads(line)) if line.startswith('{"what"') else None


def number(value):
    return f"{value:,.0f}" if abs(value) >= 1000 else f"{value:.3g}"


class Row:
    """A row as it was told, with what can be said about it."""

    def __init__(self, what, peer, goal, figures, unit):
        self.what, self.peer, self.goal, self.unit = what, peer, goal, unit
        figures = sorted(figures)
        self.runs = len(figures)
        self.median = statistics.median(figures)
        # Between the first and the ninth tenth, or all there is of a few runs.
        self.low = figures[round(0.1 * (self.runs - 1))]
        self.high = figures[round(0.9 * (self.runs - 1))]

    @property
    def verdict(self):
        if self.goal is None:
            return "no goal"
        return "met" if self.median <= self.goal else "missed"

    def figure(self, value):
        """A value in words, with its unit."""
        return f"{number(value)} {self.unit or '×'}"
