"""Where each glyph stands in its width, and the pairs that are moved together or apart.

Sides are the white on the left and on the right of the drawing. Like shapes have like sides:
straight stems most, rounds about two thirds of that, slants next to none.
"""

from measures import FIGURE_ADVANCE

# Capitals
STEM, ROUND, SLANT, OPEN = 91, 62, 14, 40
# Small letters
STEM_SMALL, ROUND_SMALL, SLANT_SMALL, OPEN_SMALL = 80, 54, 16, 34

SIDES = {
    "A": (SLANT, SLANT),
    "B": (STEM, 50),
    "C": (ROUND, OPEN),
    "D": (STEM, ROUND),
    "E": (STEM, OPEN),
    "F": (STEM, 26),
    "G": (ROUND, 76),
    "H": (STEM, STEM),
    "I": (STEM, STEM),
    "J": (34, 84),
    "K": (STEM, 12),
    "L": (STEM, 30),
    "M": (STEM, STEM),
    "N": (STEM, STEM),
    "O": (ROUND, ROUND),
    "P": (STEM, 36),
    "Q": (ROUND, ROUND),
    "R": (STEM, 45),
    "S": (46, 46),
    "T": (26, 26),
    "U": (84, 84),
    "V": (SLANT, SLANT),
    "W": (16, 16),
    "X": (16, 16),
    "Y": (10, 10),
    "Z": (38, 38),
    "a": (46, 74),
    "b": (STEM_SMALL, ROUND_SMALL),
    "c": (ROUND_SMALL, OPEN_SMALL),
    "d": (ROUND_SMALL, STEM_SMALL),
    "e": (ROUND_SMALL, 48),
    "f": (24, 8),
    "g": (ROUND_SMALL, STEM_SMALL),
    "h": (STEM_SMALL, 74),
    "i": (STEM_SMALL - 10, STEM_SMALL - 10),
    "j": (-40, STEM_SMALL - 10),
    "k": (STEM_SMALL, 14),
    "l": (STEM_SMALL, 33),
    "m": (STEM_SMALL, 74),
    "n": (STEM_SMALL, 74),
    "o": (ROUND_SMALL, ROUND_SMALL),
    "p": (STEM_SMALL, ROUND_SMALL),
    "q": (ROUND_SMALL, STEM_SMALL),
    "r": (STEM_SMALL, 12),
    "s": (40, 40),
    "t": (20, 30),
    "u": (74, STEM_SMALL),
    "v": (SLANT_SMALL, SLANT_SMALL),
    "w": (18, 18),
    "x": (18, 18),
    "y": (SLANT_SMALL, SLANT_SMALL),
    "z": (36, 36),
    "period": (58, 58),
    "comma": (58, 58),
    "colon": (64, 64),
    "semicolon": (64, 64),
    "ellipsis": (66, 66),
    "periodcentered": (66, 66),
    "exclam": (76, 76),
    "question": (40, 44),
    "quotesingle": (64, 64),
    "quotedbl": (64, 64),
    "quoteleft": (50, 50),
    "quoteright": (50, 50),
    "quotedblleft": (50, 50),
    "quotedblright": (50, 50),
    "grave": (60, 60),
    "hyphen": (56, 56),
    "endash": (50, 50),
    "emdash": (50, 50),
    "underscore": (0, 0),
    "bar": (110, 110),
    "slash": (20, 20),
    "backslash": (20, 20),
    "parenleft": (70, 40),
    "parenright": (40, 70),
    "bracketleft": (88, 40),
    "bracketright": (40, 88),
    "braceleft": (40, 50),
    "braceright": (50, 40),
    "degree": (50, 50),
    "numbersign": (40, 40),
    "dollar": (46, 46),
    "percent": (46, 46),
    "ampersand": (46, 24),
    "asterisk": (44, 44),
    "at": (60, 60),
    ".notdef": (60, 60),
}

# Glyphs that stand in a given width. The number shifts the drawing to the right of its centre.
CENTRED = {
    "zero": (FIGURE_ADVANCE, 0),
    "one": (FIGURE_ADVANCE, -7),
    "two": (FIGURE_ADVANCE, 0),
    "three": (FIGURE_ADVANCE, 0),
    "four": (FIGURE_ADVANCE, 0),
    "five": (FIGURE_ADVANCE, 0),
    "six": (FIGURE_ADVANCE, 0),
    "seven": (FIGURE_ADVANCE, 0),
    "eight": (FIGURE_ADVANCE, 0),
    "nine": (FIGURE_ADVANCE, 0),
    "plus": (FIGURE_ADVANCE, 0),
    "minus": (FIGURE_ADVANCE, 0),
    "plusminus": (FIGURE_ADVANCE, 0),
    "multiply": (FIGURE_ADVANCE, 0),
    "equal": (FIGURE_ADVANCE, 0),
    "less": (FIGURE_ADVANCE, 0),
    "greater": (FIGURE_ADVANCE, 0),
    "asciitilde": (FIGURE_ADVANCE, 0),
    "asciicircum": (FIGURE_ADVANCE, 0),
}

