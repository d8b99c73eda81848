"""What file managers with windows of GTK have in common whose files are in the accessibility tree."""

import subprocess

import tree
from managers.base import TOOLBAR_ITEM, FileManager
from waiting import PATIENCE, until

SETTINGS = ".config/glib-2.0/settings/keyfile"


class GtkFileManager(FileManager):
    """A program whose windows are all of one process, as a rule with a button in the toolbar."""

    application_name = None  # in the accessibility tree, where it is not its program's
    extensions = None  # what knows the folder with its extensions: a package, and a variable of that

    def __init__(self, session):
        super().__init__(session)
        self.process = None

    def prepare(self):
        pass

    def start(self, folder, with_plug_in=True):
        plug_in = self._plug_in(with_plug_in)
        if self.extensions:
            package, variable = self.extensions
            told = subprocess.run(["pkg-config", f"--variable={variable}", package], check=True,
                                  capture_output=True, text=True, timeout=PATIENCE)
            self.session.mount(plug_in, told.stdout.strip())
        self._start(folder, self._environment(plug_in))

    def _start(self, folder, environment):
        self.process = self.session.start(self._command(folder), environment)
        self._wait_for_window(folder.name)

    def _environment(self, plug_in):
        return {}

    def end(self):
        if self.process is not None:
            self.process.kill()
            until(lambda: self.application() is None, f"no {self.name} any more")
        self.process = None

    def application(self):
        return tree.application(self.application_name or self.name)

    # Windows

    def _frames(self):
        application = self.application()
        if application is None:
            self.process.check_running()
            return []
        application.clear_cache()
        return [node for node in tree.children(application)
                if tree.matches(node, "frame", None) and tree.is_showing(node)]

    def _frame(self):
        """The window that was opened last."""
        frames = self._frames()
        return frames[-1] if frames else None

    def _title(self, folder):
        return folder

    def _wait_for_window(self, title, count=1):
        def is_there():
            frames = self._frames()
            return len(frames) == count and frames[-1].get_name() == self._title(title) and self._view()

        until(is_there, f"{count} windows of {self.name}, the last one on {title}")

    def open_window(self, folder):
        before = len(self._frames())
        self.session.start(self._command(folder))
        self._wait_for_window(folder.name, before + 1)

    def close_window(self):
        before = len(self._frames())
        self._press_close()
        until(lambda: len(self._frames()) == before - 1, "a window fewer")

    def _press_close(self):
        tree.press(tree.find(self._frame(), "menu item", "Close"))

    def _press_open_tab(self):
        tree.press(tree.find(self._frame(), "menu item", "New Tab"))

    _press_close_tab = _press_close

    def go_up(self, name):
        tree.press(tree.find_rightmost(self._frame(), "push button", "Up"))
        self._wait_for_window(name)

    # Menus

    def _popup(self):
        application = self.application()
        application.clear_cache()
        for window in tree.children(application):  # what a tool tip shows is one as well
            if tree.matches(window, "window", None) and tree.is_showing(window):
                if menu := tree.find(window, "menu"):
                    return menu
        return None

    def pick(self, title):
        tree.press(until(lambda: tree.find(self._popup(), "menu item", title), f"{title} in the menu"))
        until(lambda: not self._popup(), "a closed menu")

    def close_menu(self):
        tree.xdotool("key", "Escape")
        until(lambda: not self._popup(), "a closed menu")

    def _toolbar_button(self):
        return tree.find(self._frame(), "push button", TOOLBAR_ITEM)

    def has_toolbar_menu(self):
        button = self._toolbar_button()
        return button is not None and tree.is_showing(button)

    def open_toolbar_menu(self):
        tree.click(*tree.resting_middle(self._toolbar_button, "the toolbar's button"))
        until(self._popup, "the toolbar's menu")

    def wait_for_message(self, text):
        def message():
            application = self.application()
            application.clear_cache()
            for window in tree.children(application):
                if any(text in node.get_name() for node in tree.find_all(window, "label")):
                    return window
            return None

        window = until(message, f"a message with {text!r}")
        self.session.take_picture(f"{self.name}-message")
        tree.press(tree.find_button(window, "Close"))
        until(lambda: not message(), "a closed message")


class InPanes:
    """A window that its menu bar splits."""

    def split(self):
        self._split_with(lambda: tree.press(tree.find(self._frame(), "check menu item", "Extra Pane")))


class InRows:
    """A view with a row for each item, whose empty part counts as the background."""

    def _item(self, name):
        return tree.find(self._view(), "table cell", name)

    def _middle_of(self, name):
        left, top, _, height = tree.resting_extents(lambda: self._item(name), f"{name} in the window")
        return left + 12, top + height // 2
