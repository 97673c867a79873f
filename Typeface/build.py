#!/usr/bin/python3
"""Draws the face and writes the font file.

    build.py [FILE]     the default is Resources/MORLADisplay-Regular.otf beside this folder

Needs fontTools. The same sources give the same bytes with the same fontTools: there is no clock
and no random number in here.
"""

import os
import sys

from fontTools.feaLib.builder import addOpenTypeFeaturesFromString
from fontTools.fontBuilder import FontBuilder
from fontTools.misc.psCharStrings import T2CharString

import capitals  # noqa: F401  the modules register their glyphs
import figures  # noqa: F401
import measures
import signs  # noqa: F401
import small  # noqa: F401
import spacing
from hints import stem_hints
from outlines import contour_bounds, rounded, shifted

HERE = os.path.dirname(os.path.abspath(__file__))
TARGET = os.path.join(HERE, "..", "Resources", "MORLADisplay-Regular.otf")

FAMILY, STYLE, POSTSCRIPT_NAME = "MORLA Display", "Regular", "MORLADisplay-Regular"
VERSION = "1.000"
COPYRIGHT = "Copyright (c) 2026 The Velto authors"
LICENSE = (
    "Licensed under the MIT License: free to use, copy, modify, merge, publish, distribute, "
    "sublicense and sell, provided that the copyright notice and the licence text stay with it. "
    "The text is in MORLADisplay-LICENSE.txt. Embedding is allowed."
)
LICENSE_URL = "https://opensource.org/licenses/MIT"
DAY = 3850934400  # 2026-01-11 00:00 UTC, in seconds since 1904

CODE_POINTS = {
    "space": 0x20, "exclam": 0x21, "quotedbl": 0x22, "numbersign": 0x23, "dollar": 0x24,
    "percent": 0x25, "ampersand": 0x26, "quotesingle": 0x27, "parenleft": 0x28,
    "parenright": 0x29, "asterisk": 0x2A, "plus": 0x2B, "comma": 0x2C, "hyphen": 0x2D,
    "period": 0x2E, "slash": 0x2F, "colon": 0x3A, "semicolon": 0x3B, "less": 0x3C,
    "equal": 0x3D, "greater": 0x3E, "question": 0x3F, "at": 0x40, "bracketleft": 0x5B,
    "backslash": 0x5C, "bracketright": 0x5D, "asciicircum": 0x5E, "underscore": 0x5F,
    "grave": 0x60, "braceleft": 0x7B, "bar": 0x7C, "braceright": 0x7D, "asciitilde": 0x7E,
    "nbspace": 0xA0, "degree": 0xB0, "plusminus": 0xB1, "periodcentered": 0xB7,
    "multiply": 0xD7, "endash": 0x2013, "emdash": 0x2014, "quoteleft": 0x2018,
    "quoteright": 0x2019, "quotedblleft": 0x201C, "quotedblright": 0x201D, "ellipsis": 0x2026,
    "minus": 0x2212,
}  # fmt: skip
for _i, _name in enumerate(
    ("zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine")
):
    CODE_POINTS[_name] = 0x30 + _i
for _letter in "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz":
    CODE_POINTS[_letter] = ord(_letter)

DEFAULT_WIDTH, NOMINAL_WIDTH = measures.FIGURE_ADVANCE, 600


def placed(name):
    """A glyph's outline on whole units, where it stands in its width, and the width."""
    shape = measures.GLYPHS[name]()
    if name in spacing.SPACES:
        return [], spacing.SPACES[name]
    left, _, right, _ = contour_bounds(shape)
    if name in spacing.CENTRED:
        width, shift = spacing.CENTRED[name]
        return rounded(shifted(shape, round((width - (right - left)) / 2 + shift - left))), width
    before, after = spacing.SIDES[name]
    shape = rounded(shifted(shape, round(before - left)))
    return shape, round(before + (right - left) + after)


def charstring(shape, width):
    """The outline with its stem hints as a Type 2 program."""
    program = [] if width == DEFAULT_WIDTH else [width - NOMINAL_WIDTH]
    for axis, operator in ((1, "hstem"), (0, "vstem")):
        at, arguments = 0, []
        for low, high in stem_hints(shape, axis):
            arguments += [low - at, high - low]
            at = high
        if arguments:
            program += arguments + [operator]
    x, y = 0, 0
    for contour in shape:
        start = contour[0][0]
        program += [start[0] - x, start[1] - y, "rmoveto"]
        x, y = start
        body = contour if len(contour[-1]) == 4 else contour[:-1]  # the last line closes itself
        for segment in body:
            for px, py in segment[1:]:
                program += [px - x, py - y]
                x, y = px, py
            program.append("rlineto" if len(segment) == 2 else "rrcurveto")
    return T2CharString(program=program + ["endchar"])


