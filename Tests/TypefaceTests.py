#!/usr/bin/python3
"""Tests of the wordmark face: it is rebuilt, compared with the committed file, and checked.

    /usr/bin/python3 Tests/TypefaceTests.py

Needs fontTools. Writes to a scratch folder only, which it removes.
"""

import os
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
TYPEFACE = os.path.join(ROOT, "Typeface")
FACE = os.path.join(ROOT, "Resources", "MORLADisplay-Regular.otf")
LICENSE = os.path.join(ROOT, "Resources", "MORLADisplay-LICENSE.txt")
sys.path.insert(0, TYPEFACE)

import fontTools  # noqa: E402
from fontTools.misc.transform import Transform  # noqa: E402
from fontTools.pens.t2CharStringPen import T2CharStringPen  # noqa: E402
from fontTools.pens.transformPen import TransformPen  # noqa: E402
from fontTools.ttLib import TTFont  # noqa: E402

import check  # noqa: E402
import originality  # noqa: E402
import pen  # noqa: E402
from hints import stem_hints  # noqa: E402
from outlines import area, contour_bounds, difference, rounded, union  # noqa: E402

REFERENCE = "4.38"  # the fontTools of Debian 12, with which the committed file was written


def committed(test):
    font = TTFont(FACE)
    test.addCleanup(font.close)
    return font


def names(font):
    return {(r.platformID, r.nameID): r.toUnicode() for r in font["name"].names}


def top_dict(font):
    return font["CFF "].cff.topDictIndex[0]


def charstring(font, name):
    result = top_dict(font).CharStrings[name]
    result.decompile()
    return result


def polygon(*corners):
    return list(zip(corners, corners[1:] + corners[:1]))


def box(left, bottom, right, top):
    return polygon((left, bottom), (right, bottom), (right, top), (left, top))


