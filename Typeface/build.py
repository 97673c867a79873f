#!/usr/bin/python3
"""Builds the font file from the UFO beside this program.

    build.py [FILE]     the default is Resources/MORLADisplay-Regular.otf beside this folder

fontmake compiles the UFO. This program then writes the glyphs' stem hints into the charstrings and
corrects some fields of the CFF table. The same sources give the same bytes with the same versions
of fontmake and fontTools.

Needs fontmake, fontTools and ufoLib2.
"""

import hashlib
import os
import subprocess
import sys
import tempfile

import ufoLib2
from fontTools.ttLib import TTFont

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.join(HERE, "MORLADisplay-Regular.ufo")
TARGET = os.path.join(HERE, "..", "Resources", "MORLADisplay-Regular.otf")

HINTS = "public.postscript.hints"
PRIVATE = "com.morla.Velto.privateDict"  # for entries that fontinfo.plist has no field for


def outline_id(glyph):
    """The id by which hints refer to their outline: its width and points, in UFO's notation."""
    text = f"w{glyph.width:g}"
    for contour in glyph:
        if len(contour) > 1:
            text += "".join(f"{(p.type or ' ')[0]}{p.x:g},{p.y:g}" for p in contour)
    return text if len(text) < 128 else hashlib.sha512(text.encode()).hexdigest()


def stem_program(glyph):
    """Converts the stem hints of a glyph, lines such as "hstem 288 93", to a Type 2 program."""
    sets = glyph.lib[HINTS]["hintSetList"]
    if len(sets) != 1:
        sys.exit(f"{glyph.name}: {len(sets)} sets of hints; each glyph must have exactly one")
    stems = [stem.split() for stem in sets[0]["stems"]]
    program = []
    for operator in ("hstem", "vstem"):
        arguments, edge, ink = [], 0, -sys.maxsize
        for place, width in ((int(p), int(w)) for name, p, w in stems if name == operator):
            if min(place, place + width) < ink:
                sys.exit(f"{glyph.name}: {operator} {place} {width} overlaps the stem before it")
            arguments += [place - edge, width]
            edge, ink = place + width, max(place, place + width)
        if arguments:
            program += arguments + [operator]
    return program


def build(source=SOURCE):
    """The font as a fontTools TTFont, and (name, id) of each glyph whose hints are stale."""
    ufo, stale = ufoLib2.Font.open(source), []
    if ufo.kerning:
        sys.exit("kerning.plist is not supported: put the kerning into features.fea")
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "face.otf")
        subprocess.check_call(
            [sys.executable, "-m", "fontmake", "-u", source, "-o", "otf", "--output-path", path]
            + ["--keep-overlaps", "--optimize-cff", "0", "--verbose", "WARNING"]
        )
        font = TTFont(path, lazy=False, recalcTimestamp=False)
    font["head"].modified = font["head"].created

    top = font["CFF "].cff.topDictIndex[0]
    top.version = f"{ufo.info.versionMajor}.{ufo.info.versionMinor:03}"
    top.Notice = ufo.info.copyright
    del top.rawDict["Copyright"]
    for key, value in ufo.lib.get(PRIVATE, {}).items():
        setattr(top.Private, key, value)

    for glyph in ufo:
        if HINTS not in glyph.lib:
            continue
        if glyph.lib[HINTS]["id"] != outline_id(glyph):
            stale.append((glyph.name, outline_id(glyph)))
            continue
        charstring = top.CharStrings[glyph.name]
        charstring.decompile()
        program = charstring.program
        move = program.index("rmoveto") - 2  # after the width, if there is one
        charstring.program = program[:move] + stem_program(glyph) + program[move:]
    return font, stale


def main():
    font, stale = build()
    font.save(sys.argv[1] if len(sys.argv) > 1 else TARGET)
    for name, identity in stale:
        print(f"{name}: hints omitted, because the outline has changed; its new id is {identity}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
