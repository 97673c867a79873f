"""Closed outlines of lines and cubic curves, and the set operations on them.

A segment is a tuple of points: two for a line, four for a cubic. A contour is a list of segments,
each starting where the one before ends. Outer contours run counter-clockwise, holes clockwise, so
that the filled side is always on the left. Coordinates are font units as floats; `rounded` makes
the whole numbers that a font file stores.

The set operations split all contours where they cross, ask of each piece whether the filled area
lies on exactly one side of it, keep those pieces and chain them. They want shapes that cross each
other clearly: strokes that end inside another stroke, not strokes that touch along an edge.
"""

import math

_NEAR = 1e-6  # two parameters or lengths closer than this are the same
_SNAP = 0.02  # ends closer than this are one, in units
_PROBE = 0.05  # how far beside a piece its two sides are probed, in units
_TRIM = 0.02  # the part of a curve, next to a smooth joint, that is not searched for crossings
_FLATTEN = 96  # lines that stand for a cubic when a point is tested


# Segments


def point_at(segment, t):
    """The point of a segment at parameter t in 0..1."""
    if len(segment) == 2:
        (x0, y0), (x1, y1) = segment
        return (x0 + (x1 - x0) * t, y0 + (y1 - y0) * t)
    s = 1 - t
    a, b, c, d = s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t
    p, q, r, w = segment
    return (
        a * p[0] + b * q[0] + c * r[0] + d * w[0],
        a * p[1] + b * q[1] + c * r[1] + d * w[1],
    )


def tangent_at(segment, t):
    """The direction of a segment at t, as a unit vector."""
    if len(segment) == 2:
        (x0, y0), (x1, y1) = segment
        dx, dy = x1 - x0, y1 - y0
    else:
        s = 1 - t
        a, b, c = s * s, 2 * s * t, t * t
        p, q, r, w = segment
        dx = a * (q[0] - p[0]) + b * (r[0] - q[0]) + c * (w[0] - r[0])
        dy = a * (q[1] - p[1]) + b * (r[1] - q[1]) + c * (w[1] - r[1])
        if math.hypot(dx, dy) < _NEAR:  # a handle of length zero: look a little further in
            return tangent_at(segment, t + 1e-4 if t < 0.5 else t - 1e-4)
    length = math.hypot(dx, dy)
    return (dx / length, dy / length)


def split(segment, t):
    """The two parts of a segment, before and after t."""
    if len(segment) == 2:
        m = point_at(segment, t)
        return (segment[0], m), (m, segment[1])

    def mix(p, q):
        return (p[0] + (q[0] - p[0]) * t, p[1] + (q[1] - p[1]) * t)

    p, q, r, w = segment
    pq, qr, rw = mix(p, q), mix(q, r), mix(r, w)
    pqr, qrw = mix(pq, qr), mix(qr, rw)
    m = mix(pqr, qrw)
    return (p, pq, pqr, m), (m, qrw, rw, w)


def between(segment, t0, t1):
    """The part of a segment from t0 to t1."""
    if t0 > 0:
        segment = split(segment, t0)[1]
    if t1 < 1:
        segment = split(segment, (t1 - t0) / (1 - t0))[0]
    return segment


def backwards(segment):
    return tuple(reversed(segment))


def bounds(points):
    """(left, bottom, right, top) of some points."""
    xs, ys = [p[0] for p in points], [p[1] for p in points]
    return min(xs), min(ys), max(xs), max(ys)


def extrema(segment):
    """The parameters inside 0..1 at which a cubic turns in x or y."""
    if len(segment) == 2:
        return []
    found = []
    for axis in (0, 1):
        p, q, r, w = (v[axis] for v in segment)
        a, b, c = w - 3 * r + 3 * q - p, 2 * (r - 2 * q + p), q - p
        if abs(a) < 1e-9:
            roots = [-c / b] if abs(b) > 1e-9 else []
        else:
            d = b * b - 4 * a * c
            roots = [] if d < 0 else [(-b + s * math.sqrt(d)) / (2 * a) for s in (1, -1)]
        found += [t for t in roots if 1e-3 < t < 1 - 1e-3]
    return sorted(found)