SPACES = {"space": 260, "nbspace": 260}

# Kerning, in OpenType feature syntax. The figures take part in no pair: they must not dance.
KERNING = """
languagesystem DFLT dflt;
languagesystem latn dflt;

@A = [A];
@ROUND = [C G O Q];
@ROUND_RIGHT = [D O Q];
@V = [V];
@Y = [Y];
@BOWL = [c d e g o q];
@SMALL_STEM = [m n p r u];
@LOW = [comma period ellipsis];
@DASH = [hyphen endash emdash periodcentered];
@QUOTE_RIGHT = [quoteright quotedblright quotesingle quotedbl];
@QUOTE_LEFT = [quoteleft quotedblleft quotesingle quotedbl];
@SMALL_ROUND_RIGHT = [b o p e];
@SMALL_V = [v w y];

feature kern {
    pos M O -17;
    pos L A 8;
    pos A space -22;
    pos space A -22;
    pos T space -8;
    pos V space -22;
    pos Y space -12;
    pos space T -8;
    pos space V -22;
    pos space Y -12;
    pos space W -12;

    pos @A @ROUND -18;
    pos @A T -62;
    pos @A U -10;
    pos @A V -66;
    pos @A W -46;
    pos @A Y -76;
    pos @A @BOWL -10;
    pos @A @SMALL_V -30;
    pos @A t -14;
    pos @A @QUOTE_RIGHT -62;
    pos @A @QUOTE_LEFT -54;

    pos L @ROUND -24;
    pos L T -76;
    pos L V -72;
    pos L W -52;
    pos L Y -86;
    pos L U -12;
    pos L @SMALL_V -40;
    pos L @QUOTE_RIGHT -90;
    pos L @QUOTE_LEFT -80;
    pos L @DASH -50;

    pos @ROUND_RIGHT A -18;
    pos @ROUND_RIGHT V -18;
    pos @ROUND_RIGHT W -10;
    pos @ROUND_RIGHT T -22;
    pos @ROUND_RIGHT X -22;
    pos @ROUND_RIGHT Y -30;
    pos @ROUND_RIGHT Z -12;
    pos @ROUND_RIGHT @LOW -30;

    pos R @ROUND -14;
    pos R T -22;
    pos R V -22;
    pos R Y -30;
    pos R @BOWL -10;

    pos K @ROUND -34;
    pos K @BOWL -24;
    pos K @SMALL_V -34;
    pos X @ROUND -26;
    pos X @BOWL -18;
    pos X @SMALL_V -22;
    pos B [V Y T] -14;
    pos S [V Y T] -8;
    pos C [O C G Q] -6;
    pos J A -14;
    pos U A -10;

    pos P A -72;
    pos P @LOW -110;
    pos P [a] -14;
    pos P @BOWL -16;
    pos F A -52;
    pos F @LOW -90;
    pos F [a] -20;
    pos F @BOWL -20;

    pos T A -62;
    pos T @ROUND -22;
    pos T [a] -62;
    pos T [s z] -56;
    pos T @BOWL -66;
    pos T @SMALL_STEM -44;
    pos T @SMALL_V -40;
    pos T @LOW -84;
    pos T @DASH -60;

    pos V A -66;
    pos V @ROUND -18;
    pos V [a] -34;
    pos V [s z] -28;
    pos V @BOWL -37;
    pos V @SMALL_STEM -24;
    pos V @LOW -86;
    pos V @DASH -34;

    pos W A -46;
    pos W @ROUND -10;
    pos W [a] -22;
    pos W @BOWL -22;
    pos W @SMALL_STEM -14;
    pos W @LOW -60;
    pos W @DASH -20;

    pos Y A -76;
    pos Y @ROUND -30;
    pos Y [a] -56;
    pos Y [s z] -50;
    pos Y @BOWL -64;
    pos Y @SMALL_STEM -40;
    pos Y @SMALL_V -24;
    pos Y @LOW -96;
    pos Y @DASH -58;
    pos Z @ROUND -12;

    pos f @LOW -26;
    pos f @BOWL -8;
    pos f @QUOTE_RIGHT 24;
    pos k @BOWL -18;
    pos r @BOWL -10;
    pos r [a] -6;
    pos r @LOW -74;
    pos r @DASH -24;
    pos x @BOWL -14;
    pos z @BOWL -6;
    pos @SMALL_V @BOWL -12;
    pos @SMALL_V [a] -8;
    pos @SMALL_V @LOW -58;
    pos @SMALL_ROUND_RIGHT @SMALL_V -10;
    pos @SMALL_ROUND_RIGHT x -12;
    pos @SMALL_ROUND_RIGHT @QUOTE_RIGHT -24;
    pos t @DASH -10;

    pos @QUOTE_LEFT A -62;
    pos @QUOTE_RIGHT A -54;
    pos @QUOTE_LEFT J -30;
    pos @LOW @QUOTE_RIGHT -70;
    pos @DASH A -14;
    pos @DASH [T Y] -50;
    pos @DASH V -30;
} kern;
"""