FONT_INFO = {
    "version": VERSION,
    "Notice": COPYRIGHT,
    "FullName": f"{FAMILY} {STYLE}",
    "FamilyName": FAMILY,
    "Weight": STYLE,
    "isFixedPitch": False,
    "ItalicAngle": 0,
    "UnderlinePosition": -92,
    "UnderlineThickness": 84,
}

HINTING = {
    "BlueValues": [
        -measures.OVER, 0,
        measures.XHEIGHT, measures.XHEIGHT + measures.OVER,
        measures.CAP, measures.CAP + measures.OVER,
    ],
    "OtherBlues": [measures.DESCENT - measures.OVER, measures.DESCENT],
    "BlueScale": 0.039625,
    "BlueShift": 7,
    "BlueFuzz": 0,
    "StdHW": measures.CAPITAL.level,
    "StdVW": measures.CAPITAL.upright,
    "StemSnapH": [measures.SMALL.level, measures.FIGURE.level, measures.CAPITAL.level],
    "StemSnapV": [
        measures.SMALL.upright, measures.FIGURE.upright, measures.CAPITAL.upright,
    ],
    "defaultWidthX": DEFAULT_WIDTH,
    "nominalWidthX": NOMINAL_WIDTH,
}  # fmt: skip

NAMES = {
    "copyright": COPYRIGHT,
    "familyName": FAMILY,
    "styleName": STYLE,
    "uniqueFontIdentifier": f"{VERSION};VLTO;{POSTSCRIPT_NAME}",
    "fullName": f"{FAMILY} {STYLE}",
    "version": f"Version {VERSION}",
    "psName": POSTSCRIPT_NAME,
    "manufacturer": "The Velto authors",
    "designer": "The Velto authors",
    "description": "The wordmark face of Velto: capitals, small letters and tabular "
    "figures in the spirit of a mastering console's lettering.",
    "licenseDescription": LICENSE,
    "licenseInfoURL": LICENSE_URL,
    "sampleText": "MORLA Velto",
}

OS2 = dict(
    version=4,
    usWeightClass=400,
    usWidthClass=5,
    fsType=0,
    fsSelection=0x40 | 0x80,  # regular; the typographic line metrics hold
    achVendID="VLTO",
    sTypoAscender=measures.LINE_ASCENT,
    sTypoDescender=measures.LINE_DESCENT,
    sTypoLineGap=0,
    usWinAscent=measures.LINE_ASCENT,
    usWinDescent=-measures.LINE_DESCENT,
    sxHeight=measures.XHEIGHT,
    sCapHeight=measures.CAP,
    usDefaultChar=0,
    usBreakChar=0x20,
    usMaxContext=2,
    ySubscriptXSize=620, ySubscriptYSize=620, ySubscriptXOffset=0, ySubscriptYOffset=120,
    ySuperscriptXSize=620, ySuperscriptYSize=620,
    ySuperscriptXOffset=0, ySuperscriptYOffset=420,
    yStrikeoutSize=84, yStrikeoutPosition=320,
    ulCodePageRange1=1,
)  # fmt: skip


def build():
    """The font as a fontTools TTFont."""
    order = [".notdef"] + sorted(
        (name for name in measures.GLYPHS if name != ".notdef"), key=CODE_POINTS.__getitem__
    )
    glyphs = {name: placed(name) for name in order}
    builder = FontBuilder(measures.UNITS_PER_EM, isTTF=False)
    builder.setupHead(
        unitsPerEm=measures.UNITS_PER_EM, created=DAY, modified=DAY, fontRevision=float(VERSION)
    )
    builder.setupGlyphOrder(order)
    builder.setupCharacterMap({code: name for name, code in CODE_POINTS.items()})
    builder.setupCFF(
        POSTSCRIPT_NAME,
        FONT_INFO,
        {name: charstring(shape, width) for name, (shape, width) in glyphs.items()},
        HINTING,
    )
    builder.setupHorizontalMetrics(
        {
            name: (width, contour_bounds(shape)[0] if shape else 0)
            for name, (shape, width) in glyphs.items()
        }
    )
    builder.setupHorizontalHeader(
        ascent=measures.LINE_ASCENT, descent=measures.LINE_DESCENT, lineGap=0
    )
    builder.setupNameTable(NAMES, mac=False)
    builder.setupOS2(**OS2)
    builder.setupPost(keepGlyphNames=False, underlinePosition=-92, underlineThickness=84)
    font = builder.font
    font.recalcTimestamp = False
    font["OS/2"].recalcAvgCharWidth(font)
    font["OS/2"].recalcUnicodeRanges(font)
    if spacing.KERNING:
        addOpenTypeFeaturesFromString(font, spacing.KERNING)
    return font


def main():
    target = sys.argv[1] if len(sys.argv) > 1 else TARGET
    build().save(target)
    return 0


if __name__ == "__main__":
    sys.exit(main())
