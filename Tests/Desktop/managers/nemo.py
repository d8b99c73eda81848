"""Nemo, in its list view: the icons of its icon view are not in the accessibility tree."""

import tree
from managers.gtk import GtkFileManager, InRows

SETTINGS = """[org/nemo/preferences]
default-folder-viewer='list-view'

[org/nemo/window-state]
start-with-sidebar=false
geometry='1200x700+0+0'
"""


class Nemo(InRows, GtkFileManager):
    name = "nemo"
    extensions = ("libnemo-extension", "extensiondir")

    def prepare(self):
        self.write_settings(SETTINGS)

    def _command(self, folder):
        return ["nemo", "--geometry=1200x700+0+0", folder]

    def _view(self):
        return tree.find(self._frame(), "tree table") or tree.find(self._frame(), "table")