def contour_bounds(contours):
    """The true bounds of some contours: curves by their extrema, not by their handles."""
    points = []
    for contour in contours:
        for segment in contour:
            points += [segment[0], segment[-1]]
            points += [point_at(segment, t) for t in extrema(segment)]
    return bounds(points)


# Crossings


def crossings(one, other):
    """Pairs (t, u) with one(t) = other(u)."""
    if not _boxes_meet(bounds(one), bounds(other)):
        return []
    if len(one) == 2 and len(other) == 2:
        return _line_crossings(one, other)
    found, (t0, t1) = [], (0.0, 1.0)
    if _smooth(one, other):
        t1 -= _TRIM  # two curves that pass into each other are as good as one near their joint
    if _smooth(other, one):
        t0 += _TRIM
    _search(between(one, t0, t1), t0, t1, other, 0.0, 1.0, found)
    return found


def _smooth(one, other):
    """Whether the second segment goes on smoothly where the first ends."""
    if math.dist(one[-1], other[0]) > 1e-6:
        return False
    (ax, ay), (bx, by) = tangent_at(one, 1), tangent_at(other, 0)
    return ax * bx + ay * by > 0.999


def _boxes_meet(a, b):
    return (
        a[0] <= b[2] + _NEAR
        and b[0] <= a[2] + _NEAR
        and a[1] <= b[3] + _NEAR
        and b[1] <= a[3] + _NEAR
    )


def _line_crossings(one, other):
    (ax, ay), (bx, by) = one
    (cx, cy), (dx, dy) = other
    rx, ry, sx, sy = bx - ax, by - ay, dx - cx, dy - cy
    cross = rx * sy - ry * sx
    scale = math.hypot(rx, ry) * math.hypot(sx, sy)
    if abs(cross) > 1e-9 * scale:
        t = ((cx - ax) * sy - (cy - ay) * sx) / cross
        u = ((cx - ax) * ry - (cy - ay) * rx) / cross
        inside = -_NEAR <= t <= 1 + _NEAR and -_NEAR <= u <= 1 + _NEAR
        return [(t, u)] if inside else []
    if abs((cx - ax) * ry - (cy - ay) * rx) > 1e-6 * math.hypot(rx, ry):
        return []  # parallel, apart
    found = []  # on one line: where the ends of each lie on the other
    rr, ss = rx * rx + ry * ry, sx * sx + sy * sy
    for u, (x, y) in ((0.0, (cx, cy)), (1.0, (dx, dy))):
        t = ((x - ax) * rx + (y - ay) * ry) / rr
        if -_NEAR <= t <= 1 + _NEAR:
            found.append((t, u))
    for t, (x, y) in ((0.0, (ax, ay)), (1.0, (bx, by))):
        u = ((x - cx) * sx + (y - cy) * sy) / ss
        if -_NEAR <= u <= 1 + _NEAR:
            found.append((t, u))
    return found


def _search(one, t0, t1, other, u0, u1, found):
    """Halve both curves while their boxes meet; polish and note what is left."""
    a, b = bounds(one), bounds(other)
    if not _boxes_meet(a, b):
        return
    size_a, size_b = max(a[2] - a[0], a[3] - a[1]), max(b[2] - b[0], b[3] - b[1])
    if size_a < 1e-4 and size_b < 1e-4:
        t, u = (t0 + t1) / 2, (u0 + u1) / 2
        if all(abs(t - v) + abs(u - w) > 1e-4 for v, w in found):
            found.append((t, u))
        return
    if len(found) > 12:
        raise ValueError("two curves run along each other")
    if size_a >= size_b:
        tm = (t0 + t1) / 2
        left, right = split(one, 0.5)
        _search(left, t0, tm, other, u0, u1, found)
        _search(right, tm, t1, other, u0, u1, found)
    else:
        um = (u0 + u1) / 2
        left, right = split(other, 0.5)
        _search(one, t0, t1, left, u0, um, found)
        _search(one, t0, t1, right, um, u1, found)


# Areas


def flattened(contour):
    """The contour as a list of corner points."""
    points = []
    for segment in contour:
        steps = 1 if len(segment) == 2 else _FLATTEN
        points += [point_at(segment, i / steps) for i in range(steps)]
    return points


