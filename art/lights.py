# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Things of light: shields and their flash, shots and the muzzle flash.

The game draws without mipmaps, so a picture shown at an eighth of its size loses whatever is thin: lines are
kept about as wide as the texels that one screen pixel covers."""

import numpy as np

from canvas import *

TURN = 2 * np.pi

# ---------------------------------------------------------------------------------------------------------
# Shields.  A shot is absorbed 0.5 units from the ship, which is 0.83 of the quad's half-size.
# ---------------------------------------------------------------------------------------------------------

SHIELD_FRAMES = 6


def honeycomb(x, y, cell):
    """Distance to the nearest wall of a hexagonal lattice whose cells are `cell` wide, centred on the origin."""
    def to_wall(px, py):
        px = (px / cell + 0.5) % 1 - 0.5
        py = (py / (cell * np.sqrt(3)) + 0.5) % 1 - 0.5
        return px * cell, py * cell * np.sqrt(3)

    ax, ay = to_wall(x, y)
    bx, by = to_wall(x - cell / 2, y - cell * np.sqrt(3) / 2)
    nearer = np.hypot(ax, ay) < np.hypot(bx, by)
    px, py = np.abs(np.where(nearer, ax, bx)), np.abs(np.where(nearer, ay, by))
    return cell / 2 - np.maximum(px, px / 2 + py * np.sqrt(3) / 2)


def arcs(angle, count, phase):
    """Brightness along `count` crescents round the circle: a long tail that swells to a head which tapers off."""
    t = (angle * count / TURN + phase) % 1
    return t ** 1.3 * ramp(1, 0.72, t) / 0.70


def shield_blue(frame):
    """A round shell: a honeycomb on a ball, three bright crescents that run ahead of it and three that run against.

    Six frames turn the lattice by a sixth and the crescents by a third, so the loop has no seam.
    """
    c = Canvas(256)
    t = frame / SHIELD_FRAMES
    radius = 0.85
    inside = ramp(radius + 0.012, radius - 0.012, c.r)
    bulge = np.arcsin(np.clip(c.r / radius, 0, 0.9999)) / np.maximum(c.r, 1e-6)  # flat picture to ball
    limb = (1 - np.sqrt(np.clip(1 - (c.r / radius) ** 2, 0, 1))) ** 1.5

    turn = TURN * t / 6
    x, y = (c.x * np.cos(turn) + c.y * np.sin(turn)) * bulge, (c.y * np.cos(turn) - c.x * np.sin(turn)) * bulge
    wall = honeycomb(x, y, 0.40)
    rng = np.random.default_rng(90)
    shimmer = sum(np.cos(4.5 * (x * np.cos(a) + y * np.sin(a)) + p + TURN * s * t)
                  for a, p, s in zip(rng.uniform(0, TURN, 6), rng.uniform(0, TURN, 6), (1, -1, 1, -1, 1, -1)))
    light = 0.5 + 0.5 * np.tanh(0.6 * shimmer)

    ahead, against = arcs(c.angle, 3, t), arcs(-c.angle, 3, t + 0.4)
    c.over(BLUE, inside * (0.045 + 0.34 * limb + 0.06 * light * ramp(0.1, 0.7, c.r)))
    c.over(mix(BLUE, BLUE_PALE, light), inside * bell(wall, 0.030) * (0.06 + 0.30 * light) * ramp(0.05, 0.75, c.r))
    c.over(BLUE_PALE, 0.65 * np.clip(against, 0, 1) * bell(c.r - 0.66 - 0.05 * against, 0.006 + 0.036 * against))
    c.over(BLUE, 0.55 * bell(np.maximum(c.r - radius, 0), 0.060) * ramp(radius - 0.03, radius, c.r))
    c.over(mix(BLUE, BLUE_PALE, 0.25 + 0.75 * np.clip(ahead, 0, 1)), (0.70 + 0.25 * ahead) * bell(c.r - radius, 0.020))
    c.over(mix(BLUE_PALE, WHITE, ahead ** 2), np.clip(1.3 * ahead, 0, 1)
           * bell(c.r - radius + 0.045 * ahead, 0.006 + 0.052 * ahead) * ramp(radius + 0.035, radius + 0.005, c.r))
    c.fade_out(ramp(0.985, 0.90, c.r))
    return c


def jagged(angle, count, spread, seed):
    """A zigzag round the circle: straight between `count` corners of random height."""
    heights = np.random.default_rng(seed).uniform(-spread, spread, count)
    at = angle / TURN % 1 * count
    k = at.astype(int) % count
    part = at - np.floor(at)
    return heights[k] * (1 - part) + heights[(k + 1) % count] * part


def shield_red(frame):
    """A barbed shell: six hooked blades around a faceted body, with sparks that jump from blade to blade.

    Six frames turn the blades by a sixth, and the inner facets back by a sixth, so the loop has no seam.
    """
    c = Canvas(256)
    t = frame / SHIELD_FRAMES

    def corner(degrees, radius, sector, turn):
        a = TURN * (degrees / 360 + (sector + turn) / 6)
        return radius * np.sin(a), radius * np.cos(a)

    outline, facets = [], []
    flicker = np.random.default_rng(91).uniform(0, 1, (6, 4))
    for k in range(6):
        tip, notch, knee = corner(0, 0.965, k, -t), corner(13, 0.735, k, -t), corner(34, 0.765, k, -t)
        next_tip, root, next_root = corner(60, 0.965, k, -t), corner(5, 0.60, k, -t), corner(65, 0.60, k, -t)
        outline += [tip, notch, knee]
        facets += [([tip, notch, root], 0.50), ([notch, knee, root], 0.16), ([knee, next_tip, next_root], 0.38),
                   ([root, knee, next_root], 0.08)]
    shell = polygon(c.x, c.y, outline)
    body = polygon(c.x, c.y, [corner(5, 0.60, k, -t) for k in range(6)])
    core = polygon(c.x, c.y, [corner(0, 0.50, k, t) for k in range(6)])

    c.over(RED, 0.55 * bell(np.maximum(shell, 0), 0.055) * (shell > 0))
    for (points, strength), phase in zip(facets, flicker.ravel()):
        pulse = 0.72 + 0.28 * np.cos(TURN * (t + phase))
        face = polygon(c.x, c.y, points)
        c.fill(face, mix(RED_DARK * 1.6, RED, ramp(-0.12, 0.0, face)), strength * pulse)
        c.over(RED, 0.24 * bell(face, 0.018) * (face < 0.01))
    c.over(RED, np.where(body < 0, 0.03 + 0.20 * ramp(-0.30, 0, body), 0))
    c.over(RED, 0.26 * bell(core, 0.018))
    c.over(RED_PALE, 0.20 * bell(body, 0.016))
    c.over(mix(RED, RED_PALE, ramp(0.70, 0.95, c.r)), 0.95 * bell(shell, 0.020))
    for seed, radius in ((0, 0.69), (6, 0.64)):
        bolt = c.r - radius - jagged(c.angle - TURN * t / 6, 29, 0.055, 92 + seed + frame)
        alive = ramp(0.1, 0.9, around(c.angle, 7, 105 + seed + frame))
        c.over(RED, 0.45 * alive * bell(bolt, 0.045))
        c.over(rgb("ffe2b8"), 0.95 * alive * bell(bolt, 0.016))
    for k in range(6):
        x, y = corner(0, 0.925, k, -t)
        c.over(rgb("fff0c8"), 0.9 * bell(np.hypot(c.x - x, c.y - y), 0.035))
    c.fade_out(ramp(0.995, 0.95, c.r))
    return c


def shield_flash(strength, radius, seed):
    """The shell drinks a shot: a bright rim, and streaks that run inward from it to a glow in the middle."""
    c = Canvas(256)
    depth = np.clip(1 - c.r / radius, 0, 1)  # 0 at the rim, 1 in the middle
    inside = ramp(radius + 0.02, radius - 0.02, c.r)
    length = 0.42 + 0.16 * np.tanh(around(c.angle, 12, seed + 1, 0.2))
    streak = ramp(0.1, 1.5, around(c.angle, 26, seed, 0.15)) * np.clip(1 - depth / length, 0, 1) ** 1.3 * inside
    c.over(BLUE_PALE, strength * inside * (0.40 * (1 - depth) ** 3 + 0.10))
    c.over(ICE, strength * 0.45 * bell(c.r, 0.34))
    c.over(WHITE, strength * 0.85 * streak)
    c.over(ICE, strength * 0.5 * bell(c.r - radius, 0.085))
    c.over(WHITE, strength * bell(c.r - radius, 0.040))
    c.fade_out(ramp(0.985, 0.90, c.r))
    return c


# ---------------------------------------------------------------------------------------------------------
# Shots and the muzzle flash: light, added to the scene
# ---------------------------------------------------------------------------------------------------------


def burning(light):
    """Canvas that adds the given light; where it is strong all three colours saturate, so cores turn white-hot."""
    return from_light(1 - np.exp(-1.7 * light))


def blue_disc(swell):
    """A soft disc with a ring and a halo; swell from -1 to 1 lets it breathe."""
    c = Canvas(128)
    core = ramp(0.30, 0.12, c.r - 0.03 * swell)
    ring_at = 0.40 + 0.045 * swell
    ring = bell(c.r - ring_at, 0.060)
    halo = np.exp(-3.4 * np.maximum(c.r - 0.14, 0)) * ramp(0.97, 0.30, c.r)
    light = glowing((1.6 * core, WHITE), (0.5 * bell(c.r, 0.30) + (0.42 - 0.08 * swell) * ring, BLUE_PALE),
                    (0.6 * halo, BLUE))
    return burning(light * ramp(0.98, 0.70, c.r)[..., None])


def red_spark(length, width, turn):
    """A sharp star of four points, longest along the flight; turn in degrees."""
    c = Canvas(128)
    t = np.radians(turn)
    x, y = np.abs(c.x * np.cos(t) + c.y * np.sin(t)), np.abs(c.y * np.cos(t) - c.x * np.sin(t))
    x, y = np.hypot(x, 0.012) - 0.006, np.hypot(y, 0.012) - 0.006  # points not thinner than a texel
    star = np.sqrt(x / width) + np.sqrt(y / length)  # 1 on the outline of a four-pointed star
    core, body = ramp(0.72, 0.35, star), ramp(1.0, 0.72, star)
    halo = np.exp(-2.6 * np.maximum(star - 0.7, 0)) * ramp(0.98, 0.25, c.r)
    heart = bell(c.r, 0.15)
    light = glowing((1.5 * core + heart, rgb("fff2d6")), (0.9 * body, rgb("ff7a30")), (0.5 * halo, RED))
    return burning(light * ramp(0.99, 0.85, c.r)[..., None])


# The enemies' shots are drawn 0.2 units wide and about 0.45 long, top end first: 16 by 36 pixels on a small
# screen.  They are single bold shapes, and a length of 1 across looks as long as 0.44 along.
STRETCH = 2.25


def enemy_bolt_blue():
    """A round drop with a tail."""
    c = Canvas(128)
    head = np.hypot(c.x, (c.y - 0.46) * STRETCH)
    along = np.clip((c.y + 0.92) / 1.38, 0, 1)  # 0 at the end of the tail, 1 at the middle of the head
    tail = bell(c.x, 0.06 + 0.40 * along) * along ** 1.3 * ramp(0.62, 0.46, c.y)
    light = glowing((1.7 * ramp(0.58, 0.28, head), WHITE), (0.7 * bell(head, 0.56) + 0.25 * tail, BLUE_PALE),
                    (1.0 * bell(head, 0.60) + 1.1 * tail, BLUE))
    border = ramp(0.98, 0.62, np.abs(c.x)) * ramp(0.98, 0.80, np.abs(c.y))
    return burning(light * border[..., None])


def enemy_bolt_red():
    """A barbed arrow-head."""
    c = Canvas(128)
    arrow = polygon(c.x, c.y, mirrored([(0, 0.88), (0.68, -0.48), (0.27, -0.20), (0, -0.72)]))
    spine = polygon(c.x, c.y, mirrored([(0, 0.54), (0.22, -0.12), (0, -0.36)]))
    light = glowing((1.3 * ramp(0.04, -0.12, spine), rgb("ffeec0")), (1.3 * ramp(0.06, -0.10, arrow), rgb("ff3c10")),
                    (0.6 * np.exp(-np.maximum(arrow, 0) / 0.09), RED))
    border = ramp(0.98, 0.78, np.abs(c.x)) * ramp(0.99, 0.88, np.abs(c.y))
    return burning(light * border[..., None])


def muzzle_flash():
    """A flare that leaps forward from a hot root; the picture's centre lies before the middle of the ship."""
    c = Canvas(128)
    y = c.y + 0.14
    d, off = np.hypot(c.x, y), np.arctan2(c.x, y)  # off: angle from straight ahead
    ragged = 1 + 0.35 * ramp(0.0, 0.35, np.abs(off)) * around(off, 23, 101, 0.1)
    reach = 0.07 + (0.24 * bell(off, 0.12) + 0.21 * bell(off, 0.75)) * np.clip(ragged, 0.3, 1.7)
    flare = np.exp(-(d / reach) ** 1.5)
    fringe = np.exp(-(d / (1.35 * reach)) ** 1.5)
    fade = ramp(1.05, 0.25, d)
    light = glowing((1.5 * bell(d, 0.13) + 1.3 * flare * fade, rgb("fff4e0")), (1.1 * fringe * fade, rgb("ffb860")),
                    (0.30 * bell(np.hypot(c.x, y - 0.20), 0.46), rgb("ff9040")))
    return burning(light * ramp(0.98, 0.80, np.maximum(np.abs(c.x), np.abs(c.y)))[..., None])


FILES = pictures({
    "player_shield_flash_1.png": lambda: shield_flash(1.0, 0.84, 96),
    "player_shield_flash_2.png": lambda: shield_flash(0.70, 0.58, 97),
    **{f"player_shield_blue_{k + 1}.png": lambda k=k: shield_blue(k) for k in range(SHIELD_FRAMES)},
    **{f"player_shield_red_{k + 1}.png": lambda k=k: shield_red(k) for k in range(SHIELD_FRAMES)},
    "player_shot_blue_1.png": lambda: blue_disc(0.0),
    "player_shot_blue_2.png": lambda: blue_disc(1.0),
    "player_shot_blue_3.png": lambda: blue_disc(-1.0),
    "player_shot_red_1.png": lambda: red_spark(0.92, 0.74, 0),
    "player_shot_red_2.png": lambda: red_spark(0.98, 0.66, 9),
    "player_shot_red_3.png": lambda: red_spark(0.86, 0.82, -9),
    "shot_enemy.png": enemy_bolt_blue,
    "shot_enemy2.png": enemy_bolt_red,
    "player_muzzle_flash.png": muzzle_flash,
})
