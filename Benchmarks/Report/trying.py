"""trying.py GOALS PROGRAM ...: runs each case once, at its smallest size, and looks for those that the goals
need. Nothing is timed; it shows that no benchmark and no goal broke unseen."""

import sys
from pathlib import Path

import goals
import measuring


def smallest(names):
    """Of the cases of one path and role, the one with the smallest size."""
    chosen = {}
    for name in names:
        path, role, size = measuring.case_of(name)
        if (path, role) not in chosen or size < chosen[path, role][0]:
            chosen[path, role] = (size, name)
    return [name for _, name in chosen.values()]


def missing(rows, cases):
    """What the goals need that no program measures."""
    needed = set()
    for row in rows:
        for size in row.get("sizes", [row.get("size")]):
            needed.add((row["path"], goals.OURS, size))
            if "growthOverFloor" in row:
                needed.add((row["path"], goals.FLOOR, size))
        if "reference" in row:
            needed.add((row["path"], row["reference"], row.get("size")))
    return sorted("/".join(str(part) for part in case if part is not None)
                  for case in needed - cases)


def main():
    rows = goals.load(sys.argv[1])
    cases = set()
    for program in map(Path, sys.argv[2:]):
        names = measuring.names_in(program)
        cases.update(measuring.case_of(name) for name in names)
        measuring.measure_program(program, smallest(names), measuring.Effort(rounds=1, repetitions=1, seconds=0))
    if absent := missing(rows, cases):
        print("goals.json names what no benchmark measures:", *absent, sep="\n  ", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
