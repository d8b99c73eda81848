"""What is done the same way with every file manager.

An adapter tells the parts of its windows in the accessibility tree: _view(), what holds the items;
_item(name), one of them; _middle_of(name), where to click for it; _popup(), the open menu.
"""

import tree
from waiting import same_twice, until

TOOLBAR_ITEM = "Fennmoor Cloud"


class FileManager:
    shows_disabled = True
    tells_hidden_tabs = True

    def __init__(self, session):
        self.session = session

    def _plug_in(self, is_wanted):
        return self.session.plug_ins / f"quorvane-{self.name}" if is_wanted else self.session.no_plug_ins

    # Items

    def view_extents(self):
        return same_twice(lambda: tree.extents(self._view()), "the view")

    def _background(self):
        left, top, width, height = self.view_extents()
        return left + width - 20, top + height - 20

    def wait_for_item(self, name):
        until(lambda: self._item(name), f"{name} in the window")

    def wait_for_no_item(self, name):
        until(lambda: self._view() and not self._item(name), f"no {name} in the window")

    # Tabs and halves: the ones that were opened last

    def _count_tabs(self):
        return sum(1 for node in tree.walk(self._frame()) if self._is_tab(node))

    @staticmethod
    def _is_tab(node):
        return tree.matches(node, "page tab", None)

    def open_tab(self):
        before = self._count_tabs()
        self._press_open_tab()
        until(lambda: self._count_tabs() == before + 1, "a tab more")

    def close_tab(self):
        before = self._count_tabs()
        self._press_close_tab()
        until(lambda: self._count_tabs() == before - 1, "a tab fewer")

    def _split_with(self, press):
        before = tree.extents(self._view())
        press()
        until(lambda: (view := tree.extents(self._view())) and view[0] > before[0], "another half")

    def go_down(self, name):
        tree.click(*self._middle_of(name), repeat=2)
        self._wait_for_window(name)

    # Menus

    def open_menu(self, *names):
        for index, name in enumerate(names):
            place = self._middle_of(name)
            tree.click(*place, modifier="ctrl" if index else None)
        if not names:
            place = self._background()
        tree.click(*place, button=3)
        until(self._popup, "an open menu")

    def all_entries(self):
        return same_twice(lambda: tree.entries_of(self._popup()), "the entries of the menu")

    def entries(self):
        return [entry for entry in self.all_entries() if entry[0].startswith("QV: ")]

    def has_toolbar_menu(self):
        """As a submenu of the background's menu."""
        self.open_menu()
        names = [name for name, _ in self.all_entries()]
        self.close_menu()
        return TOOLBAR_ITEM in names


class ByKeys:
    """A window that is driven by keys, where its tree has no menu bar: _press_key() has it take them."""

    def _press_open_tab(self):
        self._press_key("ctrl+t")

    def _press_close_tab(self):
        self._press_key("ctrl+w")

    def split(self):
        self._split_with(lambda: self._press_key("F3"))

    def go_up(self, name):
        self._press_key("alt+Up")
        self._wait_for_window(name)
