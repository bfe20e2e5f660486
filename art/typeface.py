# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The typeface of the game, and the two fonts made from it: general text and the instrument's digits."""

import unicodedata

import numpy as np

from canvas import BLUE_PALE, ICE, WHITE, Canvas, mix, pictures, ramp, segment_distance

# ---------------------------------------------------------------------------------------------------------
# The typeface: wide, single-weight, with rounded corners.  Each glyph is a list of pen strokes on a grid
# where x runs from 0 to 10, the baseline is y = 0, capitals reach 9, small letters 6 and descenders -2.
# A stroke is a row of points; corners are rounded unless their point is marked "!", a closing "z" joins the
# last point to the first, and a point given alone is a dot.  Strokes are separated by ";".
# ---------------------------------------------------------------------------------------------------------

GLYPHS = {
    " ": "",
    "!": "5,9 5,3; 5,0",
    '"': "3.2,9 3.2,6.2; 6.8,9 6.8,6.2",
    "#": "3.6,9 2.4,0; 7.6,9 6.4,0; 0.6,6.2 9.8,6.2; 0.2,2.8 9.4,2.8",
    "$": "9.5,7.9 0.5,7.9 0.5,4.5 9.5,4.5 9.5,1.1 0.5,1.1; 5,9.7 5,-0.7",
    "%": "9,9 1,0; 0,6.3 0,9 3,9 3,6.3 z; 7,0 7,2.7 10,2.7 10,0 z",
    "&": "10,0 1.6,6.8! 1.6,9 6.8,9 6.8,6 0.2,4 0.2,0 6.4,0 9.6,3.8",
    "'": "5,9 5,6.2",
    "(": "6.6,9.7 3.4,7 3.4,1.3 6.6,-1.4",
    ")": "3.4,9.7 6.6,7 6.6,1.3 3.4,-1.4",
    "*": "5,9 5,3.4; 2.2,7.8 7.8,4.6; 2.2,4.6 7.8,7.8",
    "+": "5,7.6 5,0.6; 1,4.1 9,4.1",
    ",": "5.4,0.2 4.2,-1.9",
    "-": "1.5,4 8.5,4",
    ".": "5,0",
    "/": "1.4,-0.8 8.6,9.6",
    "0": "0.5,0 0.5,9 9.5,9 9.5,0 z; 3.6,3 6.4,6",
    "1": "1.5,6.6 5,9! 5,0; 1.5,0 8.5,0",
    "2": "0.5,9 9.5,9 9.5,4.6 0.5,4.6 0.5,0! 9.5,0",
    "3": "0.5,9 9.5,9 9.5,4.6 3,4.6; 8,4.6 9.5,4.6 9.5,0 0.5,0",
    "4": "7.6,0 7.6,9! 0.2,3! 9.8,3",
    "5": "9.5,9 0.5,9! 0.5,5.2! 9.5,5.2 9.5,0 0.5,0",
    "6": "9,9 0.5,9 0.5,0 9.5,0 9.5,5 0.5,5",
    "7": "0.5,9 9.5,9! 3.6,0",
    "8": "1,4.8 1,9 9,9 9,4.8 z; 0.5,4.8 0.5,0 9.5,0 9.5,4.8 z",
    "9": "1,0 9.5,0 9.5,9 0.5,9 0.5,4 9.5,4",
    ":": "5,5.6; 5,0.4",
    ";": "5,5.6; 5.4,0.4 4.2,-1.7",
    "<": "8.6,7.6 1.4,4.1! 8.6,0.6",
    "=": "1,5.8 9,5.8; 1,2.4 9,2.4",
    ">": "1.4,7.6 8.6,4.1! 1.4,0.6",
    "?": "0.8,9 9.2,9 9.2,4.8 5,4.8 5,2.8; 5,0",
    "@": "7,2.4! 7,6! 3.2,6 3.2,2.4 10,2.4 10,9 0,9 0,-0.8 9,-0.8",
    "A": "0,0 5,9! 10,0; 1.8,3 8.2,3",
    "B": "8,4.8 9.3,4.8 9.3,9 0,9! 0,0! 10,0 10,4.8 0,4.8",
    "C": "10,9 0,9 0,0 10,0",
    "D": "0,0! 0,9! 10,9 10,0 z",
    "E": "10,9 0,9! 0,0! 10,0; 0,4.6 8.6,4.6",
    "F": "10,9 0,9! 0,0; 0,4.6 8.6,4.6",
    "G": "10,9 0,9 0,0 10,0! 10,4.4! 5.6,4.4",
    "H": "0,0 0,9; 10,0 10,9; 0,4.6 10,4.6",
    "I": "1.5,9 8.5,9; 5,9 5,0; 1.5,0 8.5,0",
    "J": "3,9 9.5,9! 9.5,0 0.5,0 0.5,3",
    "K": "0,0 0,9; 9.6,9 3,4.6! 10,0; 0,4.6 3,4.6",
    "L": "0.5,9 0.5,0! 10,0",
    "M": "0,0 0,9! 5,3.6! 10,9! 10,0",
    "N": "0,0 0,9! 10,0! 10,9",
    "O": "0,0 0,9 10,9 10,0 z",
    "P": "0,0 0,9! 10,9 10,3.8 0,3.8",
    "Q": "0,0 0,9 10,9 10,0 z; 6,2.8 10.2,-1.2",
    "R": "0,0 0,9! 10,9 10,3.8 0,3.8; 5.4,3.8 10,0",
    "S": "9.8,9 0.2,9 0.2,4.6 9.8,4.6 9.8,0 0.2,0",
    "T": "0,9 10,9; 5,9 5,0",
    "U": "0,9 0,0 10,0 10,9",
    "V": "0,9 5,0! 10,9",
    "W": "0,9 2,0! 5,6.4! 8,0! 10,9",
    "X": "0.2,9 9.8,0; 0.2,0 9.8,9",
    "Y": "0,9 5,4.4! 10,9; 5,4.4 5,0",
    "Z": "0.2,9 9.8,9! 0.2,0! 9.8,0",
    "[": "7,9.6 3.6,9.6! 3.6,-1.2! 7,-1.2",
    "\\": "1.4,9.6 8.6,-0.8",
    "]": "3,9.6 6.4,9.6! 6.4,-1.2! 3,-1.2",
    "^": "1.6,6 5,9! 8.4,6",
    "_": "0,-1.6 10,-1.6",
    "`": "3.6,9.4 6,7.4",
    "a": "1,6 9.5,6 9.5,0; 9.5,3.4 0.5,3.4 0.5,0 9.5,0",
    "b": "0.5,9 0.5,0! 9.5,0 9.5,6 0.5,6",
    "c": "9.5,6 0.5,6 0.5,0 9.5,0",
    "d": "9.5,9 9.5,0! 0.5,0 0.5,6 9.5,6",
    "e": "0.5,3 9.5,3! 9.5,6 0.5,6 0.5,0 9,0",
    "f": "9,9 4,9 4,0; 1,6 8.5,6",
    "g": "9.5,0 0.5,0 0.5,6 9.5,6! 9.5,-2 1,-2",
    "h": "0.5,9 0.5,0; 0.5,6 9.5,6 9.5,0",
    "i": "2,6 5.2,6! 5.2,0; 1.5,0 9,0; 5.2,8.8",
    "j": "2.6,6 7,6! 7,-2 1,-2; 7,8.8",
    "k": "0.5,9 0.5,0; 9,6 3.2,3! 9.5,0; 0.5,3 3.2,3",
    "l": "2,9 5.2,9! 5.2,0; 1.5,0 9,0",
    "m": "0,0 0,6! 10,6 10,0; 5,6 5,0",
    "n": "0.5,0 0.5,6! 9.5,6 9.5,0",
    "o": "0.5,0 0.5,6 9.5,6 9.5,0 z",
    "p": "0.5,-2 0.5,6! 9.5,6 9.5,0 0.5,0",
    "q": "9.5,-2 9.5,6! 0.5,6 0.5,0 9.5,0",
    "r": "1.2,0 1.2,6; 1.2,3.4 1.2,6 9,6",
    "s": "9.3,6 0.7,6 0.7,3 9.3,3 9.3,0 0.7,0",
    "t": "3.6,8.6 3.6,0 9,0; 1,6 8.6,6",
    "u": "0.5,6 0.5,0 9.5,0; 9.5,6 9.5,0",
    "v": "0.5,6 5,0! 9.5,6",
    "w": "0,6 2.4,0! 5,4.4! 7.6,0! 10,6",
    "x": "0.7,6 9.3,0; 0.7,0 9.3,6",
    "y": "0.5,6 0.5,0 9.5,0; 9.5,6 9.5,-2 1,-2",
    "z": "0.7,6 9.3,6! 0.7,0! 9.3,0",
    "{": "7.4,9.6 4.8,9.6 4.8,4.2! 2.4,4.2! 4.8,4.2! 4.8,-1.2 7.4,-1.2",
    "|": "5,9.6 5,-1.6",
    "}": "2.6,9.6 5.2,9.6 5.2,4.2! 7.6,4.2! 5.2,4.2! 5.2,-1.2 2.6,-1.2",
    "~": "0.8,3 3.2,5.2 6.8,2.8 9.2,5",
    "¡": "5,-2 5,3.6; 5,6.4",
    "¢": "9.5,6 0.5,6 0.5,0 9.5,0; 5,7.8 5,-1.8",
    "£": "9.4,7.6 9.4,9 3,9 3,0; 0.8,4.6 7.4,4.6; 0.6,0 9.6,0",
    "¤": "2.4,2 2.4,6.4 7.6,6.4 7.6,2 z; 0.8,0.4 2.7,2.3; 9.2,0.4 7.3,2.3; 0.8,8 2.7,6.1; 9.2,8 7.3,6.1",
    "¥": "0,9 5,5! 10,9; 5,5 5,0; 1.4,4 8.6,4; 1.4,1.7 8.6,1.7",
    "¦": "5,9.6 5,5.6; 5,2.4 5,-1.6",
    "§": "8.8,9.6 1.2,9.6 1.2,6 8.8,6 8.8,2.2 5,2.2; 1.2,-1.4 8.8,-1.4 8.8,2.2 1.2,2.2 1.2,6 5,6",
    "«": "4.6,6.8 1,3.8! 4.6,0.8; 9,6.8 5.4,3.8! 9,0.8",
    "¬": "1,5 9,5! 9,2.2",
    "\u00ad": "1.5,4 8.5,4",
    "°": "3.2,5.8 3.2,9 6.8,9 6.8,5.8 z",
    "±": "5,8.6 5,3; 1.2,5.8 8.8,5.8; 1.2,0.4 8.8,0.4",
    "µ": "0.5,6 0.5,-2; 0.5,0! 9.5,0; 9.5,6 9.5,0",
    "¶": "9,9 9,-1.6; 6,9 6,-1.6; 9,9 0.8,9 0.8,4.4 6,4.4",
    "·": "5,4.2",
    "»": "1,6.8 4.6,3.8! 1,0.8; 5.4,6.8 9,3.8! 5.4,0.8",
    "¿": "9.2,-2 0.8,-2 0.8,2 5,2 5,3.8; 5,6.6",
    "Æ": "0,0 4.4,9! 10,9; 5.4,9 5.4,0! 10,0; 5.4,4.8 9.4,4.8; 1.6,3 5.4,3",
    "Ð": "0.6,0! 0.6,9! 10,9 10,0 z; -0.6,4.5 5,4.5",
    "×": "1.8,7.2 8.2,0.8; 1.8,0.8 8.2,7.2",
    "Ø": "0,0 0,9 10,9 10,0 z; 0.4,-0.8 9.6,9.8",
    "Þ": "0.4,9 0.4,0; 0.4,7.2! 10,7.2 10,2 0.4,2",
    "ß": "0.5,0 0.5,9 8.6,9 8.6,5 4.8,5; 7.6,5 9.5,5 9.5,0 4.2,0",
    "æ": "0.6,6 5,6 5,0 0,0 0,3.1 10,3.1! 10,6 5,6; 5,0 9.8,0",
    "ð": "9.5,3 9.5,0 0.5,0 0.5,4.6 9.5,4.6; 9.5,3 9.5,5.4! 4.4,9.2; 5.4,6.4 8.6,8.8",
    "÷": "1,4 9,4; 5,7.2; 5,0.8",
    "ø": "0.5,0 0.5,6 9.5,6 9.5,0 z; 0.8,-1.2 9.2,7.2",
    "þ": "0.5,9 0.5,-2; 0.5,6! 9.5,6 9.5,0 0.5,0!",
    # parts of composed glyphs
    "dotless i": "2,6 5.2,6! 5.2,0; 1.5,0 9,0",
    "\u2044": "2,0 8,9",
}

