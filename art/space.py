# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The black hole, its rays and twirl, and the space behind everything."""

import numpy as np

from canvas import *


# ---------------------------------------------------------------------------------------------------------
# The black hole and space
# ---------------------------------------------------------------------------------------------------------


def black_hole():
    """An absolutely black disc that fills the quad (the zone of death), inside a thin photon ring."""
    c = Canvas(512)
    c.fill(c.r - 0.972, BLACK)
    ring = bell(c.r - 0.968, 0.016)
    warmth = 0.5 + 0.5 * np.cos(c.angle - 2.2)
    c.over(mix(ICE, RED_PALE, warmth), ring)
    c.fade_out(ramp(0.998, 0.978, c.r))
    return c


def black_hole_rays():
    """Light dragged outward; shown at three and six times the hole's radius, so it starts well inside both."""
    c = Canvas(512)
    fine, broad, reach = (around(c.angle, waves, seed, s) for waves, seed, s in ((90, 51, 0.2), (14, 52, 0.3), (40, 53, 0.4)))
    streaks = ramp(-0.4, 2.4, fine + 0.8 * broad)
    fade = ramp(0.10, 0.22, c.r) * np.clip(1 - (c.r - 0.15) / (0.62 + 0.16 * np.tanh(reach)), 0, 1) ** 1.8
    halo = 0.16 * ramp(0.12, 0.30, c.r) * ramp(0.62, 0.25, c.r)
    c.over(mix(ICE, RED_PALE, ramp(0.18, 0.5, c.r)), 0.55 * streaks * fade + halo)
    c.fade_out(ramp(0.98, 0.7, c.r))
    return c


def twirl():
    """Spiral arms of dust.  The game draws them at a tenth of their strength, hence the full alpha here."""
    c = Canvas(1024)
    log_r = np.log(np.maximum(c.r, 0.01))
    spin = c.angle + 2.3 * log_r
    arms = sum(w * np.cos(n * spin + p) for n, w, p in ((3, 1.0, 0.0), (5, 0.5, 1.1), (8, 0.35, 2.0), (13, 0.3, 0.4)))
    dust = clouds(1024, 1.5, seed=61, smallest=3)
    light = ramp(-0.3, 2.2, arms + 0.5 * dust)
    c.over(mix(ICE, VIOLET, ramp(0.1, 0.8, c.r)), light * ramp(0.03, 0.15, c.r))
    c.fade_out(ramp(0.98, 0.35, c.r))
    return c


def space():
    """Nebula and stars; dark enough that every sprite stands out.  Returns 8-bit RGB."""
    size = 2048
    c = Canvas(size)
    # Shifting the lookup by other noise folds the clouds into filaments; the noise tiles, so indices wrap.
    bend_x, bend_y = clouds(size, 2.4, seed=71), clouds(size, 2.4, seed=72)
    row = (c.py + 60 * bend_y).astype(int) % size
    column = (c.px + 60 * bend_x).astype(int) % size
    haze, vein, patch = (clouds(size, s, seed)[row, column] for s, seed in ((1.75, 73), (1.5, 74), (2.1, 75)))
    filament = np.exp(-2.2 * np.abs(vein)) * ramp(-0.4, 1.6, haze)
    colour = np.array([0.012, 0.016, 0.032]) + np.zeros((size, size, 3))
    colour += ramp(-1.5, 2.4, haze)[..., None] * mix(rgb("14284f"), rgb("3a1d4a"), ramp(-1, 1, patch)) * 0.75
    colour += filament[..., None] * mix(rgb("2a5f86"), rgb("7a3440"), ramp(-0.5, 1.2, patch)) * 0.42
    colour *= (1 - 0.45 * ramp(0.4, 2.0, -vein - 0.4 * haze))[..., None]  # dark lanes
    # The lookup goes to whole pixels, which leaves a fine grain; half the resolution and back smooths it.
    image = np.asarray(Image.fromarray(to_bytes(np.sqrt(np.clip(colour, 0, 1)))).resize((1024, 1024), Image.BOX)
                       .resize((size, size), Image.BICUBIC)) / 255.0
    colour = image ** 2
    scatter_stars(colour, seed=76)
    return to_bytes(colour)


def scatter_stars(colour, seed):
    rng = np.random.default_rng(seed)
    size = colour.shape[0]
    tints = [ICE, WHITE, rgb("ffe3c0"), rgb("b8d4ff")]
    for magnitude in rng.pareto(1.6, 3200):
        x, y = rng.uniform(12, size - 12, 2)
        radius, bright = min(0.75 + 0.16 * magnitude, 2.4), min(0.16 + 0.20 * magnitude, 0.95)
        tint = tints[rng.integers(len(tints))]
        x0, y0 = int(x) - 11, int(y) - 11
        yy, xx = np.mgrid[y0:y0 + 23, x0:x0 + 23] + 0.5
        spot = bright * bell(np.hypot(xx - x, yy - y), radius)
        if magnitude > 5:
            spot += 0.22 * bell(np.hypot(xx - x, yy - y), 5.0)
        colour[y0:y0 + 23, x0:x0 + 23] += spot[..., None] * tint


FILES = pictures({
    "bg_black_hole.png": black_hole,
    "bg_black_hole_ray.png": black_hole_rays,
    "bg_twirl_big.png": twirl,
    "bg_space.jpg": space,
})
