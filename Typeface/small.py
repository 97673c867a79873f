"""The small letters a to z."""

from capitals import chevron, corner_to_corner, s_path
from measures import CAP, DESCENT, OVER, SMALL, XHEIGHT, glyph
from outlines import mirrored, turned, union
from pen import Path, disc, half_slant, level, oval, slant, slant_on, upright

W, H = SMALL.upright, SMALL.level
STEM = W / 2
TOP, BOTTOM = XHEIGHT - H / 2, H / 2
ROUND_TOP, ROUND_BOTTOM = TOP + OVER, BOTTOM - OVER
MIDDLE = XHEIGHT / 2
SLANTED = SMALL.scaled(0.98)
JOIN = 0.66  # how thin an arch starts inside its stem
DOT = 59  # half the width of a dot
WIDTH = 486  # of n and u


def stem(x=STEM, bottom=0, top=XHEIGHT):
    return upright(SMALL, x, bottom, top)


def bar(y, left, right):
    return level(SMALL, y, left, right)


def bowl(width=526):
    """The bowl of b, its left side in the stem, where it is thinner."""
    x, right = width / 2 + 10, width - STEM
    return (
        Path(right, MIDDLE)
        .quarter(x, ROUND_TOP, "v")
        .quarter(STEM + 4, MIDDLE, "h", 0.6, scale=JOIN)
        .quarter(x, ROUND_BOTTOM, "v", 0.6, scale=1.0)
        .quarter(right, MIDDLE, "h")
        .ring(SMALL)
    )


def arch(left, right, foot=0):
    """The arch of n, from inside a stem at x = left to the foot of the next."""
    x = left + (right - left) * 0.55
    return (
        Path(left + 6, 330, JOIN)
        .quarter(x, ROUND_TOP, "v", 0.62, scale=1.0)
        .quarter(right, 352, "h")
        .line(right, foot)
        .stroke(SMALL)
    )


@glyph("a")
def draw_a():
    right, ridge = 466 - STEM, 287
    hood = (
        Path(24 + STEM, 404)
        .quarter(242, ROUND_TOP, "v")
        .quarter(right, 352, "h")
        .line(right, 0)
    )
    belly = (
        Path(right, ridge)
        .line(220, ridge)
        .quarter(STEM, (ridge + ROUND_BOTTOM) / 2, "h")
        .quarter(212, ROUND_BOTTOM, "v")
        .quarter(right, 170, "h", 0.6, scale=JOIN)
    )
    return union(hood.stroke(SMALL), belly.stroke(SMALL))


@glyph("b")
def draw_b():
    return union(stem(top=CAP), bowl())


@glyph("c")
def draw_c():
    x, right = 258, 444
    path = (
        Path(right, 376)
        .quarter(x, ROUND_TOP, "v")
        .quarter(STEM, MIDDLE, "h")
        .quarter(x, ROUND_BOTTOM, "v")
        .quarter(right, 170, "h")
    )
    return path.stroke(SMALL)


@glyph("d")
def draw_d():
    return mirrored(draw_b(), 263)


@glyph("e")
def draw_e():
    x, right, ridge = 256, 512 - STEM, 279
    path = (
        Path(right, ridge - H / 2)
        .line(right, MIDDLE + 20)
        .quarter(x, ROUND_TOP, "v")
        .quarter(STEM, MIDDLE, "h")
        .quarter(x + 6, ROUND_BOTTOM, "v")
        .quarter(right - 8, 142, "h")
    )
    return union(path.stroke(SMALL), bar(ridge, STEM, right))


@glyph("f")
def draw_f():
    s, top = 70 + STEM, CAP + 6 - H / 2
    path = Path(s, 0).line(s, 545).quarter(s + 158, top, "v").line(346, top)
    return union(path.stroke(SMALL), bar(TOP, 0, 326))


@glyph("g")
def draw_g():
    y = DESCENT + H / 2
    right = 526 - STEM
    hook = Path(right, XHEIGHT).line(right, 0).quarter(290, y, "v").line(66, y)
    return union(mirrored(bowl(), 263), hook.stroke(SMALL))


@glyph("h")
def draw_h():
    return union(stem(top=CAP), arch(STEM, WIDTH - STEM))


