"""Nemo, in its list view: the icons of its icon view are not in the accessibility tree."""

import tree
from managers.gtk import SETTINGS, GtkFileManager, InRows

IN_ROWS = """[org/nemo/preferences]
default-folder-viewer='list-view'

[org/nemo/window-state]
start-with-sidebar=false
geometry='1200x700+0+0'
"""


class Nemo(InRows, GtkFileManager):
    name = "nemo"
    extensions = ("libnemo-extension", "extensiondir")

    def prepare(self):
        self.session.write_settings(SETTINGS, IN_ROWS)

    def _command(self, folder):
        return ["nemo", "--geometry=1200x700+0+0", folder]

    def split(self):
        self._split_with(lambda: tree.press(tree.find(self._frame(), "check menu item", "Extra Pane")))
        tree.click(*self._background())  # the first click only tells which half is meant

    def _view(self):
        return tree.find_rightmost(self._frame(), "tree table") or tree.find_rightmost(self._frame(), "table")
