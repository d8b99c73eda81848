"""Nemo, in its list view: the icons of its icon view are not in the accessibility tree."""

import subprocess

import tree
from managers.gtk import GtkFileManager
from waiting import PATIENCE

SETTINGS = """[org/nemo/preferences]
default-folder-viewer='list-view'

[org/nemo/window-state]
start-with-sidebar=false
geometry='1200x700+0+0'
"""


class Nemo(GtkFileManager):
    name = "nemo"

    def prepare(self):
        self.write_settings(SETTINGS)
        self._extensions = subprocess.run(
            ["pkg-config", "--variable=extensiondir", "libnemo-extension"], check=True,
            capture_output=True, text=True, timeout=PATIENCE).stdout.strip()

    def _command(self, folder):
        return ["nemo", "--geometry=1200x700+0+0", folder]

    def start(self, folder, with_plug_in=True):
        self.session.mount(self._plug_in(with_plug_in), self._extensions)
        self._start(folder, {})

    def _view(self):
        return tree.find(self._frame(), "tree table") or tree.find(self._frame(), "table")

    def _item(self, name):
        return tree.find(self._view(), "table cell", name)

    def _middle_of(self, name):
        left, top, _, height = tree.resting_extents(lambda: self._item(name), f"{name} in the window")
        return left + 12, top + height // 2
