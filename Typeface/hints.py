"""Stem hints, found in the finished outlines.

A rasteriser moves hinted edges to whole rows. A stem is a low edge and a high edge with ink in
between; an edge in an alignment zone without a stem gets a ghost hint, so that the tops of V and I
reach the same row as that of E.
"""

from measures import CAP, DESCENT, OVER, XHEIGHT
from outlines import bounds

THINNEST, THICKEST = 60, 128  # what counts as a stem
GHOST_TOP, GHOST_BOTTOM = -20, -21  # the widths that mark a hint with one edge


def stem_hints(shape, axis):
    """Disjoint pairs (low, high) in rising order; axis 1 for level stems, 0 for upright ones.

    A ghost is a pair whose high is 20 or 21 below its low.
    """
    lows, highs = _edges(shape, axis)
    stems = []
    for low, low_span in lows:
        for high, high_span in highs:
            if THINNEST <= high - low <= THICKEST:
                overlap = min(low_span[1], high_span[1]) - max(low_span[0], high_span[0])
                if overlap > 12:
                    in_zone = axis == 1 and (_at_bottom(low) or _at_top(high))
                    stems.append((in_zone, overlap, low, high))
    chosen = []
    for _, _, low, high in sorted(stems, reverse=True):
        if all(high + 2 < other[0] or low > other[1] + 2 for other in chosen):
            chosen.append((low, high))
    if axis == 1:
        chosen += _ghosts(lows, highs, chosen)
    return sorted(chosen, key=lambda hint: (min(hint), hint))


def _at_bottom(y):
    return -OVER <= y <= 0 or DESCENT - OVER <= y <= DESCENT


def _at_top(y):
    return XHEIGHT <= y <= XHEIGHT + OVER or CAP <= y <= CAP + OVER


def _ghosts(lows, highs, chosen):
    ghosts, taken = [], list(chosen)

    def free(y):
        return all(y < low - 24 or y > high + 24 for low, high in taken)

    for y, _ in lows:
        if _at_bottom(y) and free(y):
            ghosts.append((y - GHOST_BOTTOM, y))
            taken.append((y, y + 21))
    for y, _ in highs:
        if _at_top(y) and free(y):
            ghosts.append((y, y + GHOST_TOP))
            taken.append((y - 20, y))
    return ghosts


def _edges(shape, axis):
    """Low and high edges: (place, (from, to)), level lines and level tangents of curves alike."""
    lows, highs = {}, {}
    for contour in shape:
        for before, segment in zip(contour[-1:] + contour[:-1], contour):
            here, following = segment[0], segment[1]
            places = [here]
            if following[axis] == here[axis] and following != here:
                places.append(following)
            if len(before) == 4 and before[2][axis] == here[axis] and before[2] != here:
                places.append(before[2])
            if len(places) < 2:
                continue
            if len(segment) == 4 and len(before) == 4 and len(places) < 3:
                continue  # a corner with one level handle
            across = 1 - axis
            box = bounds(places)
            first = before[2] if len(places) == 3 or following[axis] != here[axis] else here
            last = following if following[axis] == here[axis] else here
            rising = last[across] > first[across]
            ink_after = rising if axis == 1 else not rising  # the ink is on the left
            span = (box[across], box[across + 2])
            side = lows if ink_after else highs
            old = side.get(here[axis], span)
            side[here[axis]] = (min(old[0], span[0]), max(old[1], span[1]))
    return sorted(lows.items()), sorted(highs.items())
