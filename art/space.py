# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The black hole, its rays and twirl, and the space behind everything."""

import numpy as np
from scipy import ndimage

from canvas import *

# ---------------------------------------------------------------------------------------------------------
# The hole and what falls into it.  The game draws the twirl over 10 and 20 units, the rays over 3 units (twice,
# turning against each other) and 6 units (at half strength), and last the hole over 1 unit.
# ---------------------------------------------------------------------------------------------------------

HOT, AMBER, DUSK = rgb("fff4e4"), rgb("ffac68"), rgb("6a66c0")


def black_hole():
    """An absolutely black disc in a photon ring; the ring is brighter where its matter comes towards us."""
    c = Canvas(512)
    edge = 0.925
    beam = 0.5 + 0.5 * np.cos(c.angle - 2.5)  # 1 on the approaching side
    out = np.maximum(c.r - edge, 0)
    c.over(mix(AMBER, HOT, 0.2 + 0.8 * beam), (0.55 + 0.35 * beam) * np.exp(-out / (0.016 + 0.014 * beam)))
    c.fill(c.r - edge, BLACK)
    width = np.where(c.r < edge, 0.006, 0.012 + 0.007 * beam)  # hardly inward: the disc stays black
    c.over(mix(rgb("ffdcb0"), WHITE, ramp(0.05, 0.6, beam)), (0.85 + 0.15 * beam) * bell(c.r - edge, width))
    c.fade_out(ramp(0.999, 0.965, c.r))
    return c


def streams(turn, along, waves, steepness, seed, knots=1.2):
    """Noise on threads that run along `along` and go once round `turn` (radians); mean 0, deviation 1.

    waves are the least and the most threads to a round; more knots break the threads into clumps.
    """
    width, height = 2048, 256
    rng = np.random.default_rng(seed)
    across = np.fft.rfftfreq(width) * width
    down = np.abs(np.fft.fftfreq(height) * height)[:, None]
    weight = np.where(across >= waves[0], np.maximum(across, 1) ** -steepness, 0)[None, :]
    weight = weight * np.exp(-(across / waves[1]) ** 2)[None, :] * np.exp(-(down / (knots + 0.035 * across)) ** 2)
    field = np.fft.irfft2(np.fft.rfft2(rng.standard_normal((height, width))) * weight, s=(height, width))
    field = (field - field.mean()) / field.std()
    at = [along * height, turn / (2 * np.pi) * width]
    return ndimage.map_coordinates(field, at, order=3, mode="grid-wrap")


def black_hole_rays():
    """Filaments of infalling light, wound ever tighter towards the hole.

    Drawn at twice the size and halved: threads thinner than a texel would break up into beads.
    """
    c = Canvas(1024)
    log_r = np.log(np.maximum(c.r, 0.02))
    wobble = 0.10 * streams(c.angle - 1.2 * log_r, log_r * 0.22, (1, 7), 0.6, 50)
    turn = c.angle - 1.05 * log_r + 0.060 / np.maximum(c.r - 0.07, 0.03) + wobble * ramp(0.15, 0.6, c.r)
    fine = streams(turn, log_r * 0.20, (6, 34), 0.30, 51)
    broad = streams(turn, log_r * 0.16, (3, 12), 0.3, 52)
    reach = streams(turn, log_r * 0.05, (2, 20), 0.4, 53)
    thread = np.exp(-3.0 * (np.sqrt(fine ** 2 + 0.03) - 0.17)) * ramp(-1.0, 1.5, broad)  # thin bright lines
    veil = ramp(-0.2, 2.4, broad + 0.45 * fine)                                          # soft bands between them
    d = np.maximum(c.r - 0.30, 0)
    fall = np.exp(-d / (0.17 + 0.06 * np.tanh(reach))) * ramp(0.10, 0.31, c.r)
    light = (0.72 * thread + 0.40 * veil) * fall + 0.30 * np.exp(-d / 0.045) * ramp(0.17, 0.31, c.r)
    at = c.r + 0.05 * broad
    tint = mix(mix(HOT, AMBER, ramp(0.30, 0.46, at)), DUSK, ramp(0.42, 0.80, at))
    c.over(mix(tint, HOT, 0.6 * ramp(0.25, 0.75, light)), light)
    c.fade_out(ramp(0.97, 0.62, c.r))
    return halved(c)


