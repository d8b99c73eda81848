"""Caja, in its icon view."""

import tree
from managers.gtk import SETTINGS, GtkFileManager, InPanes

WITHOUT_SIDEBAR = """[org/mate/caja/window-state]
start-with-sidebar=false
"""


class Caja(InPanes, GtkFileManager):
    name = "caja"

    def prepare(self):
        self.session.write_settings(SETTINGS, WITHOUT_SIDEBAR)

    def _command(self, folder):
        return ["caja", "--no-desktop", "--browser", "--geometry=1200x700+0+0", folder]

    def _environment(self, plug_in):
        return {"CAJA_EXTENSION_DIRS": str(plug_in)}

    def _view(self):
        return tree.find_rightmost(self._frame(), "layered pane")

    def _item(self, name):
        return tree.find(self._view(), "icon", name)

    def _middle_of(self, name):
        return tree.resting_middle(lambda: self._item(name), f"{name} in the window")
