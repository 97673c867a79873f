"""The figures 0 to 9, all on one advance width."""

from measures import CAP, FIGURE, OVER, glyph, kept
from outlines import difference, turned, union
from pen import Path, box, level, oval, slant, slant_on, upright

W, H = FIGURE.upright, FIGURE.level
STEM = W / 2
TOP, BOTTOM = CAP - H / 2, H / 2
ROUND_TOP, ROUND_BOTTOM = TOP + OVER, BOTTOM - OVER
WIDTH = 484  # of the round figures
LEFT, RIGHT, MIDDLE = STEM, WIDTH - STEM, WIDTH / 2
SLANTED = FIGURE.scaled(0.98)


def stem(x, bottom=0, top=CAP):
    return upright(FIGURE, x, bottom, top)


def bar(y, left, right):
    return level(FIGURE, y, left, right)


@glyph("zero")
def draw_zero():
    return oval(MIDDLE, CAP / 2, MIDDLE - STEM, ROUND_TOP - CAP / 2).ring(FIGURE)


@glyph("one")
def draw_one():
    x = 262
    flag = kept(slant(SLANTED, -62, 392, x + 40, CAP + 40), left=36, right=x, top=CAP)
    return union(stem(x), flag)


@glyph("two")
def draw_two():
    path = (
        Path(LEFT + 4, 522)
        .quarter(MIDDLE - 2, ROUND_TOP, "v")
        .quarter(RIGHT - 4, 526, "h")
        .curve(RIGHT - 4, 408, 306, 322, 14, 34)
    )
    left = 8  # of the foot, where the stroke ends in it
    stroke = difference(path.stroke(FIGURE), box(-99, -99, left, 200), box(-99, -99, 999, 30))
    return union(stroke, bar(BOTTOM, left, WIDTH - 6))


@glyph("three")
def draw_three():
    ridge = 376
    upper = (
        Path(LEFT + 6, 544)
        .quarter(MIDDLE - 6, ROUND_TOP, "v")
        .quarter(RIGHT - 16, (ridge + ROUND_TOP) / 2 + 6, "h")
        .quarter(262, ridge + 3, "v", scale=0.94)
        .line(150, ridge + 3)
    )
    lower = (
        Path(LEFT, 196)
        .quarter(MIDDLE - 4, ROUND_BOTTOM, "v")
        .quarter(RIGHT, (ridge + ROUND_BOTTOM) / 2 - 4, "h")
        .quarter(262, ridge - 3, "v", scale=0.94)
        .line(150, ridge - 3)
    )
    return union(upper.stroke(FIGURE), lower.stroke(FIGURE))


@glyph("four")
def draw_four():
    x, y = 352, 206
    diagonal = slant_on(SLANTED, 0, y - H / 2, x - STEM - 30, CAP, -1)
    return union(stem(x), kept(diagonal, right=x), bar(y, 60, 506))


@glyph("five")
def draw_five():
    shoulder = 458 - H / 2
    lobe = (
        Path(LEFT, 190)
        .quarter(MIDDLE - 6, ROUND_BOTTOM, "v")
        .quarter(RIGHT, (shoulder + ROUND_BOTTOM) / 2, "h")
        .quarter(MIDDLE + 4, shoulder + OVER, "v")
        .quarter(78, 330, "h", 0.62, scale=0.7)
    )
    post = box(30, 330, 30 + W, CAP)
    return union(lobe.stroke(FIGURE), post, bar(TOP, 40, 448))


def six():
    ring_top = 448 + OVER - H / 2
    return (
        Path(RIGHT - 14, 556)
        .quarter(MIDDLE + 6, ROUND_TOP, "v")
        .quarter(LEFT, 350, "h")
        .line(LEFT, 240)
        .quarter(MIDDLE, ROUND_BOTTOM, "v")
        .quarter(RIGHT, (ring_top + ROUND_BOTTOM) / 2, "h")
        .quarter(MIDDLE + 8, ring_top, "v")
        .quarter(LEFT + 4, 250, "h", 0.62, scale=0.7)
    )


@glyph("six")
def draw_six():
    return union(six().stroke(FIGURE))


@glyph("seven")
def draw_seven():
    right = 464
    diagonal = slant_on(SLANTED, 196, 0, right + 20, CAP - H + 48, 1)
    return union(bar(TOP, 0, right), kept(diagonal, right=right))


@glyph("eight")
def draw_eight():
    ridge = 382
    upper = (ridge + 3 + ROUND_TOP) / 2
    lower = (ridge - 3 + ROUND_BOTTOM) / 2

    def ring(cy, rx, top, bottom, top_scale, bottom_scale):
        return (
            Path(MIDDLE + rx, cy)
            .quarter(MIDDLE, top, "v", scale=top_scale)
            .quarter(MIDDLE - rx, cy, "h", scale=1.0)
            .quarter(MIDDLE, bottom, "v", scale=bottom_scale)
            .quarter(MIDDLE + rx, cy, "h", scale=1.0)
            .ring(FIGURE)
        )

    return union(
        ring(upper, MIDDLE - STEM - 16, ROUND_TOP, ridge + 3, 1.0, 0.93),
        ring(lower, MIDDLE - STEM, ridge - 3, ROUND_BOTTOM, 0.93, 1.0),
    )


@glyph("nine")
def draw_nine():
    return turned(draw_six(), MIDDLE, CAP / 2)