def halved(big):
    """The canvas at half its size, each pixel the mean of four."""
    c = Canvas(big.alpha.shape[1] // 2, big.alpha.shape[0] // 2)
    c.colour = (big.colour[0::2, 0::2] + big.colour[1::2, 0::2] + big.colour[0::2, 1::2] + big.colour[1::2, 1::2]) / 4
    c.alpha = (big.alpha[0::2, 0::2] + big.alpha[1::2, 0::2] + big.alpha[0::2, 1::2] + big.alpha[1::2, 1::2]) / 4
    return c


def twirl():
    """Spiral dust of two scales.  The game draws it at a tenth of its strength, hence the full alpha here."""
    c = Canvas(1024)
    log_r = np.log(np.maximum(c.r, 0.02))
    wobble = 0.20 * streams(c.angle - 1.0 * log_r, log_r * 0.3, (1, 6), 0.6, 60, knots=2)
    turn = c.angle - 1.7 * log_r + wobble
    arms = np.cos(3 * turn) + 0.6 * np.cos(2 * turn + 1.3) + 0.5 * streams(turn, log_r * 0.3, (3, 9), 0.2, 61, knots=2)
    lanes = streams(turn, log_r * 0.5, (6, 60), 0.75, 62, knots=4)
    clumps = streams(turn, log_r * 0.8, (8, 160), 0.8, 64, knots=14)
    dust = ramp(-1.1, 2.6, arms + 0.7 * lanes + 0.3 * clumps)
    dust *= 1 - 0.75 * ramp(0.2, 2.0, streams(turn, log_r * 0.5, (4, 50), 0.8, 65, knots=4))  # dark lanes
    light = np.clip(dust * (0.80 + 0.22 * lanes + 0.22 * clumps), 0, 1)
    c.over(mix(rgb("ffdcb8"), rgb("5f8cf0"), ramp(0.05, 0.50, c.r + 0.04 * arms)), 0.85 * light * ramp(0.02, 0.16, c.r))
    c.fade_out(ramp(0.98, 0.30, c.r))
    return c


# ---------------------------------------------------------------------------------------------------------
# Space
# ---------------------------------------------------------------------------------------------------------


def bent(field, bend_y, bend_x):
    """Looks a tileable field up elsewhere; bends are in pixels."""
    row, column = np.mgrid[0:field.shape[0], 0:field.shape[1]]
    return ndimage.map_coordinates(field, [row + bend_y, column + bend_x], order=2, mode="grid-wrap")


def space():
    """Nebula and stars; dark enough that every sprite stands out.  Returns 8-bit RGB."""
    size, work = 2048, 1024  # the clouds hold no finer detail than half the resolution shows

    def cloud(steepness, seed, smallest=0.0):
        return clouds(work, steepness, seed, smallest)

    # Clouds looked up through clouds: two rounds of bending draw the haze out into folds and fingers.
    ax, ay = cloud(2.5, 71), cloud(2.5, 72)
    bx, by = bent(cloud(2.1, 73), 55 * ay, 55 * ax), bent(cloud(2.1, 74), 55 * ax, -55 * ay)
    mass = bent(cloud(2.3, 75), 70 * by, 70 * bx)                        # where there is gas at all
    folds = bent(cloud(1.62, 76), 48 * by + 30 * ay, 48 * bx + 30 * ax)  # its body
    veins = bent(cloud(1.55, 77, 3), 60 * bx, -60 * by)                  # bright fronts
    dust = bent(cloud(1.8, 78, 2), 50 * by - 20 * ax, -40 * bx)          # dark lanes in front
    region = bent(cloud(2.8, 79), 40 * ay, 40 * bx)                      # colour

    body = ramp(-1.3, 2.4, 0.75 * mass + 0.55 * folds)
    front = np.exp(-1.7 * (np.sqrt(veins ** 2 + 0.02) - 0.14)) * ramp(-0.6, 1.6, mass + 0.3 * folds)
    wisp = np.exp(-3.4 * (np.sqrt((veins + 0.5 * folds) ** 2 + 0.02) - 0.14)) * ramp(0.0, 1.7, mass)
    ember, teal = 0.85 * ramp(0.55, 2.2, region), ramp(0.1, -1.3, region)

    def hue(indigo, green, red):
        return mix(mix(rgb(indigo), rgb(green), teal), rgb(red), ember)

    # Linear light.
    light = np.zeros((work, work, 3)) + rgb("090d1c") ** 2.2
    light += (0.066 * body ** 1.6)[..., None] * hue("3343d6", "1f8fa8", "b03a50")
    light += (0.052 * front * (0.25 + body))[..., None] * hue("4a6cf0", "3fd0c8", "f06a44")
    light += (0.020 * wisp)[..., None] * hue("8fa4ff", "9ff0e4", "ffa888")
    light += (0.030 * ramp(0.9, 2.6, mass + 0.4 * folds))[..., None] * hue("9a7cff", "8fe0ff", "ffa0a0")
    veil = ramp(-0.1, 1.9, dust + 0.35 * mass + 0.25 * veins)
    light *= (1 - 0.80 * veil * ramp(-1.5, 0.5, mass))[..., None]
    light += (0.004 * veil * (0.5 + front))[..., None] * hue("50508a", "3a6a70", "703848")
    light = np.roll(light, (-200, 60), (0, 1))  # the blue and teal clouds to the middle, the ember to the side
    veil = np.roll(veil, (-200, 60), (0, 1))
    picture = np.dstack([ndimage.zoom(light[..., k], size / work, order=3, mode="grid-wrap", grid_mode=True)
                         for k in range(3)])
    stars(picture, np.kron(veil, np.ones((2, 2))), seed=80)
    shade = np.clip(picture, 0, None) ** (1 / 2.2)
    shade += np.random.default_rng(81).uniform(-0.5, 0.5, (size, size, 1)) / 255  # keeps slow gradients free of bands
    return to_bytes(shade)


def stars(light, veil, seed):
    """Adds stars to linear light: many faint ones, few bright, some in clusters, dimmed behind dust."""
    rng = np.random.default_rng(seed)
    size = light.shape[0]
    tints = [rgb(t) for t in ("9dbcff", "c4d6ff", "eef3ff", "fff1dc", "ffd9a8", "ffb28a")]
    places = list(rng.uniform(0, size, (3000, 2)))
    for _ in range(9):
        centre, spread = rng.uniform(0, size, 2), rng.uniform(14, 42)
        places += list(centre + rng.standard_normal((rng.integers(14, 46), 2)) * spread)

    def add(x, y, strength, sigma, tint):
        reach = int(np.ceil(3.6 * sigma))
        x0, y0 = int(x) - reach, int(y) - reach
        rows, columns = np.arange(y0, y0 + 2 * reach + 2), np.arange(x0, x0 + 2 * reach + 2)
        spot = np.exp(-((rows[:, None] + 0.5 - y) ** 2 + (columns[None, :] + 0.5 - x) ** 2) / (2 * sigma ** 2))
        light[np.ix_(rows % size, columns % size)] += strength * spot[..., None] * tint

    for x, y in places:
        x, y = x % size, y % size
        at = int(y), int(x)
        magnitude = min(rng.pareto(1.15), 120)
        strength = 0.013 * (1 + magnitude) * (1 - 0.8 * veil[at])
        tint = tints[min(int(rng.triangular(0, 2, 6)), 5)]
        # A spot of linear light looks half as wide again once it is encoded for the screen.
        add(x, y, min(strength, 0.9), 0.85 + 0.20 * min(strength, 2.0), tint)
        if strength > 0.30:  # a soft glow, no spikes
            add(x, y, 0.05 * min(strength, 0.9), 4.0, tint)
            add(x, y, 0.010 * min(strength, 0.9), 15.0, tint)


def save_space(path):
    """Better than the usual quality: the picture is shown magnified and dark, where blocks would be seen."""
    Image.fromarray(space()).save(path, quality=93, subsampling=0, optimize=True)


FILES = {
    **pictures({
        "bg_black_hole.png": black_hole,
        "bg_black_hole_ray.png": black_hole_rays,
        "bg_twirl_big.png": twirl,
    }),
    "graphics/bg_space.jpg": save_space,
}
