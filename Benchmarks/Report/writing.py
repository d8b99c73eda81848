"""The table, as text and for the README."""

import json
from pathlib import Path

BEGIN = "<!-- figures: ./bench renews what stands between these two lines -->"
END = "<!-- end of figures -->"
HEADS = ("what", "ours", "floor", "peers", "to floor", "to peers", "goal", "met")
# From the largest on; a figure is written in the first that it is not below.
UNITS = {
    "s": ((1, "s"), (1e-3, "ms"), (1e-6, "µs"), (0, "ns")),
    "B": ((1 << 20, "MiB"), (1 << 10, "KiB"), (0, "B")),
    "": ((0, ""),),
}


class WritingError(Exception):
    """The README has no place for the figures."""


def quantity(value, unit):
    """“1.23 µs”; nothing for None."""
    if value is None:
        return ""
    scale, name = next(each for each in UNITS[unit] if value >= each[0])
    divisor = scale or {"s": 1e-9}.get(unit, 1)
    number = value / divisor
    digits = 0 if number >= 100 or number == int(number) else 1 if number >= 10 else 2
    return f"{number:.{digits}f} {name}".strip()


def times(value):
    """With the digits that tell it from a goal."""
    return f"{value:.2f}" if value >= 0.2 else f"{value:.3f}"


def ratio(dividend, divisor):
    return "" if not divisor or dividend is None else times(dividend / divisor)


def goal_text(verdict):
    if verdict.kind == "atLeast":
        return f"≥ {quantity(verdict.goal, verdict.unit)}"
    if verdict.kind == "atMost":
        return f"≤ {quantity(verdict.goal, verdict.unit)}"
    of_what = {"perEntryWithin": " an entry", "growthOverFloor": " its growth"}
    sign = "≤" if verdict.met else ">"
    return f"{times(verdict.ratio)} {sign} {verdict.goal:g} ×{of_what.get(verdict.kind, '')}"


def cells(verdict):
    peers = ", ".join(f"{quantity(peer, verdict.unit)} ({name})" for name, peer in verdict.peers)
    return (verdict.name, quantity(verdict.ours, verdict.unit),
            quantity(verdict.floor, verdict.unit),
            peers, ratio(verdict.ours, verdict.floor),
            ", ".join(ratio(verdict.ours, peer) for _, peer in verdict.peers),
            goal_text(verdict), "yes" if verdict.met else "no")


def aligned(rows):
    """Text columns: the first to the left, the others to the right."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    return "\n".join("  ".join(cell.ljust(width) if i == 0 else cell.rjust(width)
                               for i, (cell, width) in enumerate(zip(row, widths))).rstrip()
                     for row in rows) + "\n"


def table(verdicts):
    return aligned([HEADS, *(cells(verdict) for verdict in verdicts)])


def growth_rows(growth):
    return [(path, f"{sizes[0]:,} to {sizes[-1]:,}", f"{ours:.3f}",
             "" if floor is None else f"{floor:.3f}") for path, sizes, ours, floor in growth]


def growth_table(growth):
    if not growth:
        return ""
    return aligned([("grows with size", "sizes", "exponent", "floor"), *growth_rows(growth)])


def markdown(heads, rows):
    lines = [heads, ["---"] + ["---:"] * (len(heads) - 1), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def section(verdicts, growth, machine):
    """What stands between the README's markers."""
    met = sum(verdict.met for verdict in verdicts)
    text = (f"On {machine}: {met} of {len(verdicts)} goals met. “To floor” and “to peers” are ours "
            "divided by these. A goal is a part of one of them, an amount, or how much more an entry takes at "
            "the largest size than at the smallest (“× an entry”), or than the floor's growth (“× its "
            "growth”). In the picture a bar that reaches the line has just met its goal.\n\n"
            "![What each costs, as a part of what it may cost](Docs/pictures/benchmarks.svg)\n\n"
            + markdown(HEADS, [cells(verdict) for verdict in verdicts]))
    if growth:
        text += ("\nTime grows with the size to the power of:\n\n"
                 + markdown(("path", "sizes", "ours", "floor"), growth_rows(growth)))
    return text


def renewed(readme, text):
    """A README with other text between its markers."""
    before, begin, rest = readme.partition(BEGIN)
    _, end, behind = rest.partition(END)
    if not begin or not end:
        raise WritingError("README.md has lost the two lines that the figures stand between")
    return f"{before}{BEGIN}\n\n{text}\n{END}{behind}"


def write_json(path, verdicts):
    text = json.dumps([verdict.as_json() for verdict in verdicts], indent=2, ensure_ascii=False)
    Path(path).write_text(text + "\n", encoding="utf-8")
