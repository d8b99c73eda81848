"""The picture: a bar for each goal, as long as the part of it that is used up."""

from xml.sax.saxutils import escape

from writing import goal_text, quantity

WIDTH = 960
LEFT = 430
RIGHT = 190
ROW = 22
TOP = 34
# A bar ends here at the latest; the number behind it tells the rest.
MOST = 1.3
COLOURS = {True: "#2f7d4f", False: "#b3472e"}
GOAL_COLOUR = "#333333"


def used(verdict):
    """The part of a goal that is used up: 1 is just met, more is too much."""
    if verdict.kind == "atLeast":
        return verdict.goal / verdict.ours if verdict.ours else MOST
    return (verdict.ours if verdict.ratio is None else verdict.ratio) / verdict.goal


def figure(verdict):
    """“1.23 ≤ 1.5 ×”, or “600 µs ≤ 5 ms”."""
    amount = quantity(verdict.ours, verdict.unit) if verdict.ratio is None else ""
    return f"{amount} {goal_text(verdict)}".strip()


def length(part):
    return min(part, MOST) / MOST * (WIDTH - LEFT - RIGHT)


def row(index, verdict):
    top = TOP + index * ROW
    base = top + ROW - 7
    bar = length(used(verdict))
    return (f'<text x="{LEFT - 8}" y="{base}" text-anchor="end">{escape(verdict.name)}</text>\n'
            f'<rect x="{LEFT}" y="{top + 4}" width="{bar:.1f}" height="{ROW - 8}" '
            f'fill="{COLOURS[verdict.met]}"/>\n'
            f'<text x="{WIDTH - RIGHT + 12}" y="{base}">{escape(figure(verdict))}</text>\n')


def chart(verdicts):
    height = TOP + len(verdicts) * ROW + 12
    goal = LEFT + length(1.0)
    rows = "".join(row(index, verdict) for index, verdict in enumerate(verdicts))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
            f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif" font-size="13" '
            'fill="#222222">\n'
            '<title>What each costs, as a part of what it may cost</title>\n'
            f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>\n'
            f'{rows}'
            f'<path d="M{goal:.1f} {TOP - 6}V{height - 8}" stroke="{GOAL_COLOUR}" '
            'stroke-dasharray="4 3" fill="none"/>\n'
            f'<text x="{goal:.1f}" y="{TOP - 14}" text-anchor="middle">the goal</text>\n'
            '</svg>\n')
