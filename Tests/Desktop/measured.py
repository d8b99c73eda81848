"""A file manager's window whose thread is watched, and what was seen of it.

The accessibility tree is off, as it costs a window with thousands of items more than anything that is
measured here: keys go to the only window there is, and what a step brought about is read from the record of
the library in FileManagers/Measuring/.
"""

import os
import subprocess
import time
from pathlib import Path

from waiting import PATIENCE, until

# For how long a window that has come to rest has done nothing.
REST_SECONDS = 0.4
MOST_TICKS_AT_REST = 3
HEARTBEAT = "heartbeat"


def microseconds():
    """The clock of the record."""
    return time.monotonic_ns() // 1000


class Call:
    """A line of the record: a call of the plug-in, or a turn of the loop that came late."""

    def __init__(self, line):
        start, duration, depth, self.what, *result = line.split()
        self.start, self.duration, self.depth = int(start), int(duration), int(depth)
        self.result = [int(number) for number in result]


class Step:
    """What one step of a user cost the window's thread, in milliseconds."""

    def __init__(self, calls):
        ours = [call for call in calls if call.what != HEARTBEAT and call.depth == 0]
        self.calls = ours
        self.ours = sum(call.duration for call in ours) / 1000
        self.longest = max((call.duration for call in ours), default=0) / 1000
        self.all = max((call.duration for call in calls if call.what == HEARTBEAT), default=0) / 1000
        # Of the last time that it was asked for the entries of files.
        self.files, self.entries = next(
            (call.result for call in reversed(calls) if call.what == "items"), (0, 0))


class MeasuredWindow:
    """Goes before a file manager's own class, whose start() it uses."""

    def _start(self, folder, environment):
        self.record = self.session.root / f"{self.name}-times"
        self.record.write_text("")
        self._read = 0
        self.process = self.session.start(self._command(folder), environment | {
            "LD_PRELOAD": str(self.session.programs.parent / "measuring/quorvane-plug-in-times.so"),
            "QUORVANE_PLUG_IN_TIMES": str(self.record),
            "NO_AT_BRIDGE": "1",  # GTK 3
            "GTK_A11Y": "none",   # GTK 4
            "GIO_USE_VFS": "local", "GIO_USE_VOLUME_MONITOR": "unix",
        })
        until(lambda: self._window(folder.name), f"a window of {self.name} on {folder.name}")
        self.rest()
        # As a window manager does, so that keys go to it.
        self._xdotool("windowfocus", self._window(folder.name))
        self.rest()

    def _window(self, title):
        assert self.process.is_running(), self.process.errors.read_text(errors="replace")
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"], check=False,
                              capture_output=True, text=True, timeout=PATIENCE).stdout.strip()

    def end(self):
        self.process.kill()

    def rest(self):
        """Waits until it has done nothing for a while."""
        last = [None, 0.0]

        def rests():
            seen = (self._ticks() // (MOST_TICKS_AT_REST + 1), self.record.stat().st_size)
            if seen != last[0] or self.process.state() != "S":
                last[:] = [seen, time.monotonic()]
            return time.monotonic() - last[1] > REST_SECONDS

        until(rests, f"{self.name} at rest")

    def _ticks(self):
        """Of the processor, that all of its threads have used."""
        fields = Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return int(fields[11]) + int(fields[12])

    def seen(self):
        """What was recorded since the last time."""
        with open(self.record, encoding="utf-8") as record:
            record.seek(self._read)
            lines = record.readlines()
            self._read = record.tell()
        return Step([Call(line) for line in lines])

    def step(self, act):
        """What it costs to do something, until the window has come to rest."""
        self.seen()
        act()
        self.rest()
        return self.seen()

    def press(self, *keys):
        self._xdotool("key", *keys)

    @staticmethod
    def _xdotool(*arguments):
        subprocess.run(["xdotool", *arguments], check=True, timeout=PATIENCE)
