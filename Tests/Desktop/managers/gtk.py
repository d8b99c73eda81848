"""What file managers with windows of GTK have in common whose files are in the accessibility tree."""

import tree
from waiting import same_twice, until

TOOLBAR_ITEM = "Fennmoor Cloud"


class GtkFileManager:
    shows_disabled = True
    application_name = None  # in the accessibility tree, where it is not its program's

    def __init__(self, session):
        self.session = session
        self.process = None

    def write_settings(self, text):
        settings = self.session.root / "home/.config/glib-2.0/settings/keyfile"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text(text)

    def _plug_in(self, is_wanted):
        return self.session.plug_ins / f"quorvane-{self.name}" if is_wanted else self.session.no_plug_ins

    def _start(self, folder, environment):
        self.process = self.session.start(self._command(folder), environment)
        self._wait_for_window(folder.name)

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
            assert self.process.is_running(), self.process.errors.read_text(errors="replace")
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
        tree.press(tree.find(self._frame(), "menu item", "Close"))
        until(lambda: len(self._frames()) == before - 1, "a window fewer")

    def go_down(self, name):
        x, y = self._middle_of(name)
        tree.click(x, y, repeat=2)
        self._wait_for_window(name)

    def go_up(self, name):
        tree.press(tree.find(self._frame(), "push button", "Up"))
        self._wait_for_window(name)

    # Items

    def view_extents(self):
        return same_twice(lambda: tree.extents(self._view()), "the view")

    def wait_for_item(self, name):
        until(lambda: self._item(name), f"{name} in the window")

    def wait_for_no_item(self, name):
        until(lambda: self._view() and not self._item(name), f"no {name} in the window")

    # Menus

    def _popup(self):
        application = self.application()
        application.clear_cache()
        for window in tree.children(application):  # what a tool tip shows is one as well
            if tree.matches(window, "window", None) and tree.is_showing(window):
                if menu := tree.find(window, "menu"):
                    return menu
        return None

    def _background(self):
        left, top, width, height = self.view_extents()
        return left + width - 20, top + height - 20

    def open_menu(self, *names):
        if names:
            for index, name in enumerate(names):
                x, y = self._middle_of(name)
                tree.click(x, y, modifier="ctrl" if index else None)
        else:
            x, y = self._background()
        tree.click(x, y, button=3)
        until(self._popup, "an open menu")

    def all_entries(self):
        return same_twice(lambda: tree.entries_of(self._popup()), "the entries of the menu")

    def entries(self):
        return [entry for entry in self.all_entries() if entry[0].startswith("QV: ")]

    def pick(self, title):
        tree.press(until(lambda: tree.find(self._popup(), "menu item", title), f"{title} in the menu"))
        until(lambda: not self._popup(), "a closed menu")

    def close_menu(self):
        tree.xdotool("key", "Escape")
        until(lambda: not self._popup(), "a closed menu")

    def _toolbar_button(self):
        return tree.find(self._frame(), "push button", TOOLBAR_ITEM)

    def has_toolbar_menu(self):
        return self._toolbar_button() is not None

    def open_toolbar_menu(self):
        x, y = tree.resting_middle(self._toolbar_button, "the toolbar's button")
        tree.click(x, y)
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
