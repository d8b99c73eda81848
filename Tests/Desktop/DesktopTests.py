#!/usr/bin/python3
"""DesktopTests.py --build FOLDER --pictures FOLDER [--case NAME ...] [FILE-MANAGER ...]

Tests the plug-ins in real windows: each file manager in a session of its own, on a display and a bus of
its own, with a real host and a real extension. Without names, all file managers.
--case takes the cases whose names hold one of these texts. Exits with status 1 when a case failed.
"""

import argparse
import importlib
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

MANAGERS = {"caja": "Caja", "nemo": "Nemo", "nautilus": "Nautilus", "thunar": "Thunar",
            "dolphin": "Dolphin"}
HERE = Path(__file__).resolve()
# With the command that follows end all processes that it left.
ISOLATED = ("unshare", "--map-root-user", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--build", type=Path, required=True)
    parser.add_argument("--pictures", type=Path, required=True)
    parser.add_argument("--case", action="append", default=[])
    parser.add_argument("--inside", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("managers", nargs="*", metavar="FILE-MANAGER", help=", ".join(MANAGERS))
    options = parser.parse_args()
    unknown = [name for name in options.managers if name not in MANAGERS]
    if unknown:
        parser.error(f"no such file manager: {', '.join(unknown)}")
    return options


def run_outside(options):
    """Each file manager in namespaces of its own, with which all of its processes end."""
    refused = subprocess.run([*ISOLATED, "true"], check=False, capture_output=True, text=True).stderr
    if refused:
        print("Sessions need namespaces of their own, which neither root nor another user may make here:",
              refused.strip(), file=sys.stderr)
        return 1
    # As an exception, so that the session ends as well.
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    failed = [name for name in options.managers or MANAGERS if run_one(options, name) != 0]
    if failed:
        print(f"failed: {', '.join(failed)}", file=sys.stderr)
    return 1 if failed else 0


def run_one(options, name):
    print(f"{MANAGERS[name]}:", file=sys.stderr, flush=True)
    if not (options.build / "plug-ins" / f"quorvane-{name}").exists():
        print("its plug-in is not built", file=sys.stderr)
        return 1
    cases = [argument for case in options.case for argument in ("--case", case)]
    # Taken away when no process is left that could write into it, and nothing is mounted in it.
    with tempfile.TemporaryDirectory(prefix="quorvane-desktop-") as root:
        return subprocess.run(
            [*ISOLATED, sys.executable, "-B", str(HERE), "--inside", root, "--build",
             str(options.build.resolve()), "--pictures", str(options.pictures.resolve()), *cases, name],
            check=False).returncode


def chosen(suite, texts, manager):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from chosen(test, texts, manager)
        elif hasattr(manager, test.needs) and (not texts or any(text in test.id() for text in texts)):
            yield test


def run_inside(options):
    from session import Session

    name = options.managers[0]
    session = Session(options.inside, options.build, options.pictures)
    try:
        session.enter()
        # What follows connects to the session's bus as it is imported.
        import cases
        from drive import Drive

        manager = getattr(importlib.import_module(f"managers.{name}"), MANAGERS[name])(session)
        manager.prepare()
        case = cases.FileManagerCase
        case.session, case.drive, case.manager = session, Drive(session), manager
        tests = unittest.TestSuite(
            chosen(unittest.defaultTestLoader.loadTestsFromModule(cases), options.case, manager))
        result = unittest.TextTestRunner(verbosity=2).run(tests)
        return 0 if result.wasSuccessful() and result.testsRun > 0 else 1
    finally:
        session.leave()


def main():
    options = arguments()
    return run_inside(options) if options.inside else run_outside(options)


if __name__ == "__main__":
    sys.exit(main())
