"""Punctuation, mathematical signs and the rest of ASCII."""

import math

from capitals import capital_s
from measures import CAP, CAPITAL, DESCENT, FIGURE, OVER, SIGN, XHEIGHT, glyph, kept
from outlines import difference, mirrored, shifted, turned, union
from pen import Path, Pen, box, disc, level, oval, polygon, slant, slant_width, upright

DOT = 59  # half the width of a point
AXIS = 365  # the height on which the mathematical signs are centred
SIGN_WIDTH = 477
W, H = SIGN.upright, SIGN.level


def point(x, y):
    return disc(x, y, DOT, DOT - 1)


BASE = DOT - 3  # the middle of a point on the base line


@glyph("period")
def draw_period():
    return point(DOT, BASE)


def comma(x=0, top=114):
    """A leaning wedge, for the comma and the quotation marks alike."""
    return polygon((x + 46, top), (x + 166, top), (x + 84, top - 236), (x, top - 236))


@glyph("comma")
def draw_comma():
    return comma()


@glyph("colon")
def draw_colon():
    return union(point(DOT, BASE), point(DOT, XHEIGHT - BASE))


@glyph("semicolon")
def draw_semicolon():
    return union(comma(), point(102, XHEIGHT - BASE))


@glyph("ellipsis")
def draw_ellipsis():
    return union(*(point(DOT + 226 * i, BASE) for i in range(3)))


@glyph("periodcentered")
def draw_periodcentered():
    return point(DOT, 320)


@glyph("exclam")
def draw_exclam():
    shaft = polygon((DOT - 44, 220), (DOT + 44, 220), (DOT + 53, CAP), (DOT - 53, CAP))
    return union(shaft, point(DOT, BASE))


@glyph("question")
def draw_question():
    x = 216
    path = (
        Path(50, 540)
        .quarter(x, CAP + OVER - 44, "v")
        .quarter(382, 540, "h")
        .curve(382, 398, x - 8, 396, x - 8, 246)
        .line(x - 8, 214)
    )
    return union(path.stroke(FIGURE), point(x - 8, BASE))


def tick(x):
    return polygon((x - 34, 470), (x + 34, 470), (x + 48, CAP), (x - 48, CAP))


@glyph("quotesingle")
def draw_quotesingle():
    return tick(48)


@glyph("quotedbl")
def draw_quotedbl():
    return union(tick(48), tick(48 + 176))


def right_quote(x=0):
    return comma(x, CAP)


@glyph("quoteright")
def draw_quoteright():
    return right_quote()


@glyph("quoteleft")
def draw_quoteleft():
    return turned(right_quote(), 83, CAP - 118)


@glyph("quotedblright")
def draw_quotedblright():
    return union(right_quote(), right_quote(176))


@glyph("quotedblleft")
def draw_quotedblleft():
    return turned(draw_quotedblright(), 171, CAP - 118)


@glyph("grave")
def draw_grave():
    return polygon((0, CAP), (112, CAP), (196, 606), (116, 606))


# Lines


@glyph("hyphen")
def draw_hyphen():
    return level(SIGN, 292, 0, 268)


@glyph("endash")
def draw_endash():
    return level(SIGN, 292, 0, 478)


@glyph("emdash")
def draw_emdash():
    return level(SIGN, 292, 0, 841)


@glyph("underscore")
def draw_underscore():
    return box(0, -134, 520, -134 + H)


@glyph("bar")
def draw_bar():
    return upright(SIGN, 45, DESCENT + 20, CAP + 60)


@glyph("slash")
def draw_slash():
    return slant(SIGN, 48, -70, 352, CAP + 30)


@glyph("backslash")
def draw_backslash():
    return mirrored(draw_slash(), 200)


# Brackets

BRACKET_TOP, BRACKET_BOTTOM = CAP + 50, -116


@glyph("parenleft")
def draw_parenleft():
    middle = (BRACKET_TOP + BRACKET_BOTTOM) / 2
    path = (
        Path(224, BRACKET_TOP + 60)
        .curve(110, BRACKET_TOP - 80, W / 2, middle + 220, W / 2, middle)
        .curve(W / 2, middle - 220, 110, BRACKET_BOTTOM + 80, 224, BRACKET_BOTTOM - 60)
    )
    return kept(path.stroke(SIGN), bottom=BRACKET_BOTTOM, top=BRACKET_TOP)


@glyph("parenright")
def draw_parenright():
    return mirrored(draw_parenleft(), 150)


@glyph("bracketleft")
def draw_bracketleft():
    return union(
        box(0, BRACKET_BOTTOM, W, BRACKET_TOP),
        box(W / 2, BRACKET_TOP - 80, 232, BRACKET_TOP),
        box(W / 2, BRACKET_BOTTOM, 232, BRACKET_BOTTOM + 80),
    )


@glyph("bracketright")
def draw_bracketright():
    return mirrored(draw_bracketleft(), 150)


@glyph("braceleft")
def draw_braceleft():
    middle, s = (BRACKET_TOP + BRACKET_BOTTOM) / 2, 142
    top, bottom = BRACKET_TOP - 40, BRACKET_BOTTOM + 40
    pen = Pen(W, 80)
    upper = (
        Path(278, top).line(250, top).quarter(s, top - 118, "h").line(s, middle + 120)
        .quarter(10, middle + 3, "v", scale=0.94)
    )
    lower = (
        Path(278, bottom).line(250, bottom).quarter(s, bottom + 118, "h").line(s, middle - 120)
        .quarter(10, middle - 3, "v", scale=0.94)
    )
    return union(upper.stroke(pen), lower.stroke(pen))


@glyph("braceright")
def draw_braceright():
    return mirrored(draw_braceleft(), 150)


# Mathematics


