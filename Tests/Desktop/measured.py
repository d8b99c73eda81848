"""A file manager's window whose thread is watched, and what was seen of it.

The accessibility tree is off, as it costs a window with thousands of items more than anything that is
measured here: keys go to the only window there is, and what a step brought about is read from the record of
the library in FileManagers/Measuring/.
"""

import subprocess
import time
from pathlib import Path

from waiting import PATIENCE, until

# For how long a window that has come to rest has done nothing.
REST_SECONDS = 0.4
MOST_TICKS_AT_REST = 3
HEARTBEAT = "heartbeat"
REBUILD = "rebuild"  # of its menus by the file manager, which the plug-in asked for
NOT_ACCESSIBLE = {"NO_AT_BRIDGE": "1", "GTK_A11Y": "none"}  # GTK 3, GTK 4
# A daemon that Caja asks for each of the selected files keeps its windows for a quarter of a minute.
LOCAL = {"GIO_USE_VFS": "local", "GIO_USE_VOLUME_MONITOR": "unix"}


class Call:
    """A line of the record: a call of the plug-in, or a turn of the loop that came late."""

    def __init__(self, line):
        start, duration, depth, self.what, *result = line.split()
        self.start, self.duration, self.depth = int(start), int(duration), int(depth)
        self.result = [int(number) for number in result]


class Step:
    """What one step of a user cost the window's thread, in milliseconds."""

    def __init__(self, calls):
        late = [call for call in calls if call.what == HEARTBEAT]
        calls = [call for call in calls if call.what != HEARTBEAT]
        blocks = [block for block in calls if block.depth == 0]
        ours = [sum(_own_part(call, block) for call in calls) / 1000 for block in blocks]
        self.ours, self.longest = sum(ours), max(ours, default=0)
        # Between two turns of its loop, whatever kept it.
        self.late = max((call.duration for call in late), default=0) / 1000
        # In the menu of files, when it was asked for.
        self.entries = next((call.result[1] for call in reversed(calls) if call.what == "items"), None)


def _own_part(call, block):
    """What a call adds to a block: what the file manager does in it is not ours, but what it calls then is.
    A block can be a rebuilding itself, when the plug-in's notice of a change comes from a timer."""
    if not block.start <= call.start <= call.start + call.duration <= block.start + block.duration:
        return 0
    if call.what == REBUILD:
        return 0 if call is block else -call.duration
    ours = 1 if block.what == REBUILD else 0
    return call.duration if call.depth % 2 == ours else 0


class MeasuredWindow:
    """Goes before a file manager's own class, whose start() it uses."""

    def start(self, folder, with_plug_in=True, accessible=False):
        self._accessible, self._has_plug_in = accessible, with_plug_in
        super().start(folder, with_plug_in)

    def _start(self, folder, environment):
        self.record = self.session.root / f"{self.name}-times"
        self.record.write_text("")
        self._read = 0
        library = self.session.programs.parent / "measuring/quorvane-plug-in-times.so"
        self.process = self.session.start(self._command(folder), environment | {
            "LD_PRELOAD": str(library), "QUORVANE_PLUG_IN_TIMES": str(self.record),
        } | LOCAL | ({} if self._accessible else NOT_ACCESSIBLE))
        until(lambda: self._window(folder.name), f"a window of {self.name} on {folder.name}")
        self.rest()
        # As a window manager does, so that keys go to it.
        self._xdotool("windowfocus", self._window(folder.name))

    def _window(self, title):
        assert self.process.is_running(), self.process.errors.read_text(errors="replace")
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"], check=False,
                              capture_output=True, text=True, timeout=PATIENCE).stdout.strip()

    def end(self):
        self.process.kill()

    def rest(self):
        """Waits until it has done nothing for a while."""
        since, before = time.monotonic(), self._work()

        def rests():
            nonlocal since, before
            ticks, calls = self._work()
            if ticks > before[0] + MOST_TICKS_AT_REST or calls > before[1] or self.process.state() != "S":
                since, before = time.monotonic(), (ticks, calls)
            return time.monotonic() - since > REST_SECONDS

        until(rests, f"{self.name} at rest")

    def _work(self):
        """Time of the processor, and calls of the plug-in."""
        lines = self.record.read_text(encoding="utf-8").splitlines()
        return self._ticks(), sum(not line.endswith(HEARTBEAT) for line in lines)

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

    def step(self, act, files=None):
        """What it costs to do something, until the window has come to rest; and not before the plug-in was
        asked for the menu of as many files."""
        self.seen()
        act()
        if files is not None and self._has_plug_in:
            until(lambda: self._was_asked_for(files), f"a question for the menu of {files} files")
        self.rest()
        return self.seen()

    def _was_asked_for(self, files):
        with open(self.record, encoding="utf-8") as record:
            record.seek(self._read)
            return any(f" items {files} " in line for line in record)

    def press(self, key):
        self._xdotool("key", key)

    def click(self, x, y):
        self._xdotool("mousemove", x, y, "click", 1)

    @staticmethod
    def _xdotool(*arguments):
        subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=PATIENCE)
