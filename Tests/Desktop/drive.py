"""A drive of real files with its host and its extension, and what they tell of themselves."""

import json
import shutil
import signal
import subprocess

from waiting import PATIENCE, until


class Drive:
    """Fresh files at each start(); one at a time in a session."""

    def __init__(self, session):
        self.session = session
        self.path = session.home / "Drive"
        self.host = self.extension = None
        self._journals = 0

    def start(self):
        shutil.rmtree(self.path, ignore_errors=True)
        for file in ("Docs/a.txt", "Docs/b.txt", "Docs/c.txt", "Docs/Inner/d.txt", "Trash/old.txt",
                     "Shared Folders/shared.txt", "top.txt"):
            self.make(file)
        self._journals += 1
        self.journal_file = self.session.root / f"journal{self._journals}"
        self.journal_file.touch()
        self.start_host()
        self.start_extension()

    def start_host(self):
        self.host = self.session.start([
            self.session.programs / "quorvane-host", "--drive", self.path, "--journal", self.journal_file])
        # The extension, when it finds none, looks for it again after a second.
        until(lambda: self.host.check_running() or self.host.said("started"), "a host that serves")

    def start_extension(self):
        self.start_waiting_extension()
        self.wait_for_extension()

    def start_waiting_extension(self):
        """It waits for a host."""
        self.extension = self.session.start([self.session.programs / "quorvane-finder-extension"])

    def wait_for_extension(self):
        def serves():
            self.host.check_running()
            self.extension.check_running()
            return self.finder("status", "--json", check=False)

        until(serves, "an extension on the bus")
        # The account's record comes after the mount path.
        until(lambda: any("used" in item["title"] for item in self.toolbar_entries()),
              "the storage line in the toolbar's menu")

    def end(self):
        for process in (self.extension, self.host):
            if process is not None and process.is_running():
                process.signal(signal.SIGCONT)
                process.kill()
        self.host = self.extension = None

    def stop_extension(self):
        self.extension.signal(signal.SIGSTOP)
        until(lambda: self.extension.state() == "T", "a stopped extension")

    def continue_extension(self):
        self.extension.signal(signal.SIGCONT)

    # What the terminal Finder is told, which is what a file manager has to show.

    def finder(self, *arguments, check=True):
        result = subprocess.run(
            [str(self.session.programs / "quorvane-finder"), *map(str, arguments), "--timeout",
             str(int(PATIENCE * 500))],
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE, check=False)
        if result.returncode != 0:
            assert not check, result.stderr
            return None
        return json.loads(result.stdout) if result.stdout else {}

    def entries(self, *arguments):
        return [(item["title"], item["enabled"])
                for item in self.finder("menu", "--json", *arguments)["items"]]

    def toolbar_entries(self):
        return self.finder("menu", "--json", "--kind", "toolbar", "--target", self.path)["items"]

    # Files

    def make(self, name):
        file = self.path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"This is {name}.\n")
        return file

    def wait_for_file(self, name):
        until(lambda: (self.path / name).exists(), f"{name} on the drive")

    def wait_for_no_file(self, name):
        until(lambda: not (self.path / name).exists(), f"{name} gone from the drive")

    # What the host received

    def journal(self):
        lines = self.journal_file.read_text().split("\n")[:-1]
        return [json.loads(line) for line in lines]

    def requests(self, action):
        return [entry for entry in self.journal() if entry.get("action") == action]

    def shown_folders(self):
        """The folders that windows show now, as the host heard of them last."""
        shown = []
        for entry in self.journal():
            if entry.get("done") in ("ext_obs_beg", "ext_obs_end"):
                shown = entry["observed"]
            elif "gone" in entry:
                shown = []
        return sorted(shown)

    def wait_for_shown(self, *folders):
        until(lambda: self.shown_folders() == sorted(folders),
              f"just the folders {folders} shown, as the host has it")

    def times_begun(self, folder):
        return [entry["payload"] for entry in self.requests("ext_obs_beg")].count([folder])
