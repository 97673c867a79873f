"""The pen: skeletons drawn with an elliptical nib become outlines.

The nib is an ellipse, wider than tall, so that upright strokes come out heavier than level ones
and slanted strokes lie in between, as the eye wants them. A skeleton is a path of lines and
curves; each of its nodes may draw with a scaled nib, which lightens a stroke where it runs into
another. The edge of a stroke is the envelope of the nib; it is parallel to the skeleton, so an
extremum of the skeleton is an extremum of both edges.
"""

import math

from outlines import backwards, point_at, tangent_at

# How square the round shapes are: the length of a curve's handles in parts of its quarter.
# 0.5523 would be a circle; this is close to Lame's curve with exponent 2.5.
SQUARENESS = 0.675

# How far an edge may be from the true envelope, in units. One cubic per quarter is smoother to the
# eye than two that are a unit more exact.
TOLERANCE = 2.0


class Pen:
    """An elliptical nib: the width of upright strokes and the height of level ones."""

    def __init__(self, upright, level):
        self.upright, self.level = upright, level

    def scaled(self, factor):
        return Pen(self.upright * factor, self.level * factor)

    def reach(self, tx, ty, scale=1.0):
        """From the nib's centre to where its edge runs along (tx, ty), on the right side."""
        a, b = self.upright * scale / 2, self.level * scale / 2
        nx, ny = ty, -tx
        h = math.hypot(a * nx, b * ny)
        return (a * a * nx / h, b * b * ny / h)

    def thickness(self, dx, dy):
        """The thickness, square to itself, of a stroke that runs along (dx, dy)."""
        length = math.hypot(dx, dy)
        return math.hypot(self.upright * dy, self.level * dx) / length


class Path:
    """A skeleton under construction. Every step starts where the last one ended."""

    def __init__(self, x, y, scale=1.0):
        self.segments, self.scales, self.at, self.scale = [], [], (x, y), scale

    def _add(self, segment, scale):
        scale = self.scale if scale is None else scale
        self.segments.append(segment)
        self.scales.append((self.scale, scale))
        self.at, self.scale = segment[-1], scale
        return self

    def line(self, x, y, scale=None):
        """A straight stroke to (x, y)."""
        return self._add((self.at, (x, y)), scale)

    def quarter(self, x, y, start, k=SQUARENESS, end_k=None, scale=None):
        """A quarter of a superellipse to (x, y), leaving level ("h") or upright ("v")."""
        (px, py), end_k = self.at, k if end_k is None else end_k
        dx, dy = x - px, y - py
        if start == "h":
            handles = (px + k * dx, py), (x, y - end_k * dy)
        else:
            handles = (px, py + k * dy), (x - end_k * dx, y)
        return self._add((self.at, *handles, (x, y)), scale)

    def curve(self, x1, y1, x2, y2, x, y, scale=None):
        """A cubic with its handles given."""
        return self._add((self.at, (x1, y1), (x2, y2), (x, y)), scale)

    def stroke(self, pen):
        """The outline of the open path drawn with the pen, cut straight at both ends."""
        right, left = self._edges(pen)
        left = [backwards(s) for s in reversed(left)]
        return [right + [(right[-1][-1], left[0][0])] + left + [(left[-1][-1], right[0][0])]]

    def ring(self, pen):
        """The two outlines of the closed path drawn with the pen."""
        right, left = self._edges(pen)
        return [_closed(right), _closed([backwards(s) for s in reversed(left)])]

    def _edges(self, pen):
        right, left = [], []
        for segment, (s0, s1) in zip(self.segments, self.scales):
            right += _edge(segment, pen, s0, s1, 1)
            left += _edge(segment, pen, s0, s1, -1)
        return _tied(right), _tied(left)


def _tied(edge):
    """Fill the steps between edges of skeleton segments that meet at an angle."""
    result = [edge[0]]
    for segment in edge[1:]:
        gap = math.dist(result[-1][-1], segment[0])
        if gap < 0.2:
            segment = (result[-1][-1],) + segment[1:]
        else:
            result.append((result[-1][-1], segment[0]))
        result.append(segment)
    return result


def _closed(edge):
    if math.dist(edge[-1][-1], edge[0][0]) > 1e-6:
        return edge + [(edge[-1][-1], edge[0][0])]
    return edge


def _edge(segment, pen, s0, s1, side):
    """One edge of one skeleton segment: a line, or cubics within the tolerance."""

    def scale(t):
        return s0 + (s1 - s0) * t * t * (3 - 2 * t)

    def edge_point(t):
        x, y = point_at(segment, t)
        tx, ty = tangent_at(segment, t)
        dx, dy = pen.reach(tx, ty, scale(t))
        return (x + side * dx, y + side * dy)

    if len(segment) == 2 and s0 == s1:
        return [(edge_point(0), edge_point(1))]
    return _fitted(edge_point, tangent_at(segment, 0), tangent_at(segment, 1))


def _fitted(curve, start, end, t0=0.0, t1=1.0, depth=0):
    """Cubics that follow curve(t) for t0..t1, leaving along start and arriving along end."""
    count = 24
    samples = [curve(t0 + (t1 - t0) * i / count) for i in range(count + 1)]
    cubic, error = _fit_once(samples, start, end)
    if error < TOLERANCE or depth == 2:
        return [cubic]
    middle = (t0 + t1) / 2
    (ax, ay), (bx, by) = curve(middle - 1e-5), curve(middle + 1e-5)
    length = math.hypot(bx - ax, by - ay)
    along = ((bx - ax) / length, (by - ay) / length)
    return _fitted(curve, start, along, t0, middle, depth + 1) + _fitted(
        curve, along, end, middle, t1, depth + 1
    )


