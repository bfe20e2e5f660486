# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Solid things: the player's ship and the enemies."""

import numpy as np

from canvas import *


def player_ship(plume):
    """A silver dart, nose up; plume is the length of the engine flames."""
    c = Canvas(256)
    for side in (-1, 1):
        along = np.clip((-0.44 - c.y) / plume, 0, 2)
        width = 0.055 * np.sqrt(np.clip(1 - along, 0, 1)) + 1e-3
        core = bell(c.x - side * 0.1, width) * ramp(0, 0.05, along) * ramp(1, 0.6, along)
        halo = bell(c.x - side * 0.1, 0.11) * bell(c.y + 0.47 + plume * 0.3, 0.08 + plume * 0.35)
        c.over(GOLD, halo * 0.7)
        c.over(mix(WHITE, GOLD, np.clip(along, 0, 1)), core)
    wings = polygon(c.x, c.y, mirrored([(0, 0.34), (0.10, 0.24), (0.22, -0.02), (0.56, -0.30), (0.60, -0.50),
                                        (0.30, -0.40), (0.16, -0.44), (0, -0.40)]))
    c.relief(wings, STEEL * 0.72, 0.10, ICE)
    flash = polygon(c.x, c.y, mirrored([(0, 0.14), (0.50, -0.29), (0.51, -0.34), (0, 0.02)]))
    c.fill(np.maximum(flash, wings + 0.03), STEEL_DARK, 0.75)
    for side in (-1, 1):
        c.relief(box(c.x, c.y, side * 0.1 - 0.06, -0.48, side * 0.1 + 0.06, -0.22, 0.03), STEEL_DARK * 1.6, 0.05, GOLD, 0.5)
        blade = segment_distance(c.x, c.y, side * 0.58, -0.16, side * 0.58, -0.52) - 0.022
        c.relief(blade, STEEL, 0.03, ICE)
    hull = polygon(c.x, c.y, mirrored([(0, 0.66), (0.045, 0.52), (0.10, 0.16), (0.115, -0.14), (0.07, -0.42), (0, -0.44)]))
    c.relief(hull, STEEL, 0.10, WHITE, 0.75)
    canopy = np.hypot(c.x / 0.05, (c.y - 0.20) / 0.13) - 1
    c.relief(canopy * 0.05, rgb("1d4a5c"), 0.05, ICE)
    c.over(WHITE, 0.9 * bell(np.hypot(c.x + 0.015, (c.y - 0.255) / 2), 0.016))
    c.fade_out(ramp(0.99, 0.85, c.r))
    return c


def enemy_blue():
    """Round: a crescent, horns forward, that carries a ringed orb."""
    c = Canvas(128)
    crescent = np.maximum(disc(c.x, c.y, 0, -0.02, 0.86), -disc(c.x, c.y, 0, 0.34, 0.66))
    c.over(BLUE, 0.4 * ramp(0.14, 0.0, crescent) * ramp(0.98, 0.9, c.r) * ramp(0.74, 0.56, c.y))  # none above the horns
    c.relief(crescent, BLUE * 0.95, 0.20, BLUE_PALE, 0.95)
    c.line(disc(c.x, c.y, 0, 0.14, 0.44), BLUE_PALE, 0.055)
    orb = disc(c.x, c.y, 0, 0.14, 0.30)
    c.relief(orb, mix(BLUE, BLUE_PALE, ramp(0.0, -0.28, orb)), 0.30, WHITE, 0.7)
    c.over(WHITE, bell(np.hypot(c.x, c.y - 0.14), 0.14))
    return c


def enemy_red():
    """Angular: a barbed star with a long fore spike and a diamond furnace."""
    c = Canvas(128)
    star = polygon(c.x, c.y, mirrored([(0, 0.94), (0.15, 0.34), (0.48, 0.52), (0.36, 0.06), (0.93, -0.46),
                                       (0.36, -0.36), (0.25, -0.90), (0, -0.46)]))
    c.over(RED, 0.4 * ramp(0.10, 0.0, star) * ramp(0.98, 0.9, np.maximum(np.abs(c.x), np.abs(c.y))))
    c.relief(star, RED * 0.85, 0.16, rgb("ff7048"), 0.9)
    for spike in ((0, 0.86), (0.44, 0.47), (-0.44, 0.47), (0.84, -0.42), (-0.84, -0.42), (0.24, -0.8), (-0.24, -0.8)):
        c.fill(segment_distance(c.x, c.y, 0, -0.05, *spike) - 0.012, RED_DARK, 0.8)
    furnace = np.abs(c.x) * 1.5 + np.abs(c.y + 0.05) * 0.95 - 0.30
    c.fill(furnace - 0.05, RED_DARK)
    c.fill(furnace, mix(RED_PALE, RED, np.clip(1 + furnace / 0.30, 0, 1)))
    c.over(rgb("fff0c8"), bell(np.hypot(c.x * 1.5, c.y + 0.05), 0.13))
    return c


FILES = pictures({
    "player_ship_1.png": lambda: player_ship(plume=0.26),
    "player_ship_2.png": lambda: player_ship(plume=0.44),
    "enemy_blue.png": enemy_blue,
    "enemy_red.png": enemy_red,
})
