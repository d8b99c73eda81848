"""Waiting for what other processes bring about: always for a condition, with a deadline."""

import time

from gi.repository import GLib

# Long enough for a loaded machine; only a case that fails ever waits for it.
PATIENCE = 60.0
_PAUSE_MS = 20


def _turn():
    """Lets what has come from the accessibility bus be taken in, for a moment."""
    loop = GLib.MainLoop()
    GLib.timeout_add(_PAUSE_MS, loop.quit)
    loop.run()


def _value(condition):
    """None where a part of a window goes while it is looked at."""
    try:
        return condition()
    except GLib.Error:
        return None


def until(condition, what, limit=PATIENCE):
    """The first true value of a condition. Fails after the limit, saying what, a text or a function of one,
    was waited for."""
    deadline = time.monotonic() + limit
    while True:
        value = _value(condition)
        if value:
            return value
        if time.monotonic() > deadline:
            text = what() if callable(what) else what
            raise AssertionError(f"in {limit:g} seconds there was not: {text}")
        _turn()


def same_twice(value, what):
    """A true value once it is the same in two looks: of what moves until it has settled."""
    last = []

    def settled():
        last.append(value())
        return len(last) > 1 and last[-1] and last[-1] == last[-2]

    until(settled, what)
    return last[-1]
