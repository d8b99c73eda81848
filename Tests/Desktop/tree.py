"""Windows as assistive technologies see them, and a hand on the mouse."""

import re
import subprocess

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from waiting import PATIENCE, same_twice  # noqa: E402

# It warns of each program of GTK 4, which has no cache that could be read at once.
GLib.log_set_handler("dbind", GLib.LogLevelFlags.LEVEL_WARNING, lambda *_: None, None)

MENU_ITEMS = ("menu item", "check menu item", "radio menu item", "menu")
NOWHERE = -2**31  # where GTK 3 has what was shown once, as in another tab


def children(node):
    """Those of a node that is there; what goes while it is looked at has none."""
    try:
        return [child for index in range(node.get_child_count())
                if (child := node.get_child_at_index(index)) is not None]
    except GLib.Error:
        return []


def walk(node):
    yield node
    for child in children(node):
        yield from walk(child)


def matches(node, role, name):
    try:
        return (node is not None and (role is None or node.get_role_name() == role)
                and (name is None or node.get_name() == name))
    except GLib.Error:
        return False


def find_all(root, role=None, name=None):
    """Those that are not within another one."""
    if root is None:
        return []
    if matches(root, role, name):
        return [root]
    return [node for child in children(root) for node in find_all(child, role, name)]


def find(root, role=None, name=None):
    return next((node for node in walk(root) if matches(node, role, name)), None) if root else None


def find_rightmost(root, role, name=None):
    """Of those that can be seen. Of what each tab or half of a window has it is that of the last one."""
    seen = [(box[0], index, node) for index, node in enumerate(find_all(root, role, name))
            if is_showing(node) and (box := extents(node))]
    return max(seen)[2] if seen else None


def find_button(root, text):
    """By what stands on it, which in some toolkits is a label of its own."""
    return next((button for button in find_all(root, "push button")
                 if matches(button, None, text) or find(button, "label", text)), None)


def application(name):
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    return next((node for node in children(desktop) if matches(node, None, name)), None)


def has_process(application, pid):
    try:
        return application.get_process_id() == pid
    except GLib.Error:
        return False


def has_state(node, state):
    try:
        return node.get_state_set().contains(state)
    except GLib.Error:
        return False


def is_showing(node):
    return has_state(node, Atspi.StateType.SHOWING)


def is_enabled(node):
    return has_state(node, Atspi.StateType.SENSITIVE)


def extents(node):
    """Left, top, width and height on the screen; nothing while it is not shown."""
    try:
        box = node.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
    except (AttributeError, GLib.Error):
        return None
    is_placed = box.width > 0 and box.height > 0 and box.x != NOWHERE
    return (box.x, box.y, box.width, box.height) if is_placed else None


def press(node):
    """What a click on it would do."""
    assert node.get_action_iface().do_action(0)


def act(node, name):
    """Carries out one of a node's actions by its name."""
    actions = node.get_action_iface()
    names = [actions.get_action_name(index) for index in range(actions.get_n_actions())]
    assert actions.do_action(names.index(name))


def count_windows(of_class):
    """Without a look at the tree."""
    told = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", f"^{re.escape(of_class)}$"],
                          check=False, capture_output=True, text=True, timeout=PATIENCE).stdout
    return len(told.splitlines())


def window_extents(title):
    """Those of the window itself, with all that is drawn around it."""
    told = subprocess.run(
        ["xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}$", "getwindowgeometry",
         "--shell"], check=True, capture_output=True, text=True, timeout=PATIENCE).stdout
    values = dict(line.split("=") for line in told.splitlines())
    return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=PATIENCE)


def click(x, y, button=1, modifier=None, repeat=1):
    # As a hand does it: GTK 4 may not take a click where a menu has been, without a motion to there.
    xdotool("mousemove", x - 1, y)
    hold = ["keydown", modifier] if modifier else []
    release = ["keyup", modifier] if modifier else []
    xdotool("mousemove", x, y, *hold, "click", "--repeat", repeat, "--delay", 50, button, *release)


def resting_extents(find_node, what):
    """Those of a node that has settled."""
    return same_twice(lambda: extents(node) if (node := find_node()) else None, what)


def resting_middle(find_node, what):
    left, top, width, height = resting_extents(find_node, what)
    return left + width // 2, top + height // 2


def entries_of(menu):
    """Titles of a menu's items and whether each can be picked, in order."""
    return [(node.get_name(), is_enabled(node)) for node in children(menu)
            if node.get_role_name() in MENU_ITEMS and is_showing(node)]