@glyph("plus")
def draw_plus():
    half = SIGN_WIDTH / 2
    return union(level(SIGN, AXIS, 0, SIGN_WIDTH), upright(SIGN, half, AXIS - half, AXIS + half))


@glyph("minus")
def draw_minus():
    return level(SIGN, AXIS, 0, SIGN_WIDTH)


@glyph("plusminus")
def draw_plusminus():
    half = SIGN_WIDTH / 2
    y = AXIS + 76
    return union(
        level(SIGN, y, 0, SIGN_WIDTH),
        upright(SIGN, half, y - 195, y + 215),
        box(0, 60, SIGN_WIDTH, 60 + H),
    )


@glyph("multiply")
def draw_multiply():
    pen, reach = Pen(90, 90), 178
    arm = Path(-reach, -reach).line(reach, reach).stroke(pen)
    other = Path(-reach, reach).line(reach, -reach).stroke(pen)
    return shifted(union(arm, other), 200, AXIS)


@glyph("equal")
def draw_equal():
    return union(level(SIGN, AXIS + 92, 0, SIGN_WIDTH), level(SIGN, AXIS - 92, 0, SIGN_WIDTH))


@glyph("less")
def draw_less():
    rise = 198
    half = SIGN.thickness(SIGN_WIDTH, rise) / 2 * 1.08
    arms = [
        polygon(
            (0, AXIS - half),
            (0, AXIS + half),
            (SIGN_WIDTH, AXIS + s * rise + half),
            (SIGN_WIDTH, AXIS + s * rise - half),
        )
        for s in (1, -1)
    ]
    return union(*arms)


@glyph("greater")
def draw_greater():
    return mirrored(draw_less(), SIGN_WIDTH / 2)


@glyph("asciitilde")
def draw_asciitilde():
    rise = 46
    path = (
        Path(36, AXIS - 84)
        .quarter(132, AXIS + rise, "v")
        .curve(196, AXIS + rise, 274, AXIS - rise, 338, AXIS - rise)
        .quarter(434, AXIS + 84, "h")
    )
    return path.stroke(Pen(84, 84))


@glyph("asciicircum")
def draw_asciicircum():
    half = slant_width(SIGN, 150, 300) / 2
    return union(slant(SIGN, half, 420, 199, CAP), slant(SIGN, 400 - half, 420, 201, CAP))


@glyph("degree")
def draw_degree():
    r = 142
    return oval(r, CAP + OVER - r, r - 38, r - 36).ring(Pen(76, 72))


# Composite signs


@glyph("numbersign")
def draw_numbersign():
    pen = Pen(82, 78)
    lean = 92
    return union(
        slant(pen, 130, 0, 130 + lean, CAP),
        slant(pen, 352, 0, 352 + lean, CAP),
        level(pen, 496, 34, 574),
        level(pen, 234, 0, 540),
    )


@glyph("dollar")
def draw_dollar():
    x = 278
    spine = capital_s().stroke(CAPITAL)
    post = union(upright(SIGN, x, CAP - 30, CAP + 88), upright(SIGN, x, -88, 30))
    return union(spine, post)


@glyph("percent")
def draw_percent():
    pen = Pen(84, 78)
    rx, ry = 148, 176
    left = oval(rx, CAP + 6 - ry, rx - 42, ry - 39).ring(pen)
    right = oval(760 - rx, ry - 6, rx - 42, ry - 39).ring(pen)
    return union(left, right, slant(pen, 214, 0, 546, CAP))


@glyph("ampersand")
def draw_ampersand():
    path = (
        Path(648, -40)
        .line(202, 474)
        .curve(167.29, 514, 152, 548, 152, 588)
        .quarter(288, CAP + OVER - 44, "v")
        .quarter(420, 590, "h")
        .curve(420, 520, 372, 474, 290, 426)
        .curve(126, 330, 50, 280, 50, 190)
        .quarter(246, 34, "v")
        .curve(430, 34, 556, 170, 556, 380)
    )
    return difference(path.stroke(FIGURE), box(500, -400, 900, 0))


@glyph("asterisk")
def draw_asterisk():
    pen, reach = Pen(76, 76), 164
    arms = []
    for i in range(5):
        angle = math.pi / 2 + i * 2 * math.pi / 5
        arms.append(Path(0, 0).line(reach * math.cos(angle), reach * math.sin(angle)).stroke(pen))
    return shifted(union(*arms), 170, CAP - 154)


@glyph("at")
def draw_at():
    pen, join = Pen(80, 74), 0.66
    cx, cy, rx, ry = 434, 305, 394, 398
    right, post, low, high = cx + rx, 600, 148, 470
    outer = (
        Path(640, cy - ry)
        .line(cx + 20, cy - ry)
        .quarter(cx - rx, cy, "h")
        .quarter(cx, cy + ry, "v")
        .quarter(right, cy + 10, "h")
        .line(right, 258)
        .quarter((right + post) / 2, low, "v")
        .quarter(post, 258, "h")
        .line(post, high + 37)
    )
    x, middle = 414, (high + low) / 2
    inner = (
        Path(post, middle, join)
        .quarter(x, high, "v", 0.62, scale=1.0)
        .quarter(234, middle, "h")
        .quarter(x, low, "v")
        .quarter(post, middle, "h", 0.62, scale=join)
    )
    return union(outer.stroke(pen), inner.ring(pen))


# Spaces and the glyph for what is missing


@glyph("space")
def draw_space():
    return []


@glyph("nbspace")
def draw_nbspace():
    return []


@glyph(".notdef")
def draw_notdef():
    frame = difference(box(0, 0, 470, CAP), box(56, 52, 414, CAP - 52))
    return union(frame, level(Pen(60, 60), AXIS, 170, 300))