# Accents, centred on x = 5, their foot at y = 0; the cedilla hangs from the baseline.
MARKS = {
    "\u0300": "3.2,2 6,0.2",
    "\u0301": "6.8,2 4,0.2",
    "\u0302": "2.4,0.2 5,2! 7.6,0.2",
    "\u0303": "1.4,0.3 3.4,1.8 6.6,0.3 8.6,1.8",
    "\u0304": "2,1 8,1",
    "\u0308": "2.6,1; 7.4,1",
    "\u030a": "3.7,0 3.7,1.8 6.3,1.8 6.3,0 z",
    "\u0327": "5.2,-0.2 6.4,-2 3.6,-2",
}
CEDILLA = "\u0327"
CORNER = 2.6     # radius of rounded corners
MARK_PEN = 0.8   # pen of accents and small parts, relative to the full pen
DOT_PEN = 1.35   # dots are a little wider than the pen that makes lines


def rounded(points, closed):
    """The points of a stroke with its soft corners replaced by short curves."""
    path = []
    for k, (corner, sharp) in enumerate(points):
        if sharp or (not closed and k in (0, len(points) - 1)):
            path.append(corner)
            continue
        before, after = points[k - 1][0] - corner, points[(k + 1) % len(points)][0] - corner
        legs = np.hypot(*before), np.hypot(*after)
        radius = min(CORNER, legs[0] / 2, legs[1] / 2)
        start, end = corner + before / legs[0] * radius, corner + after / legs[1] * radius
        path += [start * (1 - t) ** 2 + corner * 2 * t * (1 - t) + end * t * t for t in np.linspace(0, 1, 7)]
    return np.array(path + path[:1] if closed else path)


