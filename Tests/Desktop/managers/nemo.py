"""Nemo, in its list view: the icons of its icon view are not in the accessibility tree."""

import tree
from managers.gtk import SETTINGS, GtkFileManager, InPanes, InRows

IN_ROWS = """[org/nemo/preferences]
default-folder-viewer='list-view'

[org/nemo/window-state]
start-with-sidebar=false
geometry='1200x700+0+0'
"""


class Nemo(InPanes, InRows, GtkFileManager):
    name = "nemo"
    extensions = ("libnemo-extension", "extensiondir")

    def prepare(self):
        self.session.write_settings(SETTINGS, IN_ROWS)

    def _command(self, folder):
        return ["nemo", "--geometry=1200x700+0+0", folder]

    def split(self):
        super().split()
        tree.click(*self._background())  # the first click only tells which half is meant

    def _view(self):
        return tree.find_rightmost(self._frame(), "tree table") or tree.find_rightmost(self._frame(), "table")
