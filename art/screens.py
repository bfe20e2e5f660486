# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Lettering and instruments: the title, the chain banner, the gauge, the keyboard and the pointer."""

import numpy as np

from canvas import *
from typeface import letter_fields, text_width, write_text


def metal(c, shape, top, bottom, tint):
    """Polished metal in a shape (pixels): light above, a dark horizon, light below, a bevel along the edge."""
    height = np.clip((c.py - top) / (bottom - top), 0, 1)
    face = mix(mix(rgb("f4f9ff"), rgb("8fa4c4"), ramp(0.05, 0.46, height)),
               mix(rgb("33415e"), rgb("d5e3f6"), ramp(0.50, 1.0, height)), ramp(0.46, 0.52, height))
    face = mix(face, face * tint * 1.25, np.full(shape.shape, 0.62))
    slope_y, slope_x = np.gradient(shape)
    bevel = ramp(-5.5, -1.0, shape)  # 0 on the face, 1 at the edge
    facing = np.clip(-0.75 * slope_y - 0.45 * slope_x, -1, 1)
    lit = face + (bevel * facing)[..., None] * np.where(facing > 0, 0.62, 0.48)[..., None]
    c.over(np.clip(lit, 0, 1), np.clip(0.5 - shape, 0, 1))
    c.over(WHITE, 0.85 * np.clip(1.2 - np.abs(shape + 1.1), 0, 1) * np.clip(-slope_y, 0, 1) * (shape < 0.5))


def splash():
    """The title in metal, blue at one end and red at the other; its O is the hole."""
    c = Canvas(1024, 128)
    c.pixel = 1.0
    unit, baseline, pen, title = 7.7, 98.0, 7.4, "QUORVANE"
    x = 512 - text_width(title) * unit / 2
    shapes = [field - pen for field in letter_fields(c, title, x, baseline, unit, slant=0.10)]
    across = (c.px - x) / (1024 - 2 * x)
    tint = mix(mix(rgb("5fb0ff"), WHITE, ramp(0.0, 0.48, across)), rgb("ff6a48"), ramp(0.52, 1.0, across))
    edge = ramp(1, 9, c.py) * ramp(127, 119, c.py) * ramp(2, 40, c.px) * ramp(1022, 984, c.px)
    hole = shapes[title.index("O")]
    middle_y, middle_x = np.argwhere(hole < 0).mean(0) + 0.5
    dx, dy = c.px - middle_x, c.py - middle_y
    r, angle = np.hypot(dx, dy), np.arctan2(dy, dx)
    together = np.minimum.reduce([r - 44 if shape is hole else shape for shape in shapes])
    c.over(tint * 0.9, edge * 0.50 * np.exp(-np.maximum(together, 0) / 7.5))
    c.over(rgb("060a16"), edge * 0.75 * ramp(5.0, 1.5, together))
    for shape in shapes:
        if shape is not hole:
            metal(c, shape, baseline - 9 * unit - pen, baseline + pen, tint)
    streams = 0.75 + 0.25 * np.cos(3 * angle + r / 7)
    c.over(mix(rgb("4aa0ff"), rgb("ff7a4a"), 0.5 + 0.5 * np.cos(angle)), edge * 0.9 * bell(r - 45, 8.5) * streams)
    c.over(rgb("ffe9c8"), edge * bell(r - 40.5, 3.4))
    c.over(WHITE, edge * bell(r - 39.5, 1.7))
    c.over(BLACK, np.clip(38.3 - r, 0, 1))
    for side, colour in ((-1, BLUE), (1, RED)):  # the plane in which everything falls: a streak across
        away = side * dx
        c.over(mix(WHITE, colour, ramp(40, 90, away)), edge * 0.75 * bell(dy + 0.06 * dx, 1.5) * ramp(38, 46, away) *
               ramp(112, 50, away))
    return c


