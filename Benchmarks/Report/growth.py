"""How time grows with size: the exponent of the power of the size that fits best.

A floor that grows faster than its size tells what the machine's caches do to anyone.
"""

import math

from goals import FLOOR, OURS, TIME

# Below it what a call costs in any case hides the growth; a path whose sizes end early begins early.
SMALLEST = 1000
SMALLEST_OF_SHORT = 10


def exponent(points):
    """The slope of the line of least squares through (size, seconds) on logarithmic scales."""
    x = [math.log(size) for size, _ in points]
    y = [math.log(seconds) for _, seconds in points]
    middle_x = sum(x) / len(x)
    middle_y = sum(y) / len(y)
    spread = sum((each - middle_x) ** 2 for each in x)
    together = sum((a - middle_x) * (b - middle_y) for a, b in zip(x, y))
    return together / spread


def fitted(points):
    """Those of the points that tell of growth."""
    large = [point for point in points if point[0] >= SMALLEST]
    return large if len(large) >= 3 else [each for each in points if each[0] >= SMALLEST_OF_SHORT]


def of_role(measured, wanted, role):
    """(sizes, exponent) of what was measured at three sizes or more; else None."""
    points = fitted([(size, values[TIME]) for (path, other, size), values in measured.items()
                     if (path, other) == (wanted, role) and size and values.get(TIME, 0) > 0])
    if len(points) < 3:
        return None
    return sorted(size for size, _ in points), exponent(points)


def of_each_path(measured):
    """(path, sizes, exponent of ours, exponent of the floor or None) of each that has enough sizes."""
    rows = []
    for path in dict.fromkeys(path for path, _, _ in measured):
        ours = of_role(measured, path, OURS)
        floor = of_role(measured, path, FLOOR)
        if ours:
            rows.append((path, *ours, floor[1] if floor else None))
    return rows
