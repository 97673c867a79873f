#!/usr/bin/python3
"""Rebuilds the wordmark's face, compares it with the committed file, and checks that file.

    /usr/bin/python3 Tests/typeface/TypefaceTests.py

Needs fontmake, fontTools and ufoLib2. Writes to a scratch folder only, which it removes.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
TYPEFACE = os.path.join(ROOT, "Typeface")
FACE = os.path.join(ROOT, "Resources", "MORLADisplay-Regular.otf")
LICENSE = os.path.join(ROOT, "Resources", "MORLADisplay-LICENSE.txt")
sys.path.insert(0, TYPEFACE)

import fontmake  # noqa: E402
import fontTools  # noqa: E402
import ufoLib2  # noqa: E402
from fontTools.misc.transform import Transform  # noqa: E402
from fontTools.pens.t2CharStringPen import T2CharStringPen  # noqa: E402
from fontTools.pens.transformPen import TransformPen  # noqa: E402
from fontTools.ttLib import TTFont  # noqa: E402

import build  # noqa: E402
import check  # noqa: E402
import originality  # noqa: E402

# The versions of Debian 12, which wrote the committed file.
REFERENCE = ("2.4.1", "4.38")
INSTALLED = (fontmake.__version__, fontTools.version)


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


def stems(font, name):
    """The stem hints of a glyph: its program up to the first move, without the width."""
    program = charstring(font, name).program
    operators = [i for i, word in enumerate(program) if word in ("hstem", "vstem")]
    if not operators:
        return []
    first = operators[0] % 2  # stems come in pairs of numbers; the width makes them odd
    return program[first : operators[-1] + 1]


def polygon(*corners):
    return list(zip(corners, corners[1:] + corners[:1]))


def box(left, bottom, right, top):
    return polygon((left, bottom), (right, bottom), (right, top), (left, top))


class Rebuild(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.paths = [os.path.join(cls.scratch.name, f"{i}.otf") for i in (0, 1)]
        cls.told = []
        for seed, path in zip(("1", "2"), cls.paths):  # the hash seed must not matter
            told = subprocess.check_output(
                [sys.executable, "-B", os.path.join(TYPEFACE, "build.py"), path],
                env=dict(os.environ, PYTHONHASHSEED=seed),
                text=True,
            )
            cls.told.append(told)
        cls.rebuilt, cls.committed = TTFont(cls.paths[0]), TTFont(FACE)

    @classmethod
    def tearDownClass(cls):
        cls.rebuilt.close()
        cls.committed.close()
        cls.scratch.cleanup()

    def test_builds_are_reproducible(self):
        with open(self.paths[0], "rb") as one, open(self.paths[1], "rb") as other:
            self.assertEqual(one.read(), other.read())

    def test_the_build_prints_nothing(self):
        self.assertEqual(self.told, ["", ""])

    @unittest.skipUnless(
        all(map(str.startswith, INSTALLED, REFERENCE)), f"another fontmake, fontTools: {INSTALLED}"
    )
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
        for key in ("version", "Notice", "Copyright", "FullName", "FamilyName", "Weight"):
            one, other = (getattr(top_dict(f), key, None) for f in (self.rebuilt, self.committed))
            self.assertEqual(one, other, key)

    def test_the_build_has_the_hints_of_the_committed_file(self):
        one, other = (dict(top_dict(f).Private.rawDict) for f in (self.rebuilt, self.committed))
        self.assertEqual(one, other)
        self.assertEqual(one["StdHW"], 93)
        hinted = 0
        for name in self.rebuilt.getGlyphOrder():
            self.assertEqual(stems(self.rebuilt, name), stems(self.committed, name), name)
            hinted += bool(stems(self.rebuilt, name))
        self.assertGreater(hinted, 100)


class Sources(unittest.TestCase):
    """What the build does with stale or invalid sources."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.path = os.path.join(scratch.name, "face.ufo")
        shutil.copytree(build.SOURCE, self.path)
        self.ufo = ufoLib2.Font.open(self.path)

    def build(self):
        self.ufo.save()
        return build.build(self.path)

    def refusal(self):
        with self.assertRaises(SystemExit) as refused:
            self.build()
        return str(refused.exception.code)

    def stems_of(self, name, lines):
        self.ufo[name].lib[build.HINTS]["hintSetList"][0]["stems"] = lines

    def test_hints_of_a_changed_outline_are_left_out_and_reported(self):
        self.ufo["A"].contours[0][0].x -= 1
        self.ufo["B"].width += 1
        font, stale = self.build()
        self.assertEqual([name for name, _ in stale], ["A", "B"])
        self.assertEqual([n for n in "ABC" if stems(font, n)], ["C"])
        self.assertIn(("hints", "A has no horizontal stem hint"), check.findings(font))

    def test_the_reported_id_makes_the_hints_valid_again(self):
        self.ufo["A"].contours[0][0].x -= 1
        (stale,) = self.build()[1]
        self.ufo["A"].lib[build.HINTS]["id"] = stale[1]
        font, stale = self.build()
        self.assertEqual(stale, [])
        self.assertTrue(stems(font, "A"))

    def test_stems_become_a_type_2_program(self):
        self.stems_of("A", ["hstem 21 -21", "hstem 150 93", "vstem 10 20", "vstem 40 50"])
        font, _ = self.build()
        expected = [21, -21, 150, 93, "hstem", 10, 20, 10, 50, "vstem"]
        self.assertEqual(stems(font, "A"), expected)

    def test_overlapping_stems_are_refused(self):
        self.stems_of("A", ["hstem 0 93", "hstem 92 93"])
        self.assertIn("A: hstem 92 93", self.refusal())

    def test_two_sets_of_hints_are_refused(self):
        self.ufo["A"].lib[build.HINTS]["hintSetList"] *= 2
        self.assertIn("A: 2 sets", self.refusal())

    def test_kerning_outside_the_features_is_refused(self):
        self.ufo.kerning[("A", "B")] = -20
        self.assertIn("kerning.plist", self.refusal())


