"""Nautilus, in its icon view: windows of GTK 4, which tell positions within themselves only."""

import tree
from managers.base import TOOLBAR_ITEM
from managers.gtk import GtkFileManager
from waiting import same_twice, until


class Nautilus(GtkFileManager):
    name = "nautilus"
    application_name = "org.gnome.Nautilus"
    extensions = ("libnautilus-extension-4", "extensiondir")

    def _command(self, folder):
        return ["nautilus", "--new-window", folder]

    def _environment(self, plug_in):
        # Where no graphics card draws, GTK 4's other renderer keeps all processors at work for a moving
        # picture, and the window has no time to read its folder.
        return {"GSK_RENDERER": "cairo"}

    def _view(self):
        return tree.find(self._frame(), "filler", "Content View")

    def _item(self, name):
        cells = tree.find_all(self._view(), "table cell", name)
        return next((cell for cell in cells if tree.extents(cell)), None)

    # On the screen: a window is drawn with a frame of its own around what the tree knows of it.

    def _origin(self):
        frame = self._frame()
        _, _, width, height = tree.extents(frame)
        left, top, outer_width, outer_height = tree.window_extents(frame.get_name())
        return left + (outer_width - width) // 2, top + (outer_height - height) // 2

    def _on_screen(self, box):
        left, top = self._origin()
        return (left + box[0], top + box[1], box[2], box[3])

    def _middle_of(self, name):
        left, top, width, height = self._on_screen(
            tree.resting_extents(lambda: self._item(name), f"{name} in the window"))
        return left + width // 2, top + height // 2

    def view_extents(self):
        return self._on_screen(super().view_extents())

    def _background(self):
        """Beside the corner, where a line on the selection lies over the view."""
        left, top, width, height = self.view_extents()
        return left + width // 2, top + height * 3 // 4

    def _press_close(self):
        tree.press(tree.find(self._frame(), "push button", "Close"))

    def go_up(self, name):
        tree.act(self._frame(), "win.up")
        self._wait_for_window(name)

    def _sidebar(self):
        return tree.find(self._frame(), "list", "Sidebar")

    # Menus: one with pages, of which a submenu's is shown in the place of the first.

    def _popup(self):
        menus = tree.find_all(self._view(), "menu") + tree.find_all(self._sidebar(), "menu")
        return next((menu for menu in menus if tree.extents(menu)), None)

    def _pages(self):
        pages = tree.find_all(self._popup(), "panel", "GtkStackPage")
        return [tree.find_all(page, "menu item") for page in pages]

    def _first_page(self):
        return next(iter(self._pages()), [])

    def _toolbar_page(self):
        """Its first item leads back."""
        for items in self._pages()[1:]:
            if items and tree.matches(items[0], None, TOOLBAR_ITEM):
                return items
        return []

    @staticmethod
    def _entries(items):
        return [(item.get_name(), tree.is_enabled(item)) for item in items]

    def entries(self):
        entries = same_twice(lambda: self._entries(self._first_page()), "the entries of the menu")
        return [entry for entry in entries if entry[0].startswith("QV: ")]

    def all_entries(self):
        return same_twice(lambda: self._entries(self._toolbar_page()[1:]), "the entries of the submenu")

    def _toolbar_item(self):
        return next((item for item in self._first_page() if tree.matches(item, None, TOOLBAR_ITEM)), None)

    def has_toolbar_menu(self):
        self.open_menu()
        found = self._toolbar_item() is not None
        self.close_menu()
        return found

    def open_toolbar_menu(self):
        self.open_menu()
        tree.press(until(self._toolbar_item, "the submenu's item"))
        until(lambda: any(tree.extents(item) for item in self._toolbar_page()), "an open submenu")

    # The drive in the sidebar, where every place has a menu that begins with entries to open it.

    def _account(self):
        rows = tree.find_all(self._sidebar(), "list item")
        return next((row for row in rows if tree.find(row, "label", TOOLBAR_ITEM)), None)

    def _click_account(self, button):
        left, top, width, height = self._on_screen(
            tree.resting_extents(self._account, "the drive in the sidebar"))
        tree.click(left + width // 2, top + height // 2, button=button)

    def has_account(self):
        return self._account() is not None

    def account_tool_tip(self):
        account = self._account()
        return account.get_description() if account else None

    def open_account(self, name):
        self._click_account(1)
        self._wait_for_window(name)

    def open_account_menu(self):
        self._click_account(3)
        until(self._popup, "the menu of the drive in the sidebar")

    def account_entries(self):
        entries = same_twice(lambda: self._entries(tree.find_all(self._popup(), "menu item")),
                             "the entries of the drive in the sidebar")
        return [entry for entry in entries if not entry[0].startswith("Open")]