def dot(x=STEM):
    return disc(x, CAP - DOT + 6, DOT, DOT - 1)


@glyph("i")
def draw_i():
    return union(stem(), dot())


@glyph("j")
def draw_j():
    y, s = DESCENT + H / 2, 160
    hook = Path(s, XHEIGHT).line(s, -20).quarter(s - 130, y, "v").line(s - 180, y)
    return union(hook.stroke(SMALL), dot(s))


@glyph("k")
def draw_k():
    return union(stem(top=CAP), chevron(SLANTED, W - 6, 206, 478, XHEIGHT, 492, 0.36))


@glyph("l")
def draw_l():
    path = Path(STEM, CAP).line(STEM, 166).quarter(STEM + 122, BOTTOM, "v").line(228, BOTTOM)
    return path.stroke(SMALL)


@glyph("m")
def draw_m():
    step = 350
    return union(stem(), arch(STEM, STEM + step), arch(STEM + step, STEM + 2 * step))


@glyph("n")
def draw_n():
    return union(stem(), arch(STEM, WIDTH - STEM))


@glyph("o")
def draw_o():
    return oval(264, MIDDLE, 264 - STEM, ROUND_TOP - MIDDLE).ring(SMALL)


@glyph("p")
def draw_p():
    return union(stem(bottom=DESCENT), bowl())


@glyph("q")
def draw_q():
    return mirrored(draw_p(), 263)


@glyph("r")
def draw_r():
    path = Path(STEM + 6, 330, JOIN).quarter(250, TOP, "v", 0.62, scale=1.0).line(330, TOP)
    return union(stem(), path.stroke(SMALL))


@glyph("s")
def draw_s():
    path = s_path(STEM, 446 - STEM, ROUND_TOP, ROUND_BOTTOM, 277, (398, 152), 0.16, 1.02)
    return path.stroke(SMALL)


@glyph("t")
def draw_t():
    s = 82 + STEM
    path = Path(s, 684).line(s, 166).quarter(s + 122, BOTTOM, "v").line(344, BOTTOM)
    return union(path.stroke(SMALL), bar(TOP, 0, 334))


@glyph("u")
def draw_u():
    return turned(draw_n(), WIDTH / 2, MIDDLE)


def wedge(width, pen, height=XHEIGHT):
    half = half_slant(pen, width / 2 - 1, height)
    return union(
        slant(pen, half, height, width / 2 - 1, 0),
        slant(pen, width - half, height, width / 2 + 1, 0),
    )


@glyph("v")
def draw_v():
    return wedge(532, SLANTED)


@glyph("w")
def draw_w():
    width, pen = 770, SMALL.scaled(0.93)
    quarter = width / 4
    half = half_slant(pen, quarter * 1.2, XHEIGHT)
    a, b, c, d, e = half, quarter + half * 0.5, width / 2, width * 0.75 - half * 0.5, width - half
    return union(
        slant(pen, a, XHEIGHT, b, 0),
        slant(pen, c, XHEIGHT, b + 1, 0),
        slant(pen, c + 1, XHEIGHT, d - 1, 0),
        slant(pen, e, XHEIGHT, d, 0),
    )


@glyph("x")
def draw_x():
    width, inset = 508, 12
    edge = width - inset - 2 * half_slant(SLANTED, (width - inset) / 2, XHEIGHT / 2)
    return union(
        slant_on(SLANTED, 0, 0, edge, XHEIGHT, -1),
        slant_on(SLANTED, width, 0, width - edge, XHEIGHT, 1),
    )


@glyph("y")
def draw_y():
    width = 532
    half = half_slant(SLANTED, width / 2, XHEIGHT)
    slope = (width / 2 - half) / XHEIGHT
    left = slant(SLANTED, half, XHEIGHT, width / 2, 0)
    right = slant(SLANTED, width - half, XHEIGHT, width / 2 + slope * DESCENT, DESCENT)
    return union(left, right)


@glyph("z")
def draw_z():
    width = 448
    diagonal = corner_to_corner(SLANTED, width - 6, XHEIGHT, H)
    return union(bar(TOP, 12, width - 6), bar(BOTTOM, 0, width), diagonal)
