# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Lettering and instruments: the title, the chain banner, the gauge, the keyboard and the pointer."""

import numpy as np

from canvas import *
from typeface import letter_fields, text_width, write_text


def splash():
    """The title; its colour runs from the blue family to the red one."""
    c = Canvas(1024, 128)
    unit, baseline, pen, title = 7.6, 97.5, 6.4, "QUORVANE"
    x = 512 - text_width(title) * unit / 2
    shapes = [field - pen for field in letter_fields(c, title, x, baseline, unit)]
    across = c.px / 1024
    hue = np.where((across < 0.5)[..., None], mix(BLUE, ICE, ramp(0.12, 0.5, across)), mix(ICE, RED, ramp(0.5, 0.9, across)))
    for side, colour in ((-1, BLUE), (1, RED)):  # a streak of light on either side, thinning outward
        away = side * (c.px - 512)
        streak = bell(c.py - 64, 1.6 + 2.4 * ramp(500, 430, away)) * ramp(428, 446, away) * ramp(508, 440, away)
        c.over(mix(colour, WHITE, 0.5 * streak), streak)
    for shape in shapes:
        glow = 0.55 * np.exp(-np.maximum(shape, 0) / 6) * ramp(26, 8, shape)
        c.over(hue, glow * ramp(0, 6, c.py) * ramp(128, 122, c.py))
    for shape in shapes:
        sheen = 0.75 * ramp(105, 35, c.py) + 0.25 * bell(shape + pen, 1.6)
        c.over(mix(hue * 0.55, 0.35 * hue + 0.65 * WHITE, sheen), np.clip(0.5 - shape, 0, 1))
        c.over(WHITE, 0.8 * np.clip(0.5 - np.abs(shape + 0.9) + 0.4, 0, 1) * ramp(90, 40, c.py))
    return c


def chain_banner(frame):
    """Frame 0 to 6 of the word that builds up: all letters stand there as outlines from the first frame, so
    the word can be read although each frame lasts a twentieth of a second; one more is struck in each."""
    c = Canvas(512, 128)
    unit, baseline, pen, word = 6.0, 92.0, 5.2, "CHAIN!"
    fields = letter_fields(c, word, 256 - text_width(word) * unit / 2 - 2, baseline, unit, slant=0.18)
    finale = frame == 6
    if finale:
        c.over(mix(WHITE, VIOLET, ramp(0, 14, np.abs(c.py - 65))),
               0.8 * bell(c.py - 65, 5) * ramp(2, 90, c.px) * ramp(510, 422, c.px))
    for k, field in enumerate(fields):
        shape = field - pen
        border = ramp(0, 8, c.py) * ramp(128, 120, c.py)
        if k > frame:
            c.over(VIOLET, 0.75 * np.clip(1.4 - np.abs(shape), 0, 1))
            continue
        fresh = 1.0 if k == frame or finale else 0.35
        c.over(VIOLET, border * fresh * 0.9 * np.exp(-np.maximum(shape, 0) / 7) * ramp(26, 6, shape))
        face = mix(rgb("d9ccff"), WHITE, np.clip(fresh * 0.8 + 0.5 * ramp(90, 40, c.py), 0, 1))
        c.over(face, np.clip(0.5 - shape, 0, 1))
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
    """Frame of the gauge: outline of the slot, ticks at a chain of one, two and three, an arch for the number."""
    c = Canvas(1024, 128)
    c.pixel = 1.0
    wing = gauge_wing(c)
    d = np.abs(c.px - GAUGE_MIDDLE)
    arch = polygon(d, c.py, [(-10, 26), (112, 26), (126, 38), (116, 78), (-10, 78)])
    rail = np.abs(wing)
    outline = np.minimum(rail, np.where(c.py < 78, np.abs(arch), 99))
    c.over(BLACK, 0.25 * ramp(0, -2, wing) * ramp(-6, -2, wing))  # depth along the inner edge of the slot
    c.over(ICE, 0.16 * np.exp(-outline / 4) * ramp(14, 4, outline))
    c.over(mix(STEEL, ICE, ramp(100, 30, c.py)), 0.85 * np.clip(1.7 - outline, 0, 1))
    for third in (1, 2, 3):
        x = third * 1024 / 6 - (20 if third == 3 else 0)  # the last tick stays inside the slot
        c.over(WHITE, 0.85 * np.clip(1.8 - np.abs(d - x), 0, 1) * np.clip(0.5 - wing - 1, 0, 1))
    for side, mark in ((-1, polygon(c.px, c.py, [(508, 14), (494, 20), (508, 26), (502, 20)])),
                       (1, disc(c.px, c.py, 522, 20, 5))):
        c.fill(mark, RED if side < 0 else BLUE_PALE, 0.9)
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