def chain_banner(frame):
    """Frame 0 to 6 of the word that builds up: all letters stand there as outlines from the first frame, so
    the word can be read although each frame lasts a twentieth of a second; one more is struck in each, and the
    last frame is the blow."""
    c = Canvas(512, 128)
    c.pixel = 1.0
    unit, baseline, pen, word = 6.0, 92.0, 5.6, "CHAIN!"
    fields = letter_fields(c, word, 256 - text_width(word) * unit / 2 - 2, baseline, unit, slant=0.18)
    finale = frame == 6
    border = ramp(1, 10, c.py) * ramp(127, 118, c.py) * ramp(1, 16, c.px) * ramp(511, 496, c.px)
    dx, dy = c.px - 256, c.py - 65
    if finale:
        rays = np.maximum(1 + 0.8 * around(np.arctan2(dy * 2.2, dx), 40, seed=71, steepness=0.2), 0.15)
        c.over(mix(WHITE, VIOLET, ramp(0, 40, np.abs(dy))), border * 0.62 * bell(dy, 34 * rays) * ramp(250, 60, np.abs(dx)))
        c.over(WHITE, border * 0.9 * bell(dy, 4.0) * ramp(254, 90, np.abs(dx)))
    else:
        reach = 40 + 72 * (frame + 1)  # the light runs along the word ahead of its letters
        c.over(VIOLET, border * 0.30 * bell(dy, 24) * ramp(reach, reach - 130, c.px) * ramp(2, 60, c.px))
    for k, field in enumerate(fields):
        shape = field - pen
        if k > frame:
            c.over(rgb("0c0a1c"), 0.45 * ramp(2.5, 0.5, shape))
            c.over(VIOLET, 0.85 * np.clip(1.5 - np.abs(shape), 0, 1))
            continue
        fresh = 1.0 if k == frame or finale else 0.45
        c.over(VIOLET, border * (0.35 + 0.6 * fresh) * np.exp(-np.maximum(shape, 0) / (5 + 4 * fresh)))
        c.over(rgb("140c2c"), border * 0.8 * ramp(3.5, 1.0, shape))
        metal(c, shape, baseline - 9 * unit - pen, baseline + pen, rgb("dccbff"))
        c.over(WHITE, 0.62 * fresh * np.clip(0.5 - shape, 0, 1))
    return c


# ---------------------------------------------------------------------------------------------------------
# HUD and screens
# ---------------------------------------------------------------------------------------------------------

GAUGE_MIDDLE, GAUGE_FLOOR = 512, 97


def gauge_wing(c):
    """Distance field (pixels) of the slot the bar runs in: low below the number, a long wing on either side."""
    d = np.abs(c.px - GAUGE_MIDDLE)
    top = np.interp(d, [0, 112, 150, 480, 500], [85, 85, 68, 84, 92])
    slope = np.interp(d, [0, 111, 113, 149, 151, 480], [0, 0, 0.45, 0.45, 0.05, 0.05])
    return np.maximum.reduce([(top - c.py) / np.sqrt(1 + slope ** 2), c.py - GAUGE_FLOOR, d - 496])


def gauge_bar():
    """Left half red with angular hatching, right half blue with round beads: readable without the hue."""
    c = Canvas(1024, 128)
    c.pixel = 1.0
    wing = gauge_wing(c) + 3
    d = np.abs(c.px - GAUGE_MIDDLE)
    left = c.px < GAUGE_MIDDLE
    hatch = ramp(0.35, 0.65, np.abs((d + np.abs(c.py - 88) * 0.9) / 16 % 1 * 2 - 1))
    beads = ramp(6.5, 4.0, np.hypot(d % 20 - 10, c.py - 90))
    red = mix(RED * 0.75, RED_PALE, hatch * ramp(0, 420, d) * 0.6 + 0.35 * hatch)
    blue = mix(BLUE * 0.85, BLUE_PALE, 0.55 * beads + 0.4 * ramp(0, 420, d))
    colour = np.where(left[..., None], red, blue)
    c.over(np.where(left[..., None], RED, BLUE), 0.35 * ramp(5, 0, wing) * (wing > 0))
    c.fill(wing, colour * (0.8 + 0.35 * bell(wing + 4, 4))[..., None], 0.92)
    c.fade_out(ramp(511, 500, d))
    return c