class Rebuild(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.paths = [os.path.join(cls.scratch.name, f"{i}.otf") for i in (0, 1)]
        for seed, path in zip(("1", "2"), cls.paths):  # two orders of hashing, one result
            subprocess.check_call(
                [sys.executable, "-B", os.path.join(TYPEFACE, "build.py"), path],
                env=dict(os.environ, PYTHONHASHSEED=seed),
            )
        cls.rebuilt, cls.committed = TTFont(cls.paths[0]), TTFont(FACE)

    @classmethod
    def tearDownClass(cls):
        cls.rebuilt.close()
        cls.committed.close()
        cls.scratch.cleanup()

    def test_every_build_gives_the_same_bytes(self):
        with open(self.paths[0], "rb") as one, open(self.paths[1], "rb") as other:
            self.assertEqual(one.read(), other.read())

    @unittest.skipUnless(fontTools.version.startswith(REFERENCE), "another fontTools")
    def test_the_build_has_the_bytes_of_the_committed_file(self):
        with open(self.paths[0], "rb") as one, open(FACE, "rb") as other:
            self.assertTrue(one.read() == other.read(), "rebuild and commit the face")

    def test_the_build_has_the_outlines_of_the_committed_file(self):
        self.assertEqual(self.rebuilt.getGlyphOrder(), self.committed.getGlyphOrder())
        for name in self.rebuilt.getGlyphOrder():
            self.assertEqual(
                check.outline(self.rebuilt, name), check.outline(self.committed, name), name
            )

    def test_the_build_has_the_metrics_of_the_committed_file(self):
        self.assertEqual(self.rebuilt["hmtx"].metrics, self.committed["hmtx"].metrics)
        self.assertEqual(self.rebuilt.getBestCmap(), self.committed.getBestCmap())
        self.assertEqual(check.kerning(self.rebuilt), check.kerning(self.committed))
        self.assertGreater(len(check.kerning(self.rebuilt)), 100)
        for table in ("hhea", "OS/2", "head", "post"):
            one, other = vars(self.rebuilt[table]), vars(self.committed[table])
            for key in one:
                if isinstance(one[key], (int, float)) and key != "checkSumAdjustment":
                    self.assertEqual(one[key], other[key], f"{table}.{key}")

    def test_the_build_has_the_names_of_the_committed_file(self):
        self.assertEqual(names(self.rebuilt), names(self.committed))


class ProofReading(unittest.TestCase):
    def test_the_committed_file_passes_every_check(self):
        with TTFont(FACE) as font:
            self.assertEqual(check.findings(font), [])

    def test_its_licence_lies_beside_it(self):
        with open(LICENSE) as file, open(os.path.join(ROOT, "LICENSE")) as license_file:
            self.assertIn(license_file.read(), file.read())

    def broken(self, name, *contours):
        """The committed face with one glyph redrawn, without hints."""
        font = committed(self)
        old, pen = charstring(font, name), T2CharStringPen(None, None)
        for contour in contours:
            pen.moveTo(contour[0][0])
            for _, corner in contour[:-1]:
                pen.lineTo(corner)
            pen.closePath()
        top_dict(font).CharStrings[name] = pen.getCharString(old.private, old.globalSubrs)
        return font

    def titles(self, font):
        return {title for title, _ in check.findings(font)}

    def test_a_hole_that_runs_the_wrong_way_is_found(self):
        font = self.broken("o", box(0, 0, 400, 730), box(100, 100, 300, 600))
        self.assertIn("ink is on the left of every contour", self.titles(font))

    def test_contours_that_overlap_are_found(self):
        font = self.broken("plus", box(0, 200, 500, 300), box(200, 0, 300, 500))
        self.assertIn("no outline overlaps itself or another", self.titles(font))

    def test_a_contour_that_crosses_itself_is_found(self):
        font = self.broken("x", polygon((0, 0), (400, 400), (400, 0), (0, 300)))
        self.assertIn("no outline overlaps itself or another", self.titles(font))

    def test_an_edge_that_leans_is_found(self):
        font = self.broken("H", polygon((0, 0), (400, 1), (400, 730), (0, 730)))
        self.assertIn("extrema, joints and edges are clean", self.titles(font))

    def test_a_letter_without_hints_is_found(self):
        font = self.broken("I", *check.outline(committed(self), "I"))
        self.assertEqual(check.findings(font), [("hints", "I has no level hint")])

    def test_a_missing_glyph_is_found(self):
        font = committed(self)
        for table in font["cmap"].tables:
            table.cmap.pop(ord("Q"), None)
        self.assertIn("no glyph is missing", self.titles(font))

    def test_a_figure_of_another_width_is_found(self):
        font = committed(self)
        width, bearing = font["hmtx"]["seven"]
        font["hmtx"]["seven"] = (width - 1, bearing)
        self.assertIn("figures do not dance", self.titles(font))

    def test_restricted_embedding_and_a_wrong_name_are_found(self):
        font = committed(self)
        font["OS/2"].fsType = 2
        font["name"].setName("MORLA", 1, 3, 1, 0x409)
        self.assertLessEqual({"metrics", "names and licence"}, self.titles(font))


class Originality(unittest.TestCase):
    def test_no_drawing_is_one_of_an_installed_font(self):
        count, _, found, _ = originality.compare(FACE, "/usr/share/fonts")
        if count == 0:
            self.skipTest("no fonts are installed")
        self.assertEqual(found, [])

    def test_a_copy_under_another_name_and_size_would_be_found(self):
        with tempfile.TemporaryDirectory() as folder:
            font = committed(self)
            font["name"].setName("Another", 1, 3, 1, 0x409)
            names_of, glyphs = font.getGlyphOrder(), committed(self).getGlyphSet()
            for name in names_of:
                old, pen = charstring(font, name), T2CharStringPen(None, None)
                glyphs[name].draw(TransformPen(pen, Transform(2, 0, 0, 2, 31, 0)))
                copy = pen.getCharString(old.private, old.globalSubrs)
                top_dict(font).CharStrings[name] = copy
            font.save(os.path.join(folder, "copy.otf"))
            _, fonts, found, bars = originality.compare(FACE, folder)
        self.assertEqual(fonts, 1)
        copied = {line.split()[0] for line in found + bars}
        drawn = set(names_of) - {"space", "nbspace"}
        self.assertEqual(copied, drawn)


class Drawing(unittest.TestCase):
    def test_overlapping_shapes_become_one_contour(self):
        shape = rounded(union(pen.box(0, 0, 100, 20), pen.box(40, -50, 60, 50)))
        self.assertEqual(len(shape), 1)
        self.assertEqual(area(shape[0]), 100 * 20 + 20 * 80)

    def test_a_bite_is_taken_out(self):
        shape = rounded(difference(pen.box(0, 0, 100, 100), pen.box(25, 25, 75, 75)))
        self.assertEqual(sorted(area(c) for c in shape), [-2500, 10000])

    def test_a_union_covers_what_its_parts_cover(self):
        one, other = pen.disc(0, 0, 200, 200), pen.disc(150, 40, 180, 120)
        shapes = (union(one, other), other, difference(one, other), one)
        both, right, rest, left = (sum(area(c) for c in shape) for shape in shapes)
        self.assertAlmostEqual(both, right + rest, delta=10)
        self.assertLess(rest, left - 10000)

    def test_the_pen_is_as_wide_as_it_is_said_to_be(self):
        nib = pen.Pen(100, 80)
        ring = pen.oval(0, 0, 300, 200).ring(nib)
        (left, bottom, right, top), hole = contour_bounds([ring[0]]), contour_bounds([ring[1]])
        for value, expected in zip((left, bottom, right, top), (-350, -240, 350, 240)):
            self.assertAlmostEqual(value, expected, delta=0.01)
        for value, expected in zip(hole, (-250, -160, 250, 160)):
            self.assertAlmostEqual(value, expected, delta=0.01)
        self.assertAlmostEqual(nib.thickness(0, 1), 100)
        self.assertAlmostEqual(nib.thickness(1, 0), 80)

    def test_a_stroke_runs_counter_clockwise_both_ways(self):
        for path in (pen.Path(0, 0).line(0, 500), pen.Path(0, 500).line(0, 0)):
            self.assertAlmostEqual(area(path.stroke(pen.Pen(90, 80))[0]), 500 * 90)

    def test_hints_name_the_bars_of_an_e_and_the_ends_of_a_stem(self):
        e = union(pen.box(0, 0, 90, 730), *(pen.box(20, y, 400, y + 90) for y in (0, 320, 640)))
        self.assertEqual(stem_hints(rounded(e), 1), [(0, 90), (320, 410), (640, 730)])
        self.assertEqual(stem_hints(rounded(e), 0), [(0, 90)])
        self.assertEqual(stem_hints(pen.box(0, 0, 90, 730), 1), [(21, 0), (730, 710)])


if __name__ == "__main__":
    unittest.main()
