# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Things of light and fire: shields, shots, the muzzle flash and the explosion."""

import numpy as np

from canvas import *


# ---------------------------------------------------------------------------------------------------------
# Shields.  A shot is absorbed 0.5 units from the ship, which is 0.83 of the quad's half-size.
# ---------------------------------------------------------------------------------------------------------

SHIELD_FRAMES = 6


def shield_blue(frame):
    """A round shell with three bright crescents; six frames turn it by one third, so it loops."""
    c = Canvas(256)
    turn = 3 * c.angle + 2 * np.pi * frame / SHIELD_FRAMES
    sweep = (0.5 + 0.5 * np.cos(turn)) ** 2
    edge = c.r - 0.84
    c.over(BLUE, np.where(edge < 0, 0.05 + 0.30 * ramp(0.45, 0.84, c.r) ** 2, 0.35 * bell(edge, 0.045)))
    c.over(mix(BLUE, BLUE_PALE, sweep), bell(edge, 0.013 + 0.022 * sweep) * (0.45 + 0.5 * sweep))
    c.over(BLUE_PALE, 0.30 * bell(c.r - 0.72 - 0.05 * np.cos(turn), 0.02) * sweep)
    c.fade_out(ramp(0.99, 0.92, c.r))
    return c


def shield_red(frame):
    """A barbed shell of six points; six frames turn it by one sixth, so it loops."""
    c = Canvas(256)
    phase = -frame / SHIELD_FRAMES / 6
    shell = polygon(c.x, c.y, polar(12, (0.93, 0.75), phase))
    inner = polygon(c.x, c.y, polar(6, (0.75,), phase + 1 / 12))
    c.over(RED, np.where(shell < 0, 0.05 + 0.28 * ramp(-0.28, 0, shell), 0.3 * bell(shell, 0.03)))
    c.line(inner, RED_PALE, 0.012, 0.45)
    c.over(RED, 0.55 * bell(shell, 0.035))
    c.line(shell, RED_PALE, 0.022, 0.9)
    for tip in polar(6, (0.90,), phase):
        c.over(rgb("fff0c8"), 0.9 * bell(np.hypot(c.x - tip[0], c.y - tip[1]), 0.035))
    c.fade_out(ramp(0.99, 0.95, c.r))
    return c


def shield_flash(strength, radius):
    c = Canvas(256)
    c.over(ICE, strength * 0.45 * ramp(0.1, radius, c.r) * (c.r < radius))
    c.over(WHITE, strength * bell(c.r - radius, 0.05))
    c.over(ICE, strength * 0.4 * bell(c.r - radius, 0.10))
    c.fade_out(ramp(0.99, 0.93, c.r))
    return c


# ---------------------------------------------------------------------------------------------------------
# Shots and the muzzle flash: light, added to the scene
# ---------------------------------------------------------------------------------------------------------


def blue_disc(radius, edge=0.96):
    """A soft disc with a halo and a bright ring around it."""
    c = Canvas(128)
    core = ramp(radius, radius * 0.35, c.r)
    ring = 0.7 * bell(c.r - radius * 1.25, 0.06)
    halo = 0.9 * np.exp(-2.6 * np.maximum(c.r - radius * 0.6, 0)) * ramp(edge, 0.35, c.r)
    light = glowing((core, WHITE), (core * 0.4 + ring * 0.8, BLUE_PALE), (halo * 0.8, BLUE))
    return from_light(light * ramp(edge, edge - 0.12, c.r)[..., None])


def red_spark(length, width, turn=0.0, edge=0.96):
    """A sharp star of four points; turn in degrees."""
    c = Canvas(128)
    t = np.radians(turn)
    x, y = np.abs(c.x * np.cos(t) + c.y * np.sin(t)), np.abs(c.y * np.cos(t) - c.x * np.sin(t))

    def point(along, across, reach):
        taper = np.clip(1 - along / reach, 0, 1)
        return ramp(1, 0.2, across / (width * taper ** 1.5 + 1e-3)) * ramp(0, 0.25, taper)

    star = np.maximum(point(y, x, length), point(x, y, length * 0.8))
    core = bell(c.r, width * 0.8)
    halo = 0.8 * np.exp(-2.3 * (np.sqrt(x) + np.sqrt(y)) ** 2) * ramp(edge, 0.3, c.r)
    light = glowing((core, rgb("ffe9a0")), (star * 0.85, rgb("ff5a1c")), (halo, RED))
    return from_light(light * ramp(edge, edge - 0.06, c.r)[..., None])


def muzzle_flash():
    """A flare that opens forward; its root lies at the nose of the ship, above the picture's centre."""
    c = Canvas(128)
    y = c.y - 0.22
    flare = bell(c.x, 0.10 + 0.16 * np.clip(y, 0, 1)) * bell(y, 0.48) * ramp(-0.16, 0.05, y)
    star = 0.8 * bell(c.x, 0.05) * bell(y, 0.55) + 0.7 * bell(c.x, 0.5) * bell(y, 0.05)
    core = bell(np.hypot(c.x, y), 0.17)
    light = glowing((core, WHITE), (0.8 * flare + 0.5 * star, ICE), (0.5 * bell(np.hypot(c.x, y), 0.42), GOLD))
    return from_light(light * ramp(0.98, 0.6, c.r)[..., None])