def gauge():
    """The instrument around the bar: a metal rim with glass over the slot and over the window for the number.

    It is drawn over both, so the glass only reflects and hardly dims."""
    c = Canvas(1024, 128)
    c.pixel = 1.0
    wing = gauge_wing(c)
    d = np.abs(c.px - GAUGE_MIDDLE)
    arch = polygon(d, c.py, [(-10, 24), (110, 24), (128, 40), (118, 79), (-10, 79)])
    outline = np.minimum(np.abs(wing), np.where(c.py < 79, np.abs(arch), 99))
    c.over(ICE, 0.20 * np.exp(-outline / 5) * ramp(16, 4, outline))                 # the rim glows a little
    # Glass: a sky reflected in the upper part, which ends in a soft line, and a tint below.
    sky = np.array([0.75, 0.88, 1.0])
    c.over(BLACK, 0.30 * np.clip(-wing, 0, 1) * ramp(-9, -1, wing))
    slot_top = c.py - np.interp(d, [0, 112, 150, 480, 500], [85, 85, 68, 84, 92])
    c.over(sky, np.clip(-wing, 0, 1) * (0.06 + 0.34 * ramp(8.5, 2, slot_top)))
    c.over(sky, np.clip(-arch, 0, 1) * (0.05 + 0.15 * ramp(52, 46, c.py + 0.06 * (c.px - GAUGE_MIDDLE))
                                        * ramp(58, 26, c.py)))
    for minor in range(1, 18):                                                      # the scale
        x = minor * 1024 / 36
        c.over(WHITE, (0.35 if minor % 3 else 0.0) * np.clip(1.2 - np.abs(d - x), 0, 1) * np.clip(0.5 - wing - 1, 0, 1)
               * ramp(90, 94, c.py))
    for third in (1, 2, 3):
        x = third * 1024 / 6 - (20 if third == 3 else 0)  # the last tick stays inside the slot
        c.over(WHITE, 0.85 * np.clip(1.8 - np.abs(d - x), 0, 1) * np.clip(0.5 - wing - 1, 0, 1))
    # The rim, thicker outside than inside, so that it takes little from the slot.
    rim = np.minimum(np.maximum(wing - 4.5, -1.5 - wing), np.where(c.py < 79, np.maximum(arch - 4.5, -1.5 - arch), 99))
    c.relief(rim, mix(STEEL, ICE, 0.25), 3.0, WHITE, 0.25)
    # A lamp for each colour on the shoulders, in the shapes of the families.
    for side, mark in ((-1, polygon(c.px, c.py, [(508, 10), (493, 16.5), (508, 23), (501, 16.5)])),
                       (1, disc(c.px, c.py, 523, 16.5, 5.5))):
        lamp = RED if side < 0 else BLUE_PALE
        c.over(lamp, 0.45 * np.exp(-np.maximum(mark, 0) / 3.5) * ramp(12, 3, mark))
        c.fill(mark, mix(lamp, WHITE, 0.35 * ramp(0, -4, mark)), 0.95)
    c.fade_out(ramp(511, 503, d))
    return c


def cursor():
    """A pointer whose tip is the picture's top left corner, one pixel in."""
    c = Canvas(32)
    c.pixel = 1.0
    arrow = polygon(c.px, c.py, [(2.5, 2.5), (25, 14), (15, 17), (11.5, 27)])
    c.over(BLUE, 0.5 * ramp(3.5, 0, arrow) * ramp(1, 4, np.minimum(c.px, c.py)) * ramp(31, 28, c.px))
    c.fill(arrow, mix(ICE, BLUE, ramp(4, 30, c.py)))
    c.line(arrow + 0.8, WHITE, 1.2)
    return c


KEY, KEY_X, KEY_Y = 52, 32, 22
KEY_ROWS = [  # label and width of each key, in units of one key; None leaves a gap
    [("ESC", 1.5), (None, 0.5)] + [(f"F{n}", 1.083) for n in range(1, 13)],
    [(k, 1) for k in "`1234567890-="] + [("BACK", 2)],
    [("TAB", 1.5)] + [(k, 1) for k in "QWERTYUIOP[]"] + [("\\", 1.5)],
    [("CAPS", 1.75)] + [(k, 1) for k in "ASDFGHJKL;'"] + [("RETURN", 2.25)],
    [("SHIFT", 2.25)] + [(k, 1) for k in "ZXCVBNM,./"] + [("SHIFT", 2.75)],
    [("CTRL", 1.5), (None, 1), ("ALT", 1.5), ("SPACE", 7), ("ALT", 1.5), (None, 1), ("CTRL", 1.5)],
]
ARROWS = {"UP": (1, 4, 0), "LEFT": (0, 5, 90), "DOWN": (1, 5, 180), "RIGHT": (2, 5, -90)}  # column, row, degrees