def strokes(description):
    """Pen strokes of a glyph description: a list of (relative pen width, points)."""
    result = []
    for stroke in filter(None, (part.split() for part in description.split(";"))):
        closed = stroke[-1] == "z"
        points = [(np.array([float(v) for v in p.rstrip("!").split(",")]), p.endswith("!"))
                  for p in stroke[:len(stroke) - closed]]
        result.append((1.0 if len(points) > 1 else DOT_PEN, rounded(points, closed)))
    return result


def placed(lines, scale=(1, 1), move=(0, 0), pen=1.0):
    return [(width * pen, points * scale + move) for width, points in lines]


def small(character, scale, x, y):
    return placed(glyph(character), (scale, scale), (x, y), MARK_PEN)


def glyph(character):
    """The strokes of any Latin-1 character: drawn, or composed of drawn parts."""
    if character in GLYPHS:
        return strokes(GLYPHS[character])
    if character in "©®":
        return strokes(GLYPHS["O"]) + small("C" if character == "©" else "R", 0.42, 2.9, 2.6)
    parts = unicodedata.normalize("NFKD", character)
    if "\u2044" in parts:  # a fraction; the wide slash leaves room for both small figures
        return small(parts[0], 0.42, 0, 5.2) + placed(strokes(GLYPHS["\u2044"]), pen=MARK_PEN) + small(parts[2], 0.42, 5.8, 0)
    if len(parts) == 1:    # superscripts, ordinals, the fixed space
        return glyph(parts) if parts == " " else small(parts, 0.58, 2.1, 3.8)
    base, mark = parts
    lines, top = strokes(GLYPHS["dotless i" if base == "i" else base]), 6.0
    if base.isupper() and mark != CEDILLA:  # capitals shrink to make room for the accent in their cell
        lines, top = placed(lines, scale=(1, 0.74)), 6.7
    return lines + placed(strokes(MARKS[mark]), move=(0, 0 if mark == CEDILLA else top + 1.6), pen=MARK_PEN)