def _fit_once(samples, start, end):
    """Least squares for the two handle lengths, with the parameters improved in between."""
    first, last = samples[0], samples[-1]
    steps = [math.dist(p, q) for p, q in zip(samples, samples[1:])]
    total, run, ts = sum(steps), 0.0, [0.0]
    for step in steps:
        run += step
        ts.append(run / total)
    cubic = None
    for _ in range(12):
        cubic = _least_squares(samples, ts, first, last, start, end, total)
        ts = [_nearest(cubic, p, t) for p, t in zip(samples, ts)]
    error = max(math.dist(point_at(cubic, t), p) for p, t in zip(samples, ts))
    return cubic, error


def _least_squares(samples, ts, first, last, start, end, total):
    aa = ab = bb = ap = bp = 0.0
    for (x, y), t in zip(samples, ts):
        s = 1 - t
        b0, b1, b2, b3 = s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t
        ax, ay = start[0] * b1, start[1] * b1
        bx, by = -end[0] * b2, -end[1] * b2
        rx = x - first[0] * (b0 + b1) - last[0] * (b2 + b3)
        ry = y - first[1] * (b0 + b1) - last[1] * (b2 + b3)
        aa += ax * ax + ay * ay
        ab += ax * bx + ay * by
        bb += bx * bx + by * by
        ap += ax * rx + ay * ry
        bp += bx * rx + by * ry
    det = aa * bb - ab * ab
    if abs(det) > 1e-9:
        alpha, beta = (ap * bb - bp * ab) / det, (aa * bp - ab * ap) / det
    else:
        alpha = beta = total / 3
    if alpha < total * 0.02 or beta < total * 0.02:
        alpha = beta = total / 3
    return (
        first,
        (first[0] + start[0] * alpha, first[1] + start[1] * alpha),
        (last[0] - end[0] * beta, last[1] - end[1] * beta),
        last,
    )


def _nearest(cubic, point, t):
    """One step of Newton towards the parameter whose point is nearest."""
    x, y = point_at(cubic, t)
    p, q, r, w = cubic
    s = 1 - t
    d = [
        3 * (s * s * (q[i] - p[i]) + 2 * s * t * (r[i] - q[i]) + t * t * (w[i] - r[i]))
        for i in (0, 1)
    ]
    dd = [6 * (s * (r[i] - 2 * q[i] + p[i]) + t * (w[i] - 2 * r[i] + q[i])) for i in (0, 1)]
    ex, ey = x - point[0], y - point[1]
    slope = d[0] * d[0] + d[1] * d[1] + ex * dd[0] + ey * dd[1]
    if abs(slope) < 1e-9:
        return t
    return min(1.0, max(0.0, t - (ex * d[0] + ey * d[1]) / slope))


# Ready shapes


def polygon(*points):
    """A filled polygon, given in either direction."""
    contour = [(p, q) for p, q in zip(points, points[1:] + points[:1])]
    turn = sum(p[0] * q[1] - q[0] * p[1] for p, q in contour)
    return [contour if turn > 0 else [backwards(s) for s in reversed(contour)]]


def box(left, bottom, right, top):
    return polygon((left, bottom), (right, bottom), (right, top), (left, top))


def upright(pen, x, bottom, top):
    """A stem whose middle is at x."""
    return box(x - pen.upright / 2, bottom, x + pen.upright / 2, top)


def level(pen, y, left, right):
    """A bar whose middle is at y."""
    return box(left, y - pen.level / 2, right, y + pen.level / 2)


def slant(pen, x0, y0, x1, y1):
    """A slanted stroke from (x0, y0) to (x1, y1), cut level at both ends."""
    half = pen.thickness(x1 - x0, y1 - y0) * math.hypot(x1 - x0, y1 - y0) / abs(y1 - y0) / 2
    return polygon((x0 - half, y0), (x0 + half, y0), (x1 + half, y1), (x1 - half, y1))


def slant_width(pen, dx, dy):
    """How wide a slanted stroke is where it is cut level."""
    return pen.thickness(dx, dy) * math.hypot(dx, dy) / abs(dy)


def slant_on(pen, x0, y0, x1, y1, side):
    """A slanted stroke whose edge runs from (x0, y0) to (x1, y1): its left (-1) or right (1)."""
    width = -side * slant_width(pen, x1 - x0, y1 - y0)
    return polygon((x0, y0), (x0 + width, y0), (x1 + width, y1), (x1, y1))


def half_slant(pen, reach, rise):
    """Half the level width of a stroke that spans `reach` from its outer to its far middle."""
    half = pen.upright / 2
    for _ in range(30):
        half = slant_width(pen, reach - half, rise) / 2
    return half


def oval(cx, cy, rx, ry, k=SQUARENESS):
    """A closed superelliptic skeleton, counter-clockwise from its right-most point."""
    return (
        Path(cx + rx, cy)
        .quarter(cx, cy + ry, "v", k)
        .quarter(cx - rx, cy, "h", k)
        .quarter(cx, cy - ry, "v", k)
        .quarter(cx + rx, cy, "h", k)
    )


def disc(cx, cy, rx, ry, k=SQUARENESS):
    """A filled superellipse."""
    return [list(oval(cx, cy, rx, ry, k).segments)]
