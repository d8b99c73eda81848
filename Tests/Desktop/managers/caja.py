"""Caja, in its icon view."""

import tree
from managers.gtk import GtkFileManager

SETTINGS = """[org/mate/caja/window-state]
start-with-sidebar=false
"""


class Caja(GtkFileManager):
    name = "caja"

    def prepare(self):
        self.write_settings(SETTINGS)

    def _command(self, folder):
        return ["caja", "--no-desktop", "--browser", "--geometry=1200x700+0+0", folder]

    def _environment(self, plug_in):
        return {"CAJA_EXTENSION_DIRS": str(plug_in)}

    def _view(self):
        return tree.find(self._frame(), "layered pane")

    def _item(self, name):
        return tree.find(self._view(), "icon", name)

    def _middle_of(self, name):
        return tree.resting_middle(lambda: self._item(name), f"{name} in the window")
