#!/usr/bin/python3
"""Checks that no outline of this face equals one of another font.

    originality.py [FILE [FOLDER]]

compares every outline of FILE (default: the committed face) with every outline of every font below
FOLDER (default: /usr/share/fonts), moved to the same origin and scaled to the same height. Two
outlines are equal if they have the same number of contours, these have the same numbers and kinds
of segments, and all points, handles included, agree within two thousandths of the height. Installed
faces of this family are skipped.

A plain upright rectangle (I, hyphen, the dashes, ...) has only its proportions, which another font
may share by chance: such bars are compared within half a thousandth of their proportions, and a
match is reported but does not fail. Exits with 1 if any other outline is found elsewhere, with 2 if
there was nothing to compare with.
"""

import os
import sys

from fontTools.pens.recordingPen import DecomposingRecordingPen
from fontTools.ttLib import TTCollection, TTFont, TTLibError

HERE = os.path.dirname(os.path.abspath(__file__))
FACE = os.path.join(HERE, "..", "Resources", "MORLADisplay-Regular.otf")
TOLERANCE, BAR_TOLERANCE = 0.002, 0.0005


def contours(glyphs, name):
    """Contours as lists of (kind, points), each closed by an explicit segment."""
    pen = DecomposingRecordingPen(glyphs)
    glyphs[name].draw(pen)
    result, start, at = [], None, None
    for operator, points in pen.value:
        if operator == "moveTo":
            result.append([])
            start = at = points[0]
        elif operator in ("closePath", "endPath"):
            if at != start:
                result[-1].append(("lineTo", (start,)))
        else:
            if points[-1] is None:  # a contour without on-curve points; this face has none
                return []
            if not result:
                result.append([])
            result[-1].append((operator, points))
            at = points[-1]
    return [c for c in result if c]


def normalised(shape):
    """(ratio of width to height, contours moved to the origin and scaled to height 1), or None."""
    points = [p for contour in shape for _, ps in contour for p in ps]
    if not points:
        return None
    left, bottom = min(p[0] for p in points), min(p[1] for p in points)
    width, height = max(p[0] for p in points) - left, max(p[1] for p in points) - bottom
    if height <= 0 or width <= 0:
        return None

    def moved(points):
        return tuple(((x - left) / height, (y - bottom) / height) for x, y in points)

    scaled = [[(kind, moved(ps)) for kind, ps in contour] for contour in shape]
    return width / height, sorted(scaled, key=len)


def signature(shape):
    """The kinds of segments per contour: a cheap test before points are compared."""
    return tuple(tuple(sorted(k for k, _ in contour)) for contour in shape)


def same_contour(one, other):
    """Whether the contours are equal from some starting point, in either direction."""
    for candidate in (other, reversed_contour(other)):
        for first in range(len(candidate)):
            turned = candidate[first:] + candidate[:first]
            if all(same_segment(a, b) for a, b in zip(one, turned)):
                return True
    return False


def reversed_contour(contour):
    ends = [ps[-1] for _, ps in contour]
    result = []
    for i in range(len(contour) - 1, -1, -1):
        kind, ps = contour[i]
        result.append((kind, tuple(reversed(ps[:-1])) + (ends[i - 1],)))
    return result


def same_segment(one, other):
    return (
        one[0] == other[0]
        and len(one[1]) == len(other[1])
        and all(
            abs(p[0] - q[0]) <= TOLERANCE and abs(p[1] - q[1]) <= TOLERANCE
            for p, q in zip(one[1], other[1])
        )
    )


def same_shape(one, other):
    """Whether the shapes consist of equal contours."""
    left = list(other)
    for contour in one:
        match = next((c for c in left if len(c) == len(contour) and same_contour(contour, c)), None)
        if match is None:
            return False
        left.remove(match)
    return not left


def is_bar(shape):
    """Whether the shape is a single upright rectangle."""
    if len(shape) != 1 or [kind for kind, _ in shape[0]] != ["lineTo"] * 4:
        return False
    corners = [points[0] for _, points in shape[0]]
    return len({x for x, _ in corners}) == 2 and len({y for _, y in corners}) == 2


def fonts_below(folder):
    for path, _, files in sorted(os.walk(folder)):
        for name in sorted(files):
            full = os.path.join(path, name)
            lower = name.lower()
            try:
                if lower.endswith((".ttc", ".otc")):
                    with TTCollection(full, lazy=True) as collection:
                        yield from ((full, font) for font in collection.fonts)
                elif lower.endswith((".otf", ".ttf")):
                    with TTFont(full, lazy=True) as font:
                        yield full, font
            except TTLibError:
                print(f"  not a font: {full}", file=sys.stderr)


def drawings(font):
    glyphs = font.getGlyphSet()
    for name in font.getGlyphOrder():
        found = normalised(contours(glyphs, name))
        if found:
            yield name, *found


def compare(face, folder):
    """(outlines compared, number of fonts, outlines found elsewhere, bars found elsewhere)."""
    ours = {}
    with TTFont(face) as font:
        for name, ratio, shape in drawings(font):
            ours.setdefault(signature(shape), []).append((name, ratio, shape))
    count, fonts, found, bars = 0, 0, [], []
    for path, font in fonts_below(folder):
        if font["name"].getDebugName(1) == "MORLA Display":
            continue
        fonts += 1
        for name, ratio, shape in drawings(font):
            count += 1
            for our_name, our_ratio, our_shape in ours.get(signature(shape), []):
                if is_bar(our_shape) and is_bar(shape):
                    if abs(ratio / our_ratio - 1) <= BAR_TOLERANCE:
                        bars.append(f"{our_name} has the proportions of {name} of {path}")
                elif abs(ratio - our_ratio) <= 2 * TOLERANCE and same_shape(our_shape, shape):
                    found.append(f"{our_name} equals {name} of {path}")
    return count, fonts, found, bars


def main():
    face = sys.argv[1] if len(sys.argv) > 1 else FACE
    folder = sys.argv[2] if len(sys.argv) > 2 else "/usr/share/fonts"
    count, fonts, found, bars = compare(face, folder)
    for line in found:
        print(f"  FAIL  {line}")
    for line in bars:
        print(f"  note  {line}")
    print(f"  {len(found)} equal outlines among {count} in {fonts} fonts below {folder}")
    return 2 if count == 0 else 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
