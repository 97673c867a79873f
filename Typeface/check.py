#!/usr/bin/python3
"""Checks the built font file.

    check.py [FILE]     the default is Resources/MORLADisplay-Regular.otf beside this folder

Reads only this file. Prints one line per check, with its findings below it; exits with 1 if a check
fails.
"""

import math
import os
import sys

from fontTools.pens.recordingPen import RecordingPen
from fontTools.ttLib import TTFont

from outlines import (
    area,
    contour_bounds,
    crossings,
    extrema,
    flattened,
    point_at,
    tangent_at,
    winding,
)

HERE = os.path.dirname(os.path.abspath(__file__))
FACE = os.path.join(HERE, "..", "Resources", "MORLADisplay-Regular.otf")

REQUIRED = [chr(c) for c in range(0x20, 0x7F)] + list("\u00a0—·–…°±×−“”‘’")
FIGURES = "0123456789"
CAP, XHEIGHT = 730, 546


def outline(font, name):
    """The contours of a glyph as lists of segments."""
    pen = RecordingPen()
    font.getGlyphSet()[name].draw(pen)
    contours, at, start = [], None, None
    for operator, points in pen.value:
        if operator == "moveTo":
            contours.append([])
            at = start = points[0]
        elif operator == "closePath":
            if at != start:
                contours[-1].append((at, start))
        else:
            contours[-1].append((at, *points))
            at = points[-1]
    return contours


# Each check yields its findings as text.


def missing_glyphs(font):
    cmap = font.getBestCmap()
    for character in REQUIRED:
        if ord(character) not in cmap:
            yield f"U+{ord(character):04X} has no glyph"
        elif not outline(font, cmap[ord(character)]) and character not in " \u00a0":
            yield f"U+{ord(character):04X} is empty"
    if font.getGlyphOrder()[0] != ".notdef" or not outline(font, ".notdef"):
        yield "there is no visible .notdef"
    unreachable = set(font.getGlyphOrder()) - set(cmap.values()) - {".notdef"}
    for name in sorted(unreachable):
        yield f"{name} is in no character map"


def contours_of(font):
    for name in font.getGlyphOrder():
        yield name, outline(font, name)


def wrong_windings(font):
    """Ink is on the left of every contour: outer ones counter-clockwise, holes clockwise."""
    for name, contours in contours_of(font):
        polygons = [flattened(c) for c in contours]
        for i, contour in enumerate(contours):
            others = polygons[:i] + polygons[i + 1 :]
            x, y = point_at(contour[0], 0.5)
            depth = sum(abs(winding([p], x, y)) for p in others)
            if (area(contour) > 0) != (depth % 2 == 0):
                yield f"{name}: contour {i} has the wrong direction"
            if abs(area(contour)) < 100:
                yield f"{name}: contour {i} is tiny"


def overlaps(font):
    """Segments neither cross nor touch, except neighbours at their joint."""
    for name, contours in contours_of(font):
        segments = []
        for i, contour in enumerate(contours):
            segments += [(i, k, len(contour), s) for k, s in enumerate(contour)]
        for a, (ci, k, count, one) in enumerate(segments):
            for cj, m, _, other in segments[a + 1 :]:
                met = crossings(one, other)
                if ci == cj and m == k + 1:
                    met = [(t, u) for t, u in met if t < 0.98 or u > 0.02]
                if ci == cj and k == 0 and m == count - 1:
                    met = [(t, u) for t, u in met if t > 0.02 or u < 0.98]
                if met:
                    yield f"{name}: contours {ci} and {cj} meet at {point_at(one, met[0][0])}"


def rough_curves(font):
    """Extrema have points, joints are smooth or clear corners, no edge is tilted by one unit."""
    for name, contours in contours_of(font):
        for contour in contours:
            for before, segment in zip(contour[-1:] + contour[:-1], contour):
                for t in extrema(segment):
                    x, y = point_at(segment, t)
                    ends = (segment[0], segment[-1])
                    beyond = contour_bounds([[segment]])
                    flat = contour_bounds([[ends]])
                    if max(abs(p - q) for p, q in zip(beyond, flat)) > 3:
                        yield f"{name}: an extremum without a point near ({x:.0f}, {y:.0f})"
                        break
                if len(segment) == 2:
                    (x0, y0), (x1, y1) = segment
                    dx, dy = abs(x1 - x0), abs(y1 - y0)
                    if 0 < min(dx, dy) <= 1 and max(dx, dy) > 20:
                        yield f"{name}: an edge is tilted by one unit at {segment[0]}"
                    if max(dx, dy) < 4:
                        yield f"{name}: a tiny edge at {segment[0]}"
                if len(before) == 4 or len(segment) == 4:
                    (ax, ay), (bx, by) = tangent_at(before, 1), tangent_at(segment, 0)
                    angle = abs(math.degrees(math.atan2(ax * by - ay * bx, ax * bx + ay * by)))
                    if 1.5 < angle < 12:
                        yield f"{name}: a kink of {angle:.1f} degrees at {segment[0]}"


