"""The program on a real sound server: PipeWire with a sink that goes nowhere,
started by the test, and what reaches the sink recorded from its monitor."""

import array
import math
import os
import signal
import subprocess
import sys
import unittest

from program import LOADED, STARTING, STOPPING, EndToEndTest, wait_until

GONE = "The audio device has gone away; going on with the default device."
SINK = ("{ factory.name=support.null-audio-sink node.name=nowhere node.description=Nowhere "
        "media.class=Audio/Sink object.linger=true audio.position=FL,FR }")


class PipeWire:
    """The daemon, its session manager and one sink, in a folder of their own."""

    def __init__(self, runtime):
        self.environment = dict(os.environ, XDG_RUNTIME_DIR=str(runtime),
                                PIPEWIRE_RUNTIME_DIR=str(runtime))
        self.processes = []

    def start(self):
        self._run("pipewire")
        wait_until(lambda: self._ask("pw-cli", "info", "0"), "PipeWire")
        self._run("wireplumber")
        self._ask("pw-cli", "create-node", "adapter", SINK)
        wait_until(lambda: "nowhere" in self._ask("pw-cli", "ls", "Node"), "sink in the graph")

    def stop(self):
        for process in reversed(self.processes):
            process.kill()
            process.wait()
        self.processes = []

    def record(self, path):
        """Records the sink's monitor from now on; answers the recorder."""
        recorder = subprocess.Popen(
            ["pw-record", "-P", "stream.capture.sink=true", "--target", "nowhere",
             "--format", "f32", "--rate", "48000", "--channels", "2", str(path)],
            env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: "pw-record" in self._ask("pw-cli", "ls", "Node"), "recorder")
        return recorder

    def _run(self, *command):
        self.processes.append(subprocess.Popen(
            command, env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))

    def _ask(self, *command):
        answer = subprocess.run(command, env=self.environment, capture_output=True, text=True,
                                check=False)
        return answer.stdout if answer.returncode == 0 else ""


def level(samples):
    return math.sqrt(sum(sample * sample for sample in samples) / max(1, len(samples)))


def samples_of(path):
    """The samples of a WAVE file that may still be growing."""
    content = path.read_bytes()
    start = content.find(b"data") + 8
    samples = array.array("f")
    samples.frombytes(content[start:start + (len(content) - start) // 4 * 4])
    return samples


def seconds_of_sound(path):
    return sum(sample != 0.0 for sample in samples_of(path)) / (2 * 48000)


class SoundServer(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.server = PipeWire(self.installation.runtime)
        self.addCleanup(self.server.stop)

    def start_on_server(self):
        runtime = str(self.installation.runtime)
        program = self.start(SDL_AUDIODRIVER=None, XDG_RUNTIME_DIR=runtime,
                             PIPEWIRE_RUNTIME_DIR=runtime)
        program.wait_for(LOADED)
        return program

    def test_is_heard_on_the_sound_server(self):
        self.server.start()
        program = self.start_on_server()
        path = self.installation.root / "heard.wav"
        recorder = self.server.record(path)
        self.addCleanup(recorder.kill)
        program.press("Play")
        wait_until(lambda: path.exists() and seconds_of_sound(path) > 2, "two seconds of sound")
        program.press("Stop")
        program.wait_for(STOPPING)
        recorder.send_signal(signal.SIGINT)
        recorder.wait()
        self.assertEqual(program.end_with(signal.SIGTERM), 0)
        self.assertEqual(program.errors, [])
        loud = [sample for sample in samples_of(path) if sample != 0.0]
        self.assertGreater(level(loud), 0.01)
        self.assertLessEqual(max(map(abs, loud)), 1.0)

    def test_goes_on_when_the_sound_server_comes_back(self):
        self.server.start()
        program = self.start_on_server()
        program.press("Play")
        program.wait_for("looped: 2.")
        self.server.stop()
        wait_until(lambda: GONE in program.errors, "word of the lost device")
        self.server.start()
        loops = sum("looped" in line for line in program.lines)
        program.wait_for("looped", count=loops + 4)
        path = self.installation.root / "heard.wav"
        recorder = self.server.record(path)
        self.addCleanup(recorder.kill)
        wait_until(lambda: path.exists() and level(samples_of(path)[-4800:]) > 0.01,
                   "sound after the loss")
        self.assertEqual(program.errors.count(GONE), 1)
        program.press("Stop")
        program.wait_for(STOPPING)
        self.assertEqual(program.end_with(signal.SIGTERM), 0)

    def test_says_why_it_cannot_play_without_a_device(self):
        program = self.start_on_server()
        program.press("Play")
        self.assertEqual(program.wait(), -signal.SIGABRT)
        told = [line for line in program.errors if line.startswith("Fatal error: ")]
        self.assertEqual(len(told), 1, program.errors)
        self.assertRegex(told[0], r"^Fatal error: AUEnginePlayer::ERROR: Could not "
                                  r"(start audio engine\. error|set audio session active true\. "
                                  r"system error): .+\.$")
        self.assertNotIn(STARTING, program.lines)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
