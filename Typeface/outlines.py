"""Geometry of closed outlines, for the checks.

A segment is a tuple of points: two for a line, four for a cubic. A contour is a list of segments,
each starting where the one before ends. Outer contours run counter-clockwise, holes clockwise, so
that the filled side is always on the left.
"""

import math

_NEAR = 1e-6  # two parameters or lengths closer than this are the same
_TRIM = 0.02  # the part of a curve next to a smooth joint that is not searched for crossings
_FLATTEN = 96  # lines per cubic when a contour is flattened


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
        if math.hypot(dx, dy) < _NEAR:  # a handle of length zero: evaluate slightly further in
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


def bounds(points):
    """(left, bottom, right, top) of some points."""
    xs, ys = [p[0] for p in points], [p[1] for p in points]
    return min(xs), min(ys), max(xs), max(ys)


def extrema(segment):
    """The parameters inside 0..1 at which a cubic has an extremum in x or y."""
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
        t1 -= _TRIM  # near a smooth joint the two curves almost coincide
    if _smooth(other, one):
        t0 += _TRIM
    _search(between(one, t0, t1), t0, t1, other, 0.0, 1.0, found)
    return found


def _smooth(one, other):
    """Whether the second segment continues the first smoothly."""
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
        return []  # parallel, but not collinear
    found = []  # collinear: the ends of each that lie on the other
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
    """Halves both curves while their boxes meet, then refines the crossings and appends them."""
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
        raise ValueError("two curves coincide over a stretch")
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
    """The signed area: positive if the points run counter-clockwise."""
    total = 0.0
    for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]):
        total += x0 * y1 - x1 * y0
    return total / 2


def area(contour):
    return polygon_area(flattened(contour))


def winding(polygons, x, y):
    """The winding number of the polygons around a point."""
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