def polyline_distance(x, y, points):
    if len(points) == 1:
        return np.hypot(x - points[0][0], y - points[0][1])
    distance = np.full(x.shape, np.inf)
    for a, b in zip(points[:-1], points[1:]):
        distance = np.minimum(distance, segment_distance(x, y, *a, *b))
    return distance


LETTER_GAP, SPACE_WIDTH = 3.6, 5.5


def text_layout(string):
    """(strokes, x offset) of each visible character in proportional setting, in glyph units."""
    layout, cursor = [], 0.0
    for character in string:
        lines = glyph(character)
        if not lines:
            cursor += SPACE_WIDTH
            continue
        left = min(points[:, 0].min() for _, points in lines)
        right = max(points[:, 0].max() for _, points in lines)
        layout.append((lines, cursor - left))
        cursor += right - left + LETTER_GAP
    return layout


def text_width(string):
    return max((offset + max(points[:, 0].max() for _, points in lines)
                for lines, offset in text_layout(string)), default=0.0)


def write_text(canvas, string, x, baseline, unit, colour, alpha=1.0, weight=0.8, align=0.0):
    """Writes proportional text; unit is the size of a glyph unit in pixels, capitals are nine high.

    align 0 starts the text at x, 0.5 centres it there, 1 ends it there.
    """
    x -= text_width(string) * unit * align
    for lines, offset in text_layout(string):
        for pen, line in lines:
            points = line * [unit, -unit] + [x + offset * unit, baseline]
            half = pen * weight * unit
            (x0, y0), (x1, y1) = (points.min(0) - half - 2).astype(int), (points.max(0) + half + 3).astype(int)
            at = np.s_[max(y0, 0):y1, max(x0, 0):x1]
            distance = polyline_distance(canvas.px[at], canvas.py[at], points)
            canvas.over(colour, alpha * np.clip(half - distance + 0.5, 0, 1), at)


