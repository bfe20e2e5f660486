# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""Solid things: the player's ship and the enemies.  Their bodies are ray traced from the scenes beside this
file; what glows around them is light and laid under or over the picture."""

import subprocess
import tempfile
from pathlib import Path

import numpy as np

from canvas import *

OVERSAMPLING = 4


def traced(scene, size):
    """A canvas with what POV-Ray makes of a scene."""
    with tempfile.TemporaryDirectory() as folder:
        picture = Path(folder) / "picture.png"
        done = subprocess.run(
            ["povray", f"+I{scene}", f"+O{picture}", f"+W{size * OVERSAMPLING}", f"+H{size * OVERSAMPLING}", "+UA",
             "-D", "+A0.05", "+AM1", "+R3", "-J", "-GA", "File_Gamma=srgb", "+WT1"],
            cwd=Path(__file__).parent, capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"povray {scene}: {done.stderr}")
        pixels = np.asarray(Image.open(picture).convert("RGBA")) / 255
    c = Canvas(size)
    blocks = np.dstack([pixels[..., :3] * pixels[..., 3:], pixels[..., 3]])
    blocks = blocks.reshape(size, OVERSAMPLING, size, OVERSAMPLING, 4).mean((1, 3))
    c.colour, c.alpha = blocks[..., :3], blocks[..., 3]
    return c


def lay_over(below, above):
    below.colour = below.colour * (1 - above.alpha[..., None]) + above.colour
    below.alpha = below.alpha * (1 - above.alpha) + above.alpha
    return below


def plume(c, x, y, length, width):
    """An engine's flame that ends below (x, y): a hot core in a long haze, in beads like shock waves."""
    along = np.clip((y - c.y) / length, -0.2, 1.2)
    lit = ramp(-0.06, 0.04, along)
    taper = np.sqrt(np.clip(1 - along, 0, 1))
    beads = 0.82 + 0.18 * np.cos(along * 22) * ramp(0.9, 0.2, along)
    haze = bell(c.x - x, width * (1.5 + 1.2 * along)) * ramp(1.1, 0.1, along) * lit
    c.over(rgb("ff8a3c"), 0.55 * haze)
    c.over(GOLD, 0.85 * bell(c.x - x, width * (0.25 + 0.75 * taper)) * ramp(1.0, 0.55, along) * lit * beads)
    c.over(WHITE, bell(c.x - x, width * 0.55 * taper + 1e-3) * ramp(0.62, 0.25, along) * lit * beads)


BODIES = {}


def body(scene, size):
    """Traced once: two pictures show the same hull."""
    if scene not in BODIES:
        BODIES[scene] = traced(scene, size)
    return BODIES[scene]


def player_ship(length, width):
    c = Canvas(256)
    for side in (-1, 1):
        plume(c, side * 0.092, -0.415, length, width)
    lay_over(c, body("player.pov", 256))
    for side in (-1, 1):  # the nozzles dazzle, more with more thrust
        away = np.hypot(c.x - side * 0.092, (c.y + 0.44) * 1.2)
        c.over(rgb("fff2c8"), 0.9 * bell(away, width * 0.85))
    c.fade_out(ramp(0.99, 0.90, c.r))
    return c


def enemy_blue():
    c = Canvas(128)
    orb = np.hypot(c.x, c.y - 0.12)
    shell = np.abs(np.hypot(c.x, c.y + 0.02) - 0.80)
    behind = ramp(0.62, 0.2, c.y)  # none above the horns, where it would hide their shape
    c.over(BLUE, 0.55 * bell(shell, 0.11) * behind)
    c.over(BLUE_PALE, 0.45 * bell(orb, 0.42))
    lay_over(c, body("enemy_blue.pov", 128))
    c.over(BLUE_PALE, 0.35 * bell(orb, 0.30))
    c.fade_out(ramp(0.985, 0.90, c.r))
    return c


def enemy_red():
    c = Canvas(128)
    heart = np.abs(c.x) * 1.5 + np.abs(c.y)
    c.over(RED, 0.50 * bell(c.r, 0.46))
    lay_over(c, body("enemy_red.pov", 128))
    c.over(rgb("ffb45a"), 0.42 * bell(heart, 0.42))
    c.fade_out(ramp(0.985, 0.95, np.maximum(np.abs(c.x), np.abs(c.y))))
    return c


FILES = pictures({
    "player_ship_1.png": lambda: player_ship(0.26, 0.048),
    "player_ship_2.png": lambda: player_ship(0.40, 0.058),
    "enemy_blue.png": enemy_blue,
    "enemy_red.png": enemy_red,
})