def polygon_area(points):
    """Twice-signed halves summed: positive when the points run counter-clockwise."""
    total = 0.0
    for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]):
        total += x0 * y1 - x1 * y0
    return total / 2


def area(contour):
    return polygon_area(flattened(contour))


def winding(polygons, x, y):
    """How often the polygons turn round a point."""
    turns = 0
    for points in polygons:
        px, py = points[-1]
        for qx, qy in points:
            if (py <= y) != (qy <= y):
                side = (qx - px) * (y - py) - (x - px) * (qy - py)
                if qy > py and side > 0:
                    turns += 1
                elif qy < py and side < 0:
                    turns -= 1
            px, py = qx, qy
    return turns


# Set operations


def union(*shapes):
    """The contours of everything that any shape covers."""
    return combine([c for shape in shapes for c in shape], [])


def difference(shape, *removed):
    """The contours of what the first shape covers and no other does."""
    return combine(shape, [c for other in removed for c in other])


def combine(added, removed):
    """Contours of the area inside `added` and outside `removed`, free of overlaps."""
    contours = list(added) + list(removed)
    added_polygons = [flattened(c) for c in added]
    removed_polygons = [flattened(c) for c in removed]

    def inside(x, y):
        return winding(added_polygons, x, y) != 0 and winding(removed_polygons, x, y) == 0

    pieces = []
    for piece in _cut_at_crossings(contours):
        x, y = point_at(piece, 0.5)
        dx, dy = tangent_at(piece, 0.5)
        left = inside(x - dy * _PROBE, y + dx * _PROBE)
        right = inside(x + dy * _PROBE, y - dx * _PROBE)
        if left != right:
            kept = piece if left else backwards(piece)
            if not any(_same(kept, other) for other in pieces):
                pieces.append(kept)  # two shapes that share an edge give it twice
    return [_merged(chain) for chain in _chains(pieces)]


def _same(one, other):
    return (
        one[0] == other[0]
        and one[-1] == other[-1]
        and math.dist(point_at(one, 0.5), point_at(other, 0.5)) < 2 * _SNAP
    )


def _cut_at_crossings(contours):
    """All segments, cut where they cross; ends that are as good as one are made one."""
    segments = [segment for contour in contours for segment in contour]
    cuts = [[0.0, 1.0] for _ in segments]
    boxes = [bounds(segment) for segment in segments]
    for i, one in enumerate(segments):
        for j in range(i + 1, len(segments)):
            if _boxes_meet(boxes[i], boxes[j]):
                for t, u in crossings(one, segments[j]):
                    cuts[i].append(min(1.0, max(0.0, t)))
                    cuts[j].append(min(1.0, max(0.0, u)))
    nodes = []

    def node(point):
        for known in nodes:
            if math.dist(known, point) < _SNAP:
                return known
        nodes.append(point)
        return point

    for segment, ts in zip(segments, cuts):
        for end in (segment[0], segment[-1]):
            node(end)
        ts.sort()
        for t0, t1 in zip(ts, ts[1:]):
            if t1 - t0 < 1e-9:
                continue
            piece = between(segment, t0, t1)
            start, end = node(piece[0]), node(piece[-1])
            if start != end or _rough_length(piece) > 4 * _SNAP:
                yield (start,) + piece[1:-1] + (end,)


def _rough_length(segment):
    return sum(math.dist(p, q) for p, q in zip(segment, segment[1:]))


def _chains(pieces):
    """Join pieces end to start into closed contours."""
    left = list(pieces)
    while left:
        chain = [left.pop(0)]
        while chain[-1][-1] != chain[0][0]:
            choices = [i for i in range(len(left)) if left[i][0] == chain[-1][-1]]
            if not choices:
                raise ValueError(f"an outline stays open at {chain[-1][-1]}")
            chain.append(left.pop(_sharpest_left(chain[-1], left, choices)))
        yield chain


def _sharpest_left(piece, others, choices):
    """Where outlines meet in a point, the left-most turn keeps each contour to itself."""
    dx, dy = tangent_at(piece, 1)

    def turn(i):
        ex, ey = tangent_at(others[i], 0)
        return math.atan2(dx * ey - dy * ex, dx * ex + dy * ey)

    return max(choices, key=turn)