def wrong_heights(font):
    """Flat glyphs reach exactly to their lines; round ones overshoot them by ten units."""
    glyphs = {n: outline(font, n) for n in font.getGlyphOrder()}
    cmap = font.getBestCmap()

    def expect(characters, bottom, top):
        for character in characters:
            _, low, _, high = contour_bounds(glyphs[cmap[ord(character)]])
            if (bottom is not None and low != bottom) or (top is not None and high != top):
                yield f"{character}: reaches from {low:.0f} to {high:.0f}"

    yield from expect("AEFHIKLMNTVWXYZBDPR", 0, CAP)
    yield from expect("COGS", -10, CAP + 10)
    yield from expect("0368" + "9", -10, CAP + 10)
    yield from expect("147", 0, CAP)
    yield from expect("2", 0, CAP + 10)
    yield from expect("5", -10, CAP)
    yield from expect("vwxzr", 0, XHEIGHT)
    yield from expect("acoes", -10, XHEIGHT + 10)
    yield from expect("nm", 0, XHEIGHT + 10)
    yield from expect("hkl", 0, CAP)
    yield from expect("bd", -10, CAP)
    yield from expect("pq", -200, XHEIGHT + 10)


def wrong_metrics(font):
    hhea, os2, head = font["hhea"], font["OS/2"], font["head"]
    if head.unitsPerEm != 1000:
        yield f"{head.unitsPerEm} units per em"
    heights = {
        (hhea.ascent, hhea.descent),
        (os2.sTypoAscender, os2.sTypoDescender),
        (os2.usWinAscent, -os2.usWinDescent),
    }
    if len(heights) != 1 or hhea.lineGap or os2.sTypoLineGap:
        yield f"the three line heights differ: {sorted(heights)}"
    if not os2.fsSelection & 0x80 or not os2.fsSelection & 0x40:
        yield "fsSelection lacks the bits for regular and typographic metrics"
    if head.yMax > hhea.ascent or head.yMin < hhea.descent:
        yield f"glyphs reach from {head.yMin} to {head.yMax}, beyond the line height"
    if os2.fsType != 0:
        yield f"embedding is restricted: fsType {os2.fsType}"
    if (os2.sxHeight, os2.sCapHeight) != (XHEIGHT, CAP):
        yield f"x-height {os2.sxHeight}, cap height {os2.sCapHeight}"
    for name in font.getGlyphOrder():
        width, bearing = font["hmtx"][name]
        contours = outline(font, name)
        if width <= 0:
            yield f"{name}: no width"
        if contours and bearing != contour_bounds(contours)[0]:
            yield f"{name}: left side bearing {bearing}"


def uneven_figures(font):
    """Figures and mathematical signs have the same width; figures are never kerned."""
    cmap = font.getBestCmap()
    widths = {c: font["hmtx"][cmap[ord(c)]][0] for c in FIGURES + "+−±×=<>"}
    if len(set(widths.values())) != 1:
        yield f"widths {widths}"
    figures = {cmap[ord(c)] for c in FIGURES}
    for first, second in kerning(font):
        if first in figures or second in figures:
            yield f"the pair {first} {second} is kerned"


def uneven_sides(font):
    """Symmetric letters are centred in their width; similar left sides have equal bearings."""
    cmap = font.getBestCmap()

    def sides(character):
        name = cmap[ord(character)]
        left, _, right, _ = contour_bounds(outline(font, name))
        return left, font["hmtx"][name][0] - right

    for character in "AHIMNOTUVWXYovwx08":
        before, after = sides(character)
        if abs(before - after) > 1:
            yield f"{character}: {before:.0f} on the left, {after:.0f} on the right"
    for group in ("BDEFHIKLMNPR", "CGOQ", "bhklmnpr", "cdegoq"):
        befores = {sides(c)[0] for c in group}
        if max(befores) - min(befores) > 1:
            yield f"{group}: left sides {sorted(befores)}"


