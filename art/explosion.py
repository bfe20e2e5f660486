# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The explosion of a ship, a quarter of a second in four pictures: a flash, a ball of fire, its shell with
splinters of the hull, and smoke.  One cloud and one set of splinters run through all of them, so that they
read as one event that grows."""

import numpy as np
from scipy.ndimage import map_coordinates

from canvas import *

FIRE = [(0.0, rgb("14060a")), (0.22, rgb("5c120c")), (0.42, rgb("c8371a")), (0.62, rgb("ff8a2c")),
        (0.80, rgb("ffd684")), (1.0, rgb("fffdf4"))]
SIZE = 256
SPLINTERS = 22


def fire(heat):
    """The colour of hot gas: 0 is soot, 1 is white."""
    stops = [stop for stop, _ in FIRE]
    return np.dstack([np.interp(heat, stops, [colour[k] for _, colour in FIRE]) for k in range(3)])


def billows(c, growth):
    """A bulging cloud that is the same in every picture, stretched outward by its growth: three scales of
    noise, the finer ones bent by the coarser."""
    size = SIZE * 2
    coarse, fine, finest = (clouds(size, steepness, seed, smallest) for steepness, seed, smallest in
                            ((2.2, 401, 3), (1.9, 402, 8), (1.5, 403, 20)))

    def look_up(field, x, y):
        places = [(0.5 - y / growth * 0.17) * size, (x / growth * 0.17 + 0.5) * size]
        return map_coordinates(field, places, order=1, mode="wrap")

    bend = 0.10 * look_up(coarse, c.x, c.y)
    middle = look_up(fine, c.x + bend, c.y - bend)
    return 0.50 * look_up(coarse, c.x, c.y) + 0.60 * (1 - np.abs(middle)) + 0.14 * look_up(finest, c.x + bend, c.y)


def lit_from_inside(field, pixel, strength=0.05):
    """Light and shade of a bulging surface whose inside glows: bright where it faces the middle of a bulge."""
    slope_y, slope_x = np.gradient(field, pixel)
    return 1 / np.sqrt(1 + strength * (slope_x ** 2 + slope_y ** 2))


def splinters(c, distance, size, heat, alpha):
    """Pieces of the hull on their ways outward, each with a streak of fire behind it: uneven triangles, dark on
    one side, glowing along the edges."""
    rng = np.random.default_rng(404)
    for k in range(SPLINTERS):
        angle = 2 * np.pi * (k + rng.uniform(-0.45, 0.45)) / SPLINTERS
        reach, scale, turn = rng.uniform(0.45, 1.0), size * rng.choice([0.035, 0.05, 0.085]), rng.uniform(-2.5, 2.5)
        corners = [(scale * rng.uniform(0.7, 1.3) * np.cos(t), scale * rng.uniform(0.35, 0.7) * np.sin(t))
                   for t in (0.0, 2.2 + rng.uniform(-0.5, 0.5), 4.1 + rng.uniform(-0.5, 0.5))]
        away = distance * reach
        u, v = c.x * np.cos(angle) + c.y * np.sin(angle) - away, c.y * np.cos(angle) - c.x * np.sin(angle)
        behind = np.clip(-u / (0.55 * away + 1e-6), 0, 1)
        streak = bell(v, 0.45 * scale * (1.05 - behind)) * np.where((u < 0) & (behind < 1), (1 - behind) ** 2, 0)
        c.over(fire(np.full(c.x.shape, min(1.0, heat + 0.1))), alpha * 0.6 * streak)
        turned = u * np.cos(turn) + v * np.sin(turn), v * np.cos(turn) - u * np.sin(turn)
        piece = polygon(*turned, corners)
        c.over(rgb("ff8a3c"), alpha * 0.5 * bell(np.maximum(piece, 0), 0.028))
        c.fill(piece, mix(rgb("2a2430"), rgb("c9b6a8"), np.clip(0.5 + turned[1] / scale, 0, 1)), alpha)
        c.over(fire(np.full(c.x.shape, heat)), alpha * 0.8 * bell(piece, 0.011))


def flash():
    """A white heart with rays, and the first fire around it."""
    c = Canvas(SIZE)
    field = billows(c, 0.45)
    rays = around(c.angle, 36, seed=405, steepness=0.25)
    c.over(rgb("ff7a2e"), 0.55 * bell(c.r, 0.56))
    ball = ramp(0.50, 0.26, c.r - 0.10 * field)
    c.over(fire(np.clip(1.25 - c.r * 1.15 + 0.10 * field, 0, 1)), ball)
    c.over(rgb("ffe6b0"), np.clip(0.75 * bell(c.r, 0.40 * np.maximum(1 + 0.55 * rays, 0.3)), 0, 1))
    c.over(WHITE, bell(c.r, 0.27))
    c.fade_out(ramp(0.97, 0.75, c.r))
    return c


def fireball():
    c = Canvas(SIZE)
    field = billows(c, 0.75)
    body = c.r - 0.15 * field
    shade = lit_from_inside(field, c.pixel)
    c.over(rgb("ff5a24"), 0.42 * ramp(0.95, 0.35, c.r))
    heat = np.clip((1.12 - 0.85 * c.r + 0.20 * field) * (0.62 + 0.42 * shade), 0, 1)
    c.over(fire(heat), ramp(0.72, 0.50, body))
    c.over(rgb("fff0c4"), 0.75 * bell(c.r, 0.24))
    splinters(c, 0.68, 0.95, 0.9, 1.0)
    c.fade_out(ramp(0.97, 0.84, c.r))
    return c


def shell():
    """The ball has gone hollow and cools; the splinters overtake it."""
    c = Canvas(SIZE)
    field = billows(c, 0.98)
    shade = lit_from_inside(field, c.pixel, 0.08)
    ring = bell(c.r - 0.56 - 0.05 * field, 0.21) + 0.30 * bell(c.r, 0.5)
    heat = np.clip((0.60 + 0.25 * field - 0.22 * c.r) * (0.5 + 0.5 * shade), 0, 1)
    c.over(fire(heat), np.clip(ring * (0.50 + 0.42 * field), 0, 0.88))
    splinters(c, 0.88, 0.9, 0.7, 0.95)
    c.fade_out(ramp(0.98, 0.86, c.r))
    return c


def smoke():
    """What is left: rags of smoke, the last of them still glowing, and embers."""
    c = Canvas(SIZE)
    field = billows(c, 1.12)
    ring = bell(c.r - 0.62 - 0.05 * field, 0.24)
    rags = np.clip(ring * (field - 0.15), 0, 1)
    c.over(mix(rgb("3b3440"), rgb("8a4a34"), np.clip(0.5 * field - 0.2, 0, 1)), 0.50 * rags)
    rng = np.random.default_rng(406)
    for _ in range(34):
        angle, away = rng.uniform(0, 2 * np.pi), rng.uniform(0.35, 0.90)
        spot = np.hypot(c.x - away * np.cos(angle), c.y - away * np.sin(angle))
        bright = rng.uniform(0.35, 0.9)
        c.over(rgb("ff7a30"), 0.5 * bright * bell(spot, 0.030))
        c.over(rgb("ffe0a8"), bright * bell(spot, 0.011))
    c.fade_out(ramp(0.98, 0.82, c.r))
    return c


FILES = pictures({
    "enemy_explosion_1.png": flash,
    "enemy_explosion_2.png": fireball,
    "enemy_explosion_3.png": shell,
    "enemy_explosion_4.png": smoke,
})