def letter_fields(canvas, string, x, baseline, unit, slant=0.0):
    """For each letter of a line of text, the distance (pixels) to the middle of its strokes."""
    px = canvas.px + slant * (canvas.py - baseline)
    return [np.minimum.reduce([polyline_distance(px, canvas.py, points * [unit, -unit] + [x + offset * unit, baseline])
                               for _, points in lines])
            for lines, offset in text_layout(string)]

# ---------------------------------------------------------------------------------------------------------
# Fonts and lettering
# ---------------------------------------------------------------------------------------------------------

CELL = 32


def general_font():
    """16 x 16 cells in Latin-1 order.  Each glyph is centred in its cell, white on nothing."""
    c = Canvas(16 * CELL)
    cell_y, cell_x = np.mgrid[0:CELL, 0:CELL] + 0.5
    unit, baseline, pen = 2.0, 24.0, 1.55
    for code in [*range(32, 127), *range(160, 256)]:
        lines = glyph(chr(code))
        if not lines:
            continue
        left = min(points[:, 0].min() for _, points in lines)
        right = max(points[:, 0].max() for _, points in lines)
        x = CELL / 2 - unit * (left + right) / 2
        at = np.s_[code // 16 * CELL:(code // 16 + 1) * CELL, code % 16 * CELL:(code % 16 + 1) * CELL]
        for width, points in lines:
            distance = polyline_distance(cell_x, cell_y, points * [unit, -unit] + [x, baseline])
            c.over(WHITE, np.clip(pen * width - distance + 0.5, 0, 1), at)
    return c


# Which of the seven bars each digit lights: top, upper left, upper right, middle, lower left, lower right, bottom.
DIGIT_BARS = ["1110111", "0010010", "1011101", "1011011", "0111010", "1101011", "1101111", "1010010", "1111111", "1111011"]
DIGIT_STEP, DIGIT_WIDTH, DIGIT_HEIGHT = 101.99, 102, 72


def digits_font():
    """Ten digits of an instrument, side by side, each lit bar pointed at both ends and softly glowing."""
    c = Canvas(1024, 128)
    half_width, half_height, thick, gap = 25.0, 23.0, 5.4, 0.2
    bars = [((-1, -1), (1, -1)), ((-1, -1), (-1, 0)), ((1, -1), (1, 0)), ((-1, 0), (1, 0)),
            ((-1, 0), (-1, 1)), ((1, 0), (1, 1)), ((-1, 1), (1, 1))]
    for digit, lit in enumerate(DIGIT_BARS):
        y = c.py - DIGIT_HEIGHT / 2
        x = c.px - (digit + 0.5) * DIGIT_STEP + 0.12 * y  # a slight slant
        shape = np.full(x.shape, np.inf)
        for (start, end), on in zip(bars, lit):
            if on == "0":
                continue
            ax, ay, bx, by = start[0] * half_width, start[1] * half_height, end[0] * half_width, end[1] * half_height
            along, across = (x - (ax + bx) / 2, y - ay) if ay == by else (y - (ay + by) / 2, x - ax)
            length = abs(bx - ax + by - ay) / 2 - gap
            bar = np.maximum(np.abs(across) - thick, (np.abs(along) + np.abs(across) - length) * np.sqrt(0.5))
            shape = np.minimum(shape, bar)
        near = (np.abs(c.px - (digit + 0.5) * DIGIT_STEP) < DIGIT_WIDTH / 2 - 2) & (c.py < DIGIT_HEIGHT - 2)
        c.over(BLUE_PALE, 0.30 * np.exp(-np.maximum(shape, 0) / 2.2) * ramp(8, 3, shape) * near)
        c.over(mix(WHITE, ICE, ramp(-4, 0, shape)), np.clip(0.5 - shape, 0, 1))
    return c


FILES = pictures({
    "gui_bitmap_font.png": general_font,
    "font_numbers.png": digits_font,
})
