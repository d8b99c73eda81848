"""Thunar, in its details view: the icons of its icon view are not in the accessibility tree."""

import tree
from managers.base import TOOLBAR_ITEM, ByKeys, FileManager
from managers.gtk import GtkFileManager, InRows
from waiting import same_twice, until

IN_ROWS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="thunar" version="1.0">
  <property name="default-view" type="string" value="ThunarDetailsView"/>
  <property name="last-view" type="string" value="ThunarDetailsView"/>
  <property name="last-window-width" type="int" value="1200"/>
  <property name="last-window-height" type="int" value="700"/>
  <property name="last-menubar-visible" type="bool" value="true"/>
  <property name="last-location-bar" type="string" value="ThunarLocationButtons"/>
</channel>
"""


class Thunar(ByKeys, InRows, GtkFileManager):
    name = "thunar"
    extensions = ("thunarx-3", "extensionsdir")
    shows_disabled = False
    tells_hidden_tabs = False

    def __init__(self, session):
        super().__init__(session)
        self._is_in_submenu = False

    def prepare(self):
        drive = self.session.home / "Drive"
        self.session.write_settings(".config/gtk-3.0/bookmarks",
                                    f"{drive.as_uri()}\n{(drive / 'Docs').as_uri()}\n")
        self.session.write_settings(".config/xfce4/xfconf/xfce-perchannel-xml/thunar.xml", IN_ROWS)

    def _command(self, folder):
        return ["thunar", folder]

    def _title(self, folder):
        return f"{folder} - Thunar"

    def _press_close(self):
        self._press_key("ctrl+q")

    def _press_key(self, key):
        """In the window that was opened last: without a window manager it is the one below the mouse."""
        tree.xdotool("mousemove", *self._background())
        tree.xdotool("key", key)

    def _view(self):
        return tree.find_rightmost(self._frame(), "directory pane")

    # Menus

    def _open_menu(self):
        menu = self._popup()
        return tree.find(menu, "menu", TOOLBAR_ITEM) if self._is_in_submenu else menu

    def all_entries(self):
        return same_twice(lambda: tree.entries_of(self._open_menu()), "the entries of the menu")

    def pick(self, title):
        super().pick(title)
        self._is_in_submenu = False

    def close_menu(self):
        self._is_in_submenu = False
        super().close_menu()

    has_toolbar_menu = FileManager.has_toolbar_menu

    def open_toolbar_menu(self):
        self.open_menu()
        x, y = tree.resting_middle(lambda: tree.find(self._popup(), "menu", TOOLBAR_ITEM), "the submenu")
        tree.click(x, y)
        self._is_in_submenu = True
        until(lambda: tree.entries_of(self._open_menu()), "an open submenu")

    def _has_tip(self):
        return any(tree.matches(window, "window", None) and tree.is_showing(window)
                   for window in tree.children(self.application()))

    def open_place_menu(self, name):
        """That of a bookmark in the sidebar."""
        def place():
            view = tree.extents(self._view())
            return next((node for node in tree.find_all(self._frame(), "table cell", name)
                         if (box := tree.extents(node)) and box[0] < view[0]), None)

        # The tip of a place that the mouse rests on covers the next one.
        tree.xdotool("mousemove", *self._background())
        until(lambda: not self._has_tip(), "no tip")
        x, y = tree.resting_middle(place, f"{name} in the sidebar")
        tree.click(x, y, button=3)
        until(self._popup, "an open menu")