def _merged(chain):
    """Undo cuts that turned out not to matter, and tie each end to the next start."""
    result = list(chain)
    changed = True
    while changed and len(result) > 2:
        changed = False
        for i in range(len(result)):
            joined = _joined(result[i - 1], result[i])
            if joined:
                result[i] = joined
                del result[i - 1]
                changed = True
                break
    return [
        (segment[0],) + segment[1:-1] + (following[0],)
        for segment, following in zip(result, result[1:] + result[:1])
    ]


def _joined(one, other):
    """The single segment of which these are two parts, or None."""
    if len(one) != len(other):
        return None
    ax, ay = tangent_at(one, 1)
    bx, by = tangent_at(other, 0)
    if abs(ax * by - ay * bx) > 1e-5 or ax * bx + ay * by < 0:
        return None
    if len(one) == 2:
        return (one[0], other[1])
    before, after = math.dist(one[2], one[3]), math.dist(other[0], other[1])
    if before + after < _NEAR:
        return None
    t = before / (before + after)
    if not 0.001 < t < 0.999:
        return None
    whole = (
        one[0],
        _stretched(one[0], one[1], 1 / t),
        _stretched(other[3], other[2], 1 / (1 - t)),
        other[3],
    )
    same = all(
        math.dist(point_at(whole, t * f), point_at(one, f)) < 0.02
        and math.dist(point_at(whole, t + (1 - t) * f), point_at(other, f)) < 0.02
        for f in (0.25, 0.5, 0.75, 1.0)
    )
    return whole if same else None


def _stretched(origin, point, factor):
    return (
        origin[0] + (point[0] - origin[0]) * factor,
        origin[1] + (point[1] - origin[1]) * factor,
    )


# Moving and finishing


def mapped(shape, function):
    """The shape with `function` applied to every point; a mirrored one keeps its fill."""
    moved = [[tuple(function(p) for p in segment) for segment in c] for c in shape]
    (ox, oy), (ax, ay), (bx, by) = function((0, 0)), function((1, 0)), function((0, 1))
    if (ax - ox) * (by - oy) - (ay - oy) * (bx - ox) < 0:
        moved = [[backwards(s) for s in reversed(c)] for c in moved]
    return moved


def shifted(shape, dx, dy=0):
    return mapped(shape, lambda p: (p[0] + dx, p[1] + dy))


def turned(shape, cx, cy):
    """Half a turn about a point."""
    return mapped(shape, lambda p: (2 * cx - p[0], 2 * cy - p[1]))


def mirrored(shape, cx):
    """Left and right exchanged about x = cx."""
    return mapped(shape, lambda p: (2 * cx - p[0], p[1]))


def flipped(shape, cy):
    """Top and bottom exchanged about y = cy."""
    return mapped(shape, lambda p: (p[0], 2 * cy - p[1]))


def rounded(shape):
    """The shape on whole units, contours in a fixed order, each from its lowest left point."""
    result = []
    for contour in shape:
        whole = []
        for segment in contour:
            points = tuple((_whole(x), _whole(y)) for x, y in segment)
            if points[0] != points[-1]:
                whole.append(points)
        whole = _without_needless_corners(whole)
        if len(whole) < 2:
            continue
        starts = [segment[0] for segment in whole]
        first = starts.index(min(starts, key=lambda p: (p[1], p[0])))
        result.append(whole[first:] + whole[:first])
    return sorted(result, key=lambda c: (-area(c), c[0][0]))


def _without_needless_corners(contour):
    """Lines that go on in exactly the same direction become one line."""
    result = list(contour)
    i = 0
    while i < len(result) and len(result) > 2:
        one, other = result[i - 1], result[i]
        if len(one) == 2 and len(other) == 2:
            (ax, ay), (bx, by) = one
            cx, cy = other[1]
            if (bx - ax) * (cy - by) == (by - ay) * (cx - bx):
                result[i] = (one[0], other[1])
                del result[i - 1]
                i = 0
                continue
        i += 1
    return result


def _whole(value):
    return math.floor(round(value, 3) + 0.5)  # a half stays a half whatever the last bits say
