"""The capitals A to Z."""

from measures import CAP, CAPITAL, OVER, glyph, kept
from outlines import difference, flipped, union
from pen import Path, Pen, box, half_slant, level, oval, polygon, slant, slant_on, upright

W, H = CAPITAL.upright, CAPITAL.level
STEM = W / 2  # the middle of a stem whose left edge is at 0
TOP, BOTTOM = CAP - H / 2, H / 2  # the middle of flat bars
ROUND_TOP, ROUND_BOTTOM = TOP + OVER, BOTTOM - OVER  # the middle of round strokes
MIDDLE = 373  # the bars of B, E, H: a little above half, to look like half
STEP = 1000 / 22  # a pixel at the size of the wordmark
SLANTED = CAPITAL.scaled(0.97)  # slanted strokes look heavier than they are


def stem(x=STEM, bottom=0, top=CAP):
    return upright(CAPITAL, x, bottom, top)


def bar(y, left, right):
    return level(CAPITAL, y, left, right)


def wedge(width, pen, apex=0):
    """Two slanted strokes that meet at the top: an A without its bar."""
    half = half_slant(pen, width / 2 - apex, CAP)
    left = slant(pen, half, 0, width / 2 - apex, CAP)
    right = slant(pen, width - half, 0, width / 2 + apex, CAP)
    return union(left, right)


@glyph("A")
def draw_a():
    width, y = 706, 196
    inset = width / 2 * y / CAP * 0.86
    return union(wedge(width, SLANTED, 1), bar(y, inset + 45, width - inset - 45))


def lobe(start, top, bottom, shoulder, right):
    """The stroke of a D, P or R: out of the stem, round, and back."""
    y = (top + bottom) / 2
    return (
        Path(start, bottom)
        .line(shoulder, bottom)
        .quarter(right, y, "h")
        .quarter(shoulder, top, "v")
        .line(start, top)
    )


@glyph("B")
def draw_b():
    upper = (
        Path(STEM, MIDDLE + 8, 0.94)
        .line(310, MIDDLE + 8)
        .quarter(488, (MIDDLE + TOP) / 2 + 4, "h", scale=1.0)
        .quarter(290, TOP, "v")
        .line(STEM, TOP)
    )
    lower = (
        Path(STEM, BOTTOM)
        .line(300, BOTTOM)
        .quarter(519, (MIDDLE + BOTTOM) / 2, "h")
        .quarter(310, MIDDLE + 2, "v", scale=0.94)
        .line(STEM, MIDDLE + 2)
    )
    return union(stem(), upper.stroke(CAPITAL), lower.stroke(CAPITAL))


def c_skeleton(right, top_end, bottom_end):
    middle, x = CAP / 2, 345
    return (
        Path(right, top_end)
        .quarter(x, ROUND_TOP, "v")
        .quarter(STEM, middle, "h")
        .quarter(x, ROUND_BOTTOM, "v")
        .quarter(right, bottom_end, "h")
    )


@glyph("C")
def draw_c():
    return c_skeleton(600, 500, 230).stroke(CAPITAL)


@glyph("D")
def draw_d():
    return union(stem(), lobe(STEM, TOP, BOTTOM, 262, 604).stroke(CAPITAL))


@glyph("E")
def draw_e():
    return union(stem(), bar(TOP, STEM, 508), bar(MIDDLE, STEM, 462), bar(BOTTOM, STEM, 518))


@glyph("F")
def draw_f():
    return union(stem(), bar(TOP, STEM, 500), bar(MIDDLE - 20, STEM, 450))


@glyph("G")
def draw_g():
    right = 612
    path = (
        Path(right - 6, 510)
        .quarter(345, ROUND_TOP, "v")
        .quarter(STEM, CAP / 2, "h")
        .quarter(345, ROUND_BOTTOM, "v")
        .quarter(right, 262, "h")
        .line(right, 394)
    )
    return union(path.stroke(CAPITAL), box(360, 394 - H, right, 394))


@glyph("H")
def draw_h():
    return union(stem(), stem(600 - STEM), bar(MIDDLE, STEM, 600 - STEM))


@glyph("I")
def draw_i():
    return stem()


@glyph("J")
def draw_j():
    path = Path(400, CAP).line(400, 262).quarter(222, ROUND_BOTTOM, "v").quarter(STEM, 214, "h")
    return path.stroke(CAPITAL)


def chevron(pen, start, crotch, arm_right, top, leg_right, branch):
    """The arm and the leg of a K.

    The arm's left edge leaves the stem at (start, crotch); the leg leaves the arm `branch` of the
    way up.
    """
    edge = arm_right - 2 * half_slant(pen, (arm_right - start) / 2, (top - crotch) / 2)
    slope = (edge - start) / (top - crotch)
    width = arm_right - edge
    low = crotch - (start + 40) / slope
    arm = polygon(
        (start + (low - crotch) * slope, low),
        (start + (low - crotch) * slope + width, low),
        (arm_right, top),
        (edge, top),
    )
    y = crotch + branch * (top - crotch)
    x = start + (y - crotch) * slope + width / 2
    leg = slant_on(pen, leg_right, 0, x + width / 2 - 30, y, 1)
    above = polygon(
        (x - slope * 900, y - 900),
        (x + slope * 900, y + 900),
        (x - 900, y + 900),
        (x - 1800, y - 900),
    )
    return union(kept(arm, left=0, bottom=20), difference(leg, above))