class ProofReading(unittest.TestCase):
    def test_the_committed_file_passes_every_check(self):
        with TTFont(FACE) as font:
            self.assertEqual(check.findings(font), [])

    def test_its_licence_file_holds_the_licence_of_the_project(self):
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

    def test_a_hole_with_the_wrong_direction_is_found(self):
        font = self.broken("o", box(0, 0, 400, 730), box(100, 100, 300, 600))
        self.assertIn("ink is on the left of every contour", self.titles(font))

    def test_overlapping_contours_are_found(self):
        font = self.broken("plus", box(0, 200, 500, 300), box(200, 0, 300, 500))
        self.assertIn("no outline overlaps itself or another", self.titles(font))

    def test_a_self_intersecting_contour_is_found(self):
        font = self.broken("x", polygon((0, 0), (400, 400), (400, 0), (0, 300)))
        self.assertIn("no outline overlaps itself or another", self.titles(font))

    def test_an_edge_that_leans_by_one_unit_is_found(self):
        font = self.broken("H", polygon((0, 0), (400, 1), (400, 730), (0, 730)))
        self.assertIn("extrema, joints and edges are clean", self.titles(font))

    def test_a_letter_without_hints_is_found(self):
        font = self.broken("I", *check.outline(committed(self), "I"))
        self.assertEqual(check.findings(font), [("hints", "I has no horizontal stem hint")])

    def test_a_missing_glyph_is_found(self):
        font = committed(self)
        for table in font["cmap"].tables:
            table.cmap.pop(ord("Q"), None)
        self.assertIn("no glyph is missing", self.titles(font))

    def test_a_figure_of_another_width_is_found(self):
        font = committed(self)
        width, bearing = font["hmtx"]["seven"]
        font["hmtx"]["seven"] = (width - 1, bearing)
        self.assertIn("figures have one width", self.titles(font))

    def test_restricted_embedding_and_a_wrong_name_are_found(self):
        font = committed(self)
        font["OS/2"].fsType = 2
        font["name"].setName("MORLA", 1, 3, 1, 0x409)
        self.assertLessEqual({"metrics", "names and licence"}, self.titles(font))


class Originality(unittest.TestCase):
    def test_no_drawing_equals_one_of_an_installed_font(self):
        count, _, found, _ = originality.compare(FACE, "/usr/share/fonts")
        if count == 0:
            self.skipTest("no fonts are installed")
        self.assertEqual(found, [])

    def test_a_copy_under_another_name_and_size_is_found(self):
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


if __name__ == "__main__":
    unittest.main()