ACTIONS = [  # keys, how the legend shows them, what they do, colour
    (("W", "UP"), "W  ↑", "forward", BLUE_PALE),
    (("S", "DOWN"), "S  ↓", "back", BLUE_PALE),
    (("A", "D"), "A  D", "strafe", BLUE_PALE),
    (("LEFT", "RIGHT"), "← →", "turn", GREEN),
    (("SPACE", "V"), "SPACE  V", "fire", RED_PALE),
    (("CTRL",), "CTRL", "swap shield", VIOLET),
    (("ESC",), "ESC", "end game", WHITE),
    (("TAB",), "TAB", "complete", GOLD),
    (("RETURN",), "RETURN", "accept", GOLD),
]


def arrow_head(x, y, cx, cy, size, degrees):
    """An upward arrow turned counter-clockwise, in pixels with y downward."""
    t = np.radians(degrees)
    u, v = (x - cx) * np.cos(t) - (y - cy) * np.sin(t), (x - cx) * np.sin(t) + (y - cy) * np.cos(t)
    outline = mirrored([(0, -1), (0.9, 0.1), (0.3, 0.1), (0.3, 1), (0, 1)])
    return polygon(u, v, [(px * size, py * size) for px, py in outline])


def keyboard():
    c = Canvas(1024, 512)
    c.pixel = 1.0
    colours = {key: colour for keys, _, _, colour in ACTIONS for key in keys}

    def key_cap(label, left, row, width):
        top = KEY_Y + row * KEY + (10 if row else 0)
        at = np.s_[int(top):int(top + KEY), int(left):int(left + width + 1)]
        cap = box(c.px[at], c.py[at], left + 2, top + 2, left + width - 2, top + KEY - 2, 8)
        colour = colours.get(label)
        body = STEEL_DARK * 0.55 if colour is None else colour * 0.34
        shade = ramp(top + KEY, top, c.py[at])
        c.over(mix(body, body * 1.7, shade), np.clip(0.5 - cap, 0, 1) * 0.92, at)
        c.over(STEEL_DARK * 1.4 if colour is None else colour,
               np.clip((0.9 if colour is None else 1.7) - np.abs(cap + 1.5), 0, 1), at)
        middle = left + width / 2, top + KEY / 2
        if label in ARROWS:
            c.fill(arrow_head(c.px, c.py, *middle, 13, ARROWS[label][2]), WHITE)
        else:
            unit = min(1.9 if len(label) == 1 else 1.25, (width - 22) / max(text_width(label), 1))
            write_text(c, label, middle[0], middle[1] + 4.5 * unit, unit, WHITE if colour is not None else STEEL * 0.55,
                   weight=0.85, align=0.5)

    for row, keys in enumerate(KEY_ROWS):
        left = KEY_X
        for label, units in keys:
            if label:
                key_cap(label, left, row, units * KEY)
            left += units * KEY
    for label, (column, row, _) in ARROWS.items():
        key_cap(label, KEY_X + 15 * KEY + 24 + column * KEY, row, KEY)
    keyboard_legend(c)
    return c


def keyboard_legend(c):
    unit, turn = 1.5, {"↑": 0, "↓": 180, "←": 90, "→": -90}
    for k, (_, shown, meaning, colour) in enumerate(ACTIONS):
        x, y = (36, 314, 698)[k // 3], 386 + k % 3 * 40
        width = 0
        for part in shown.split():
            if part in turn:
                c.fill(arrow_head(c.px, c.py, x + width + 10, y + 7, 9, turn[part]), colour)
                width += 34
            else:
                write_text(c, part, x + width, y + 14, unit, colour, weight=0.95)
                width += text_width(part) * unit + 16
        write_text(c, meaning, x + (98, 166, 140)[k // 3], y + 14, unit, WHITE, alpha=0.92)


FILES = pictures({
    "game_splash.png": splash,
    **{f"gui_chain_{k + 1}.png": lambda k=k: chain_banner(k) for k in range(7)},
    "gui_gauge.png": gauge,
    "gui_gauge_bar.png": gauge_bar,
    "gui_cursor.png": cursor,
    "menu_keyboard.png": keyboard,
})
