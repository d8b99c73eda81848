"""Dolphin, in its icon view. Each window is a process of its own."""

import tree
from managers.base import TOOLBAR_ITEM, ByKeys, FileManager
from tree import Atspi, GLib
from waiting import until


class Dolphin(ByKeys, FileManager):
    name = "dolphin"
    tells_hidden_tabs = False

    def __init__(self, session):
        super().__init__(session)
        self.processes = []
        self._popups = []  # its menus are found in no tree, only by their being told of as they open
        self._listener = Atspi.EventListener.new(self._shown_or_hidden)

    def prepare(self):
        self._listener.register("object:state-changed:showing")

    @property
    def process(self):
        return self.processes[-1]

    def start(self, folder, with_plug_in=True):
        self._environment = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                             "QT_PLUGIN_PATH": str(self._plug_in(with_plug_in))}
        self.open_window(folder)

    def _close_warning(self):
        """Whom the session takes for root it warns, above the files, which moves them."""
        def button():
            text = next((label for label in tree.find_all(self._frame(), "label")
                         if "as root" in label.get_name() and tree.is_showing(label)), None)
            return tree.find(text.get_parent(), "push button") if text else None

        tree.press(until(button, "a warning"))
        until(lambda: not button(), "a closed warning")

    def end(self):
        for process in self.processes:
            process.kill()
        self.processes = []
        until(lambda: tree.application(self.name) is None, "no Dolphin any more")

    # Windows

    def _frame(self):
        """The window that was opened last."""
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for application in tree.children(desktop):
            if tree.has_process(application, self.process.pid):
                return next((node for node in tree.children(application) if tree.is_showing(node)), None)
        self.process.check_running()
        return None

    def _wait_for_window(self, title):
        until(lambda: tree.matches(frame, "frame", title) if (frame := self._frame()) else False,
              f"a window of Dolphin on {title}")

    def open_window(self, folder):
        self.processes.append(
            self.session.start(["dolphin", "--new-window", folder], self._environment))
        self._wait_for_window(folder.name)
        self._close_warning()

    def close_window(self):
        self._press_key("ctrl+q")
        until(lambda: not self.process.is_running(), "a window fewer")
        self.processes.pop()

    def open_tab(self):
        super().open_tab()
        self._close_warning()

    def split(self):
        super().split()
        self._close_warning()

    def _press_key(self, key):
        """In the window that was opened last: without a window manager a click has it take keys."""
        tree.click(*self._background())
        tree.xdotool("key", key)

    # Items

    def _view(self):
        """What holds the items: as a list it is like the sidebar's, but stands in the middle pane."""
        return tree.find_rightmost(tree.find(self._frame(), "layered pane"), "table")

    def _item(self, name):
        return tree.find(self._view(), None, name)

    def _middle_of(self, name):
        """Of its name: there may be nothing to click at above."""
        left, top, width, height = tree.resting_extents(lambda: self._item(name), f"{name} in the window")
        return left + width // 2, top + height - 11

    # Menus

    def _shown_or_hidden(self, event):
        try:
            if event.detail1 and event.source.get_role_name() == "popup menu":
                self._popups.append(event.source)
        except GLib.Error:
            pass  # it has gone

    def _popup(self):
        """The menu that was opened last."""
        self._popups = [menu for menu in self._popups if self._is_open(menu)]
        return self._popups[-1] if self._popups else None

    @staticmethod
    def _is_open(menu):
        menu.clear_cache()
        return tree.is_showing(menu) and tree.extents(menu) is not None

    def pick(self, title):
        x, y = tree.resting_middle(lambda: tree.find(self._popup(), "menu item", title), f"{title} in the menu")
        tree.click(x, y)
        until(lambda: not self._popup(), "a closed menu")

    def close_menu(self):
        while menu := self._popup():
            tree.xdotool("key", "Escape")
            until(lambda: not self._is_open(menu), "a closed menu")

    def open_toolbar_menu(self):
        self.open_menu()
        menu = self._popup()
        x, y = tree.resting_middle(lambda: tree.find(menu, "menu item", TOOLBAR_ITEM), "the submenu")
        tree.click(x, y)
        until(lambda: self._popup() != menu, "an open submenu")

    def wait_for_message(self, text):
        def message():
            return next((node for node in tree.find_all(self._frame(), "label")
                         if text in node.get_name() and tree.is_showing(node)), None)

        shown = until(message, f"a message with {text!r}")
        self.session.take_picture(f"{self.name}-message")
        tree.press(tree.find(shown.get_parent(), "push button"))
        until(lambda: not message(), "a closed message")
