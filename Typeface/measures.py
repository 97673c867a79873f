"""The measures that all glyphs share, in units of a thousandth of the type size.

At 22 pixels a pixel is 45.45 units and at 19 pixels 52.63. Heights and the level pen are chosen so
that strokes and counters fall on whole rows at both sizes:

            22 pixels                              19 pixels
  capitals  730 = 16.06 rows: 2+5+2+5+2 for an E   13.87 rows: 2+4+2+4+2
  x-height  546 = 12.01 rows: 2+3+2+3+2 for an e   10.37 rows: 2+2+2+2+2
  level pen  93 =  2.05 rows                        1.77 rows
  stem side  91 =  2.00 columns to the first stem   1.73 columns
  figures   579 = 12.74 columns apart              11.00 columns

The hint zones of the font make the rest of the way to the rows.
"""

from outlines import difference
from pen import Pen, box

UNITS_PER_EM = 1000
CAP = 730  # capitals, figures and ascenders: one line along the top of the wordmark
XHEIGHT = 546
DESCENT = -200
OVER = 10  # rounds pass the line by this much to look as tall as flats
FIGURE_ADVANCE = 579

LINE_ASCENT, LINE_DESCENT = 910, -230  # 20 rows above and 5 below at 22 pixels

CAPITAL = Pen(109, 93)
SMALL = Pen(103, 89)
FIGURE = Pen(106, 96)
SIGN = Pen(95, 87)  # mathematical signs, arrows of the keyboard, brackets

FAR = 4000


def kept(shape, left=-FAR, bottom=-FAR, right=FAR, top=FAR):
    """The part of a shape inside a box: how terminals are cut level or upright."""
    cuts = []
    if left > -FAR:
        cuts.append(box(-FAR, -FAR, left, FAR))
    if right < FAR:
        cuts.append(box(right, -FAR, FAR, FAR))
    if bottom > -FAR:
        cuts.append(box(-FAR, -FAR, FAR, bottom))
    if top < FAR:
        cuts.append(box(-FAR, top, FAR, FAR))
    for cut in cuts:
        shape = difference(shape, cut)
    return shape


GLYPHS = {}  # name -> the function that draws it


def glyph(name):
    """Registers a drawing. Its horizontal place does not matter: spacing.py places it."""

    def register(function):
        GLYPHS[name] = function
        return function

    return register
