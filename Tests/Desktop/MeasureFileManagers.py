#!/usr/bin/python3
"""MeasureFileManagers.py --inside FOLDER --build FOLDER [--files COUNT] [--rounds COUNT] FILE-MANAGER

Measures what a plug-in costs the thread of a file manager's windows, with many files selected, in each state
that extension, host and bus can be in. Scripts/measure-file-managers calls it, in namespaces of its own.
"""

import argparse
import importlib
import signal
import statistics
from pathlib import Path

from gi.repository import GLib

from session import Session
from waiting import until

MANAGERS = {"caja": "Caja", "nautilus": "Nautilus"}
# Where an item is in a window that has just been opened, on the screen.
ITEMS = {"caja": (90, 140), "nautilus": (330, 150)}
TRASH = "QV: Move To Trash"


class Table:
    """Rows of steps, each of which was done some times: in Markdown."""

    def __init__(self):
        self._rows = {}

    def add(self, state, what, step):
        self._rows.setdefault((state, what), []).append(step)

    def print(self):
        print("| state | step | our entries | at first | median | most | longest block | loop late |")
        print("|---|---|---|---|---|---|---|---|")
        for (state, what), steps in self._rows.items():
            ours = [step.ours for step in steps]
            entries = "–" if steps[-1].entries is None else str(steps[-1].entries)
            print(f"| {state} | {what} | {entries} | {ours[0]:.1f} | {statistics.median(ours):.1f} |"
                  f" {max(ours):.1f} | {max(step.longest for step in steps):.1f} |"
                  f" {max(step.late for step in steps):.0f} |", flush=True)


class Measurement:
    """Of one file manager: a drive with a folder of many files, and a window on it."""

    def __init__(self, options, session):
        from drive import Drive
        from measured import MeasuredWindow

        name = options.manager
        manager = getattr(importlib.import_module(f"managers.{name}"), MANAGERS[name])
        self.window = type(name, (MeasuredWindow, manager), {})(session)
        self.window.prepare()
        self.item = ITEMS[name]
        self.drive = Drive(session)
        self.drive.start()
        self.session, self.rounds = session, options.rounds
        self.table = Table()
        self.folder = self.drive.path / "Many"
        self.folder.mkdir()
        self.count = 0
        for _ in range(options.files):
            self._add_file()

    def _add_file(self):
        (self.folder / f"Report {self.count:05} of the year.txt").touch()
        self.count += 1

    def run(self):
        try:
            self._without_plug_in()
            self._in_all_states()
            self._opened_while_stopped()
            self._picked_while_stopped()
        finally:
            self.table.print()  # also of what there is when a window did not do as it was told

    # Steps

    def _start(self, state, **how):
        self.window.start(self.folder, **how)
        self.table.add(state, "window opened", self.window.seen())

    def _note(self, state, what, act, files=None):
        step = self.window.step(act, files)
        self.table.add(state, what, step)
        return step

    def _select(self, state):
        """One file, then all, which are others each time, and their menu."""
        for _ in range(self.rounds):
            self._add_file()
            self.window.rest()
            self._note(state, "one selected", lambda: self.window.click(*self.item), 1)
            self._note(state, "all selected", lambda: self.window.press("ctrl+a"), self.count)
            self._note(state, "menu opened", lambda: self.window.press("shift+F10"))
            self.window.press("Escape")
            self.window.rest()

    def _without_plug_in(self):
        self._start("without plug-in", with_plug_in=False)
        self._select("without plug-in")
        self.window.end()

    def _in_all_states(self):
        self._start("running")
        self._select("running")
        self.drive.host.signal(signal.SIGSTOP)
        self._select("host stopped")
        self.drive.host.signal(signal.SIGCONT)
        self.drive.stop_extension()
        self._select("extension stopped")
        self._note("extension goes on", "goes on", self.drive.continue_extension)
        self._select("extension goes on")
        self._note("extension killed", "killed", self.drive.extension.kill)
        self._select("extension killed")
        self._note("extension starts again", "starts", self.drive.start_extension)
        self._select("extension starts again")
        self._with_bus_stopped()
        self.window.end()

    def _with_bus_stopped(self):
        bus = next(process for process in self.session.processes if process.name == "dbus-daemon")
        bus.signal(signal.SIGSTOP)
        self._select("bus stopped")
        self._note("bus goes on", "goes on", lambda: bus.signal(signal.SIGCONT))

    def _opened_while_stopped(self):
        self.drive.stop_extension()
        self._start("opened while extension is stopped")
        self._select("opened while extension is stopped")
        self._note("goes on after that", "goes on", self.drive.continue_extension)
        self.window.end()

    def _picked_while_stopped(self):
        """An entry for all files, by the accessibility tree, as its place in the menu is not known."""
        self.window.start(self.folder, accessible=True)
        self.window.click(*self.item)
        self.window.rest()
        self.window.press("ctrl+a")
        self.window.rest()
        self.window.press("shift+F10")
        until(self._has_entry, f"{TRASH} in the menu")
        self.drive.stop_extension()
        self.window.rest()
        self._note("extension stopped", "entry picked", lambda: self.window.pick(TRASH))
        self.window.end()

    def _has_entry(self):
        try:
            return TRASH in dict(self.window.entries())
        except GLib.Error:  # busy with all these files, it does not answer in time
            return False


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--inside", type=Path, required=True)
    parser.add_argument("--build", type=Path, required=True)
    parser.add_argument("--files", type=int, default=10000)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("manager", choices=MANAGERS)
    return parser.parse_args()


def main():
    options = arguments()
    session = Session(options.inside, options.build.resolve(), options.inside / "pictures")
    try:
        session.enter()
        Measurement(options, session).run()
    finally:
        session.leave()


if __name__ == "__main__":
    main()
