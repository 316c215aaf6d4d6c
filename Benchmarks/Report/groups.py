"""What the page of all benchmarks says about each group, in the order in which it is read.

A group's peers are named by the Debian packages that they come from: their versions
are noted when the group is measured.
"""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Group:
    """A group of benchmarks, as `./bench` names it."""

    heading: str
    how: str  # how it is measured, for a reader who knows neither code nor peers
    peers: tuple[str, ...]


GROUPS = {
    "start": Group(
        "Starting the program",
        "The time from starting the program until its window is on the screen, and until the "
        "effect is connected, beside a program that opens an empty window with the same "
        "toolkit. Both are started by turns on a display in memory.",
        ("libgtkmm-4.0-0", "libgtk-4-1")),
    "interface": Group(
        "The window",
        "The time from pressing F1 until the manual's first page has been drawn, beside a bare "
        "window with the same web view: one as it comes, and one that draws pages without "
        "OpenGL, as the program does. And what the effect's view costs the program's main "
        "thread while it moves.",
        ("libwebkitgtk-6.0-4", "libgtk-4-1")),
    "registry": Group(
        "Finding the effect",
        "Searching all plug-ins that are installed on this machine, beside the library that "
        "LV2 hosts use for that. In one process again and again, and as a whole process.",
        ("liblilv-0-0", "lilv-utils")),
    "files": Group(
        "Reading audio files",
        "Decoding a minute of AAC to its end, beside the shortest loop over the same decoder; "
        "and as a whole process, beside the command ffmpeg.",
        ("libavcodec59", "ffmpeg")),
    "engine": Group(
        "The audio engine",
        "Processor time for playing a minute of AAC through an effect, from the file to the "
        "output, beside running the effect and decoding the file with nothing around them: the "
        "sum of two loops, and one loop that does both. All four take turns, and the least of "
        "24 rounds counts, since other work on the machine only ever adds. Both sides give the "
        "same samples, which is checked first. Then the time of one block beyond running an "
        "effect that does nothing, beside another engine for audio graphs.",
        ("liblilv-0-0", "libavcodec59", "juce-modules-source")),
    "process": Group(
        "The effect's own process",
        "The effect runs in a process of its own. How long the audio callback is away for a "
        "block, beside a byte that goes to another process and back through a socket, and beside "
        "two processes that do nothing but wake each other, which is as fast as it gets on this "
        "machine. And how long there is silence when the effect's process is killed while it "
        "plays.",
        ("libc6",)),
    "playing": Group(
        "Playing on a busy machine",
        "Five minutes of playing in blocks of 64 frames on a sound server of its own, while every "
        "processor has other work and files, effects and presets change at random; another "
        "host plays the same effect in the same graph at the same time.",
        ("jalv", "pipewire")),
    "animation": Group(
        "The animation kit",
        "The time of a step of each easing curve, with a callback that takes the value, for 1, "
        "1,000 and 100,000 animators: beside another toolkit's curve where that takes long to "
        "compute, beside a plain function pointer elsewhere. All take turns within milliseconds; "
        "the median of their ratios counts, and the row is the curve that comes out worst. Then "
        "what one of 100,000 costs beside one of 1,000, and how late timers tick, in slices of a "
        "second by turns, while the machine is idle and while it is busy.",
        ("libqt6core6", "libglib2.0-0")),
    "foundation": Group(
        "Queue and printing",
        "Handing a thousand empty tasks to the main thread and waiting for the last, beside two "
        "libraries' ways; writing a thousand diagnostic lines to a terminal, beside writing the "
        "same without more ado.",
        ("libboost1.74-dev", "libglib2.0-0")),
    "midi": Group(
        "Meta events",
        "Making and freeing a MIDI meta event of a mebibyte, beside the least that has to be "
        "done for it.",
        ("libc6",)),
}