# ---------------------------------------------------------------------------------------------------------
# Explosion
# ---------------------------------------------------------------------------------------------------------

FIRE = [(0.0, rgb("2a0a10")), (0.3, rgb("b0241a")), (0.55, rgb("ff7a2a")), (0.8, rgb("ffd98a")), (1.0, rgb("fffdf2"))]


def fire(heat):
    stops = [s for s, _ in FIRE]
    return np.dstack([np.interp(heat, stops, [c[k] for _, c in FIRE]) for k in range(3)])


def explosion_flash():
    c = Canvas(256)
    rays = 0.30 * around(c.angle, 24, seed=41)
    c.over(fire(0.6 + 0.4 * bell(c.r, 0.6)), 0.9 * bell(c.r, 0.46 * (1 + rays)))
    c.over(WHITE, bell(c.r, 0.30))
    c.fade_out(ramp(0.98, 0.75, c.r))
    return c


def explosion_fireball():
    c = Canvas(256)
    swirl = clouds(256, 1.7, seed=42, smallest=2)
    body = ramp(0.86, 0.54, c.r - 0.07 * swirl + 0.04 * around(c.angle, 11, seed=43))
    heat = np.clip(1.05 - c.r * 0.85 + 0.20 * swirl, 0, 1)
    c.over(RED, 0.35 * ramp(0.96, 0.3, c.r))
    c.over(fire(heat), body)
    c.fade_out(ramp(0.98, 0.85, c.r))
    return c


def explosion_shards():
    c = Canvas(256)
    swirl = clouds(256, 1.6, seed=44, smallest=2)
    hollow = bell(c.r - 0.55 - 0.06 * swirl, 0.24)
    c.over(fire(np.clip(0.52 + 0.2 * swirl - 0.2 * c.r, 0, 1)), np.clip(hollow * (0.62 + 0.32 * swirl), 0, 0.85))
    rng = np.random.default_rng(45)
    for k in range(13):  # splinters fly outward, each pointing away from the centre
        a, d = 2 * np.pi * (k + rng.uniform(-0.3, 0.3)) / 13, rng.uniform(0.45, 0.80)
        length, width = rng.uniform(0.06, 0.13), rng.uniform(0.018, 0.035)
        u, v = c.x * np.cos(a) + c.y * np.sin(a) - d, c.y * np.cos(a) - c.x * np.sin(a)
        splinter = polygon(u, v, [(length, 0), (-length * 0.3, width), (-length, 0), (-length * 0.2, -width)])
        c.over(rgb("ff9a40"), 0.5 * ramp(0.06, 0, splinter))
        c.fill(splinter, rgb("fff3d0"))
    c.fade_out(ramp(0.98, 0.88, c.r))
    return c


def explosion_smoke():
    c = Canvas(256)
    swirl = clouds(256, 1.7, seed=46, smallest=2)
    c.over(rgb("5a4a55"), np.clip(0.30 * bell(c.r - 0.5, 0.34) * (0.75 + 0.5 * swirl), 0, 0.4))
    rng = np.random.default_rng(47)
    for _ in range(18):
        a, d = rng.uniform(0, 2 * np.pi), rng.uniform(0.4, 0.85)
        c.over(RED_PALE, rng.uniform(0.25, 0.6) * bell(np.hypot(c.x - d * np.cos(a), c.y - d * np.sin(a)), 0.018))
    c.fade_out(ramp(0.98, 0.8, c.r))
    return c


FILES = pictures({
    "player_shield_flash_1.png": lambda: shield_flash(1.0, 0.80),
    "player_shield_flash_2.png": lambda: shield_flash(0.55, 0.88),
    **{f"player_shield_blue_{k + 1}.png": lambda k=k: shield_blue(k) for k in range(SHIELD_FRAMES)},
    **{f"player_shield_red_{k + 1}.png": lambda k=k: shield_red(k) for k in range(SHIELD_FRAMES)},
    "player_shot_blue_1.png": lambda: blue_disc(0.26),
    "player_shot_blue_2.png": lambda: blue_disc(0.30),
    "player_shot_blue_3.png": lambda: blue_disc(0.22),
    "player_shot_red_1.png": lambda: red_spark(0.80, 0.15),
    "player_shot_red_2.png": lambda: red_spark(0.88, 0.17, turn=8),
    "player_shot_red_3.png": lambda: red_spark(0.72, 0.13, turn=-8),
    "shot_enemy.png": lambda: blue_disc(0.52),
    "shot_enemy2.png": lambda: red_spark(0.95, 0.36),
    "player_muzzle_flash.png": muzzle_flash,
    "enemy_explosion_1.png": explosion_flash,
    "enemy_explosion_2.png": explosion_fireball,
    "enemy_explosion_3.png": explosion_shards,
    "enemy_explosion_4.png": explosion_smoke,
})