@glyph("K")
def draw_k():
    return union(stem(), chevron(SLANTED, W - 6, 256, 600, CAP, 614, 0.36))


@glyph("L")
def draw_l():
    return union(stem(), bar(BOTTOM, STEM, 492))


@glyph("M")
def draw_m():
    width, foot = STEP * 14 + W, 182
    pen = CAPITAL.scaled(0.93)  # lighter still, for the dark corners at the top
    half = half_slant(pen, width / 2, CAP - foot)
    left = slant(pen, half, CAP, width / 2, foot)
    right = slant(pen, width - half, CAP, width / 2, foot)
    return union(stem(), stem(width - STEM), left, right)


@glyph("N")
def draw_n():
    width = 630
    pen = CAPITAL.scaled(0.94)
    edge = width - 2 * half_slant(pen, width / 2, CAP / 2)
    return union(stem(), stem(width - STEM), slant_on(pen, 0, CAP, edge, 0, -1))


@glyph("O")
def draw_o():
    return o_ring()


def o_ring():
    return oval(347.5, CAP / 2, 347.5 - STEM, ROUND_TOP - CAP / 2).ring(CAPITAL)


@glyph("P")
def draw_p():
    return union(stem(), lobe(STEM, TOP, 306, 318, 514).stroke(CAPITAL))


@glyph("Q")
def draw_q():
    tail = Path(420, 216).line(660, -56).stroke(Pen(100, 100))
    return union(o_ring(), kept(tail, bottom=0))


@glyph("R")
def draw_r():
    bowl = lobe(STEM, TOP, 334, 330, 522)
    leg = slant(SLANTED, 532, 0, 322, 340)
    return union(stem(), bowl.stroke(CAPITAL), leg)


def s_path(left, right, top, bottom, middle, ends, lean, heavy=1.04):
    """The spine of S: two bowls that pass into each other along a nearly level stroke.

    `ends` are the heights at which the upper and the lower terminal are cut, `lean` is the fall of
    the spine per unit at its middle.
    """
    x = (left + right) / 2
    upper, lower = (top + middle) / 2 + 6, (middle + bottom) / 2 - 6
    reach = (right - left) * 0.26
    return (
        Path(right - 12, ends[0])
        .quarter(x + 4, top, "v")
        .quarter(left + 8, upper, "h")
        .curve(
            left + 8,
            upper - (upper - middle) * 0.82,
            x - reach,
            middle + reach * lean,
            x,
            middle,
            scale=heavy,
        )
        .curve(
            x + reach,
            middle - reach * lean,
            right,
            lower + (middle - lower) * 0.82,
            right,
            lower,
            scale=1.0,
        )
        .quarter(x - 4, bottom, "v")
        .quarter(left, ends[1], "h")
    )


def capital_s():
    return s_path(STEM, 556 - STEM, ROUND_TOP, ROUND_BOTTOM, 371, (535, 200), 0.22)


@glyph("S")
def draw_s():
    return capital_s().stroke(CAPITAL)


@glyph("T")
def draw_t():
    return union(stem(295), bar(TOP, 0, 590))


@glyph("U")
def draw_u():
    path = (
        Path(STEM, CAP)
        .line(STEM, 290)
        .quarter(305, ROUND_BOTTOM, "v")
        .quarter(610 - STEM, 290, "h")
        .line(610 - STEM, CAP)
    )
    return path.stroke(CAPITAL)


@glyph("V")
def draw_v():
    return flipped(wedge(700, SLANTED, 1), CAP / 2)


@glyph("W")
def draw_w():
    width, pen = 990, CAPITAL.scaled(0.94)
    quarter = width / 4
    half = half_slant(pen, quarter * 1.2, CAP)
    a, b, c, d, e = half, quarter + half * 0.55, width / 2, width * 0.75 - half * 0.55, width - half
    return union(
        slant(pen, a, CAP, b, 0),
        slant(pen, c, CAP, b + 1, 0),
        slant(pen, c + 1, CAP, d - 1, 0),
        slant(pen, e, CAP, d, 0),
    )


@glyph("X")
def draw_x():
    width, inset = 640, 16
    edge = width - inset - 2 * half_slant(SLANTED, (width - inset) / 2, CAP / 2)
    return union(
        slant_on(SLANTED, 0, 0, edge, CAP, -1), slant_on(SLANTED, width, 0, width - edge, CAP, 1)
    )


@glyph("Y")
def draw_y():
    middle, fork = 330, 296
    left = slant_on(SLANTED, 0, CAP, middle - STEM, fork, -1)
    right = slant_on(SLANTED, 2 * middle, CAP, middle + STEM, fork, 1)
    return union(kept(left, right=middle), kept(right, left=middle), stem(middle, 0, fork))


@glyph("Z")
def draw_z():
    width = 560
    diagonal = corner_to_corner(SLANTED, width - 6, CAP, H)
    return union(bar(TOP, 14, width - 6), bar(BOTTOM, 0, width), diagonal)


def corner_to_corner(pen, head, height, bar_height):
    """The diagonal of a Z, from the inner corner of one bar to that of the other."""
    rise = height - 2 * bar_height
    edge = head - 2 * half_slant(pen, head / 2, rise / 2)
    lean = edge / rise * bar_height * 0.5
    low, high = bar_height * 0.5, height - bar_height * 0.5
    return kept(slant_on(pen, -lean, low, edge + lean, high, -1), left=0, right=head)
