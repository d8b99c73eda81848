"""How time grows with size: the exponent of the power of the size that fits best."""

import math

from goals import OURS, TIME

SMALLEST = 1000


def exponent(points):
    """The slope of the line of least squares through (size, seconds) on logarithmic scales."""
    x = [math.log(size) for size, _ in points]
    y = [math.log(seconds) for _, seconds in points]
    middle_x = sum(x) / len(x)
    middle_y = sum(y) / len(y)
    spread = sum((each - middle_x) ** 2 for each in x)
    together = sum((a - middle_x) * (b - middle_y) for a, b in zip(x, y))
    return together / spread


def of_each_path(measured):
    """(path, sizes, exponent) of what is ours and was measured at three sizes from 1,000 on."""
    by_path = {}
    for (path, role, size), values in measured.items():
        if role == OURS and size is not None and size >= SMALLEST and values.get(TIME, 0) > 0:
            by_path.setdefault(path, []).append((size, values[TIME]))
    return [(path, sorted(size for size, _ in points), exponent(points))
            for path, points in by_path.items() if len(points) >= 3]
