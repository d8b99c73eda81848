"""A desktop session of the tests' own: folders, a display, a session bus, and processes in it.

All of it lives in namespaces that the caller made, so that ending it leaves nothing behind.
"""

import os
import shutil
import subprocess
from pathlib import Path

from waiting import PATIENCE, until

SCREEN = "1280x800x24"
# What of the user's own environment a session knows.
KEPT = ("PATH", "LANG", "LC_ALL", "USER", "LOGNAME")


class Session:
    """Folders, display and bus, from enter() to leave()."""

    def __init__(self, root, build, pictures):
        self.root = root
        self.home = root / "home"
        self.programs = build / "bin"
        self.plug_ins = build / "plug-ins"
        self.pictures = pictures
        self.processes = []

    def enter(self):
        kept = {name: os.environ[name] for name in KEPT if name in os.environ}
        folders = {
            "HOME": self.home,
            "XDG_RUNTIME_DIR": self.root / "run",
            "XDG_CONFIG_HOME": self.home / ".config",
            "XDG_DATA_HOME": self.home / ".local/share",
            "XDG_STATE_HOME": self.home / ".local/state",
            "XDG_CACHE_HOME": self.home / ".cache",
        }
        os.environ.clear()
        os.environ.update(kept)
        os.environ.setdefault("LANG", "C.UTF-8")
        for name, folder in folders.items():
            folder.mkdir(parents=True, exist_ok=True)
            os.environ[name] = str(folder)
        (self.root / "run").chmod(0o700)
        self.no_plug_ins = self.root / "no-plug-ins"
        self.no_plug_ins.mkdir()
        os.environ["GSETTINGS_BACKEND"] = "keyfile"
        os.environ["XDG_DATA_DIRS"] = f"{self.programs.parent / 'share'}:/usr/local/share:/usr/share"
        self.pictures.mkdir(parents=True, exist_ok=True)
        os.environ["DISPLAY"] = ":" + self._told_by(
            ["Xvfb", "-displayfd", "1", "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset"])
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self._told_by(
            ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"])

    def leave(self):
        for process in reversed(self.processes):
            process.kill()

    def _told_by(self, command):
        process = self.start(command)
        return until(process.first_line, f"a line from {command[0]}")

    def mount(self, folder, over):
        """Shows a folder in the place of another, in this session only, also where there is none yet."""
        over = Path(over)
        if not over.exists():
            stand_in = self.root / f"stand-in-{over.parent.name}"
            shutil.copytree(over.parent, stand_in, symlinks=True)
            (stand_in / over.name).mkdir()
            self.mount(stand_in, over.parent)
        subprocess.run(["mount", "--bind", str(folder), str(over)], check=True, timeout=PATIENCE)

    def write_settings(self, name, text):
        """Of a program, in the home folder."""
        file = self.home / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def start(self, command, environment=None):
        """A program in the session."""
        process = Process(self, command, environment or {})
        self.processes.append(process)
        return process

    def take_picture(self, name):
        """Of the whole screen."""
        subprocess.run(["import", "-window", "root", str(self.pictures / f"{name}.png")],
                       check=False, stderr=subprocess.DEVNULL, timeout=PATIENCE)


class Process:
    """A running program, whose output goes to files."""

    def __init__(self, session, command, environment):
        self.name = Path(command[0]).name
        number = len(session.processes)
        self.output = session.root / f"{number}-{self.name}.out"
        self.errors = session.root / f"{number}-{self.name}.err"
        with open(self.output, "wb") as out, open(self.errors, "wb") as err:
            self.popen = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL, stdout=out,
                                          stderr=err, env=os.environ | environment)

    @property
    def pid(self):
        return self.popen.pid

    def first_line(self):
        """Once it is whole; fails when the process has ended before."""
        text = self.output.read_text(errors="replace")
        if "\n" in text:
            return text.split("\n", 1)[0]
        self.check_running()
        return None

    def said(self, text):
        """Whether it has on standard error."""
        return text in self.errors.read_text(errors="replace")

    def is_running(self):
        return self.popen.poll() is None

    def check_running(self):
        assert self.is_running(), (f"{self.name} ended with {self.popen.returncode}: "
                                   f"{self.errors.read_text(errors='replace')}")

    def signal(self, number):
        self.popen.send_signal(number)

    def state(self):
        """What the kernel says of it: "S" sleeping, "T" stopped."""
        stat = Path(f"/proc/{self.pid}/stat").read_text()
        return stat.rsplit(")", 1)[1].split()[0]

    def kill(self):
        if self.is_running():
            self.popen.kill()
        self.popen.wait(PATIENCE)

    def end(self):
        """Asks it to end, and waits until it has."""
        self.popen.terminate()
        try:
            self.popen.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.kill()
            raise AssertionError(f"{self.name} does not end") from None
