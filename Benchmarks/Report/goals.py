"""The rows of goals.json, and the verdict on each.

A row names a path, and a size where the path has one. With "reference" the figure of ours is divided by
that role's and may not exceed "limit". With "sizes" the figure for each entry at the last size is divided
by that at the first, and may not exceed "perEntryWithin"; or the growth from the first to the last is divided
by the floor's, and may not exceed "growthOverFloor". With "atMost" or "atLeast" the figure of ours
stands alone. Figures are the time in seconds unless "measure" names a counter; then "unit" says of what:
"B", "s" or nothing.
"""

import json
from dataclasses import dataclass

KEYS = {
    "name", "path", "size", "sizes", "reference", "limit", "perEntryWithin", "growthOverFloor",
    "atMost", "atLeast", "measure", "unit",
}
KINDS = ("reference", "perEntryWithin", "growthOverFloor", "atMost", "atLeast")
OF_SIZES = ("perEntryWithin", "growthOverFloor")
OURS = "ours"
FLOOR = "floor"
TIME = "time"


class GoalsError(Exception):
    """What goals.json says makes no sense, or is not measured."""


@dataclass(frozen=True)
class Verdict:
    """One row's figures. Those that there are not are None."""

    name: str
    ours: float
    floor: float | None
    # Names and figures; a goal's own peer is the first.
    peers: tuple[tuple[str, float], ...]
    ratio: float | None
    goal: float
    met: bool
    kind: str
    unit: str

    @property
    def peer(self):
        return self.peers[0][1] if self.peers else None

    def as_json(self):
        keys = ("name", "ours", "floor", "peer", "ratio", "goal", "met")
        return {key: getattr(self, key) for key in keys}


def check(row):
    name = row.get("name", "without a name")
    if unknown := sorted(row.keys() - KEYS):
        raise GoalsError(f"goal “{name}”: {', '.join(unknown)} means nothing")
    if not row.get("name") or not row.get("path"):
        raise GoalsError(f"goal “{name}”: a name and a path are needed")
    if sum(kind in row for kind in KINDS) != 1:
        raise GoalsError(f"goal “{name}”: one of {', '.join(KINDS)} is needed")
    if ("reference" in row) != ("limit" in row):
        raise GoalsError(f"goal “{name}”: reference and limit belong together")
    if any(kind in row for kind in OF_SIZES) != ("sizes" in row):
        raise GoalsError(f"goal “{name}”: {' or '.join(OF_SIZES)} and sizes belong together")


def load(path):
    with open(path, encoding="utf-8") as file:
        rows = json.load(file)
    for row in rows:
        check(row)
    return rows


def figure(measured, row, role, size):
    """The figure of a role for a row's path, or None."""
    values = measured.get((row["path"], role, size), {})
    return values.get(row.get("measure", TIME))


def needed(measured, row, role, size):
    value = figure(measured, row, role, size)
    if value is None:
        what = "/".join(str(part) for part in (row["path"], role, size) if part is not None)
        raise GoalsError(f"goal “{row['name']}”: {what} is not measured")
    return value


def peers_of(measured, row, size):
    """All peers that were measured, the row's reference before the others."""
    names = sorted({role for path, role, at in measured
                    if path == row["path"] and at == size and role not in (OURS, FLOOR)})
    names.sort(key=lambda name: name != row.get("reference"))
    figures = ((name, figure(measured, row, name, size)) for name in names)
    return tuple((name, value) for name, value in figures if value is not None)


def over(dividend, divisor, row):
    if divisor == 0:
        raise GoalsError(f"goal “{row['name']}”: there is nothing to divide by")
    return dividend / divisor


def growth_of(measured, row, role):
    first, last = row["sizes"][0], row["sizes"][-1]
    return over(needed(measured, row, role, last), needed(measured, row, role, first), row)


def verdict(measured, row):
    """Raises GoalsError when a figure is missing that the row needs."""
    kind = next(kind for kind in KINDS if kind in row)
    size = row["sizes"][-1] if "sizes" in row else row.get("size")
    ours = needed(measured, row, OURS, size)
    ratio = None
    goal = row["limit"] if kind == "reference" else row[kind]
    if kind == "reference":
        ratio = over(ours, needed(measured, row, row["reference"], size), row)
    elif kind == "perEntryWithin":
        ratio = growth_of(measured, row, OURS) * row["sizes"][0] / size
    elif kind == "growthOverFloor":
        ratio = over(growth_of(measured, row, OURS), growth_of(measured, row, FLOOR), row)
    met = ours >= goal if kind == "atLeast" else (ours if ratio is None else ratio) <= goal
    return Verdict(row["name"], ours, figure(measured, row, FLOOR, size),
                   peers_of(measured, row, size), ratio, goal, met, kind,
                   row.get("unit", "" if "measure" in row else "s"))
