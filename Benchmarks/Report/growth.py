"""How time grows with size: the exponent of the power of the size that fits best."""

import math

from goals import OURS, TIME

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


def of_each_path(measured):
    """(path, sizes, exponent) of what is ours and was measured at three sizes or more."""
    by_path = {}
    for (path, role, size), values in measured.items():
        if role == OURS and size is not None and values.get(TIME, 0) > 0:
            by_path.setdefault(path, []).append((size, values[TIME]))
    all_fitted = {path: fitted(points) for path, points in by_path.items()}
    return [(path, sorted(size for size, _ in points), exponent(points))
            for path, points in all_fitted.items() if len(points) >= 3]