def kerning(font):
    """All kerned pairs of the font, as {(first, second): units}."""
    pairs = {}
    for lookup in font["GPOS"].table.LookupList.Lookup if "GPOS" in font else []:
        fresh = {}
        for table in lookup.SubTable:
            table = getattr(table, "ExtSubTable", table)
            for index, first in enumerate(table.Coverage.glyphs):
                if table.Format == 1:
                    for record in table.PairSet[index].PairValueRecord:
                        key = (first, record.SecondGlyph)
                        fresh.setdefault(key, getattr(record.Value1, "XAdvance", 0))
                else:
                    row = table.Class1Record[table.ClassDef1.classDefs.get(first, 0)]
                    for second in font.getGlyphOrder():
                        cell = row.Class2Record[table.ClassDef2.classDefs.get(second, 0)]
                        value = getattr(cell.Value1, "XAdvance", 0) if cell.Value1 else 0
                        fresh.setdefault((first, second), value)
        for key, value in fresh.items():
            pairs.setdefault(key, value)
    return {key: value for key, value in pairs.items() if value}


def wrong_kerning(font):
    pairs = kerning(font)
    for pair in ("AV", "VA", "LT", "LV", "LY", "TA", "To", "Ve", "AT", "OA", "PA", "RV", "Yo"):
        if pairs.get(tuple(pair), 0) >= 0:
            yield f"{pair} is not kerned closer together"
    for pair in ("MO", "LA", "Ve"):
        if tuple(pair) not in pairs:
            yield f"the wordmark's pair {pair} is not kerned"


def stems_off_the_grid(font):
    """At 22 pixels every stem of the wordmark begins on a whole column, within a tenth."""
    cmap, pairs = font.getBestCmap(), kerning(font)
    text, x = [cmap[ord(c)] for c in "MORLA Velto"], 0
    stems = {"M": 0, "R": 0, "L": 0, "l": 0, "t": 82}  # from the outline's left edge to the stem
    for name, following in zip(text, text[1:] + [None]):
        if name in stems:
            column = (x + font["hmtx"][name][1] + stems[name]) * 22 / 1000
            if abs(column - round(column)) > 0.1:
                yield f"{name} begins at column {column:.2f}"
        x += font["hmtx"][name][0] + pairs.get((name, following), 0)


def wrong_names(font):
    def name(number):
        return font["name"].getDebugName(number) or ""

    expected = {
        1: "MORLA Display",
        2: "Regular",
        4: "MORLA Display Regular",
        6: "MORLADisplay-Regular",
    }
    for number, text in expected.items():
        if name(number) != text:
            yield f"name {number} is {name(number)!r}"
    if not name(0).startswith("Copyright"):
        yield "no copyright"
    if "MIT License" not in name(13):
        yield "no licence"
    cff = font["CFF "].cff
    if cff.fontNames != ["MORLADisplay-Regular"]:
        yield f"CFF names {cff.fontNames}"
    if font.sfntVersion != "OTTO":
        yield "the outlines are not CFF"


def missing_hints(font):
    private = font["CFF "].cff.topDictIndex[0].Private
    if private.BlueValues != [-10, 0, XHEIGHT, XHEIGHT + 10, CAP, CAP + 10]:
        yield f"BlueValues {private.BlueValues}"
    charstrings = font["CFF "].cff.topDictIndex[0].CharStrings
    cmap = font.getBestCmap()
    for character in "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789":
        program = charstrings[cmap[ord(character)]]
        program.decompile()
        if "hstem" not in program.program and "hstemhm" not in program.program:
            yield f"{character} has no horizontal stem hint"


CHECKS = [
    ("no glyph is missing", missing_glyphs),
    ("ink is on the left of every contour", wrong_windings),
    ("no outline overlaps itself or another", overlaps),
    ("extrema, joints and edges are clean", rough_curves),
    ("glyphs reach exactly to their lines", wrong_heights),
    ("metrics", wrong_metrics),
    ("sides are even", uneven_sides),
    ("figures have one width", uneven_figures),
    ("kerning", wrong_kerning),
    ("the wordmark's stems at 22 pixels", stems_off_the_grid),
    ("names and licence", wrong_names),
    ("hints", missing_hints),
]


def findings(font):
    """All problems as (check, text). If a glyph is missing, the other checks are skipped."""
    found = []
    for title, check in CHECKS:
        found += [(title, text) for text in check(font)]
        if found and check is missing_glyphs:
            break
    return found


def main():
    font = TTFont(sys.argv[1] if len(sys.argv) > 1 else FACE)
    wrong = findings(font)
    failed = {title for title, _ in wrong}
    for title, _ in CHECKS:
        print(f"  {'FAIL' if title in failed else 'PASS'}  {title}")
        for text in (text for t, text in wrong if t == title):
            print(f"        {text}")
        if title in failed and title == CHECKS[0][0]:
            break
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
