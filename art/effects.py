# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The eleven sound effects."""

import numpy as np

from canvas import ramp
from synth import *


def shoot_player():
    t = clock(0.14)
    body = sweep(glide(t, 1350, 420, 0.035), (1, 0.25, 0.08)) * pluck(t, 0.001, 0.035)
    return both(body) + 0.10 * hiss(t, 1500, 6000, 81) * pluck(t, 0.0005, 0.010)[:, None]


def shoot_enemy():
    t = clock(0.22)
    body = sweep(glide(t, 460, 130, 0.06), (1, 0.35)) * pluck(t, 0.003, 0.055)
    return both(body) + 0.10 * hiss(t, 150, 900, 82) * pluck(t, 0.002, 0.04)[:, None]


def explode():
    t = clock(0.88)
    thump = sweep(glide(t, 130, 34, 0.10), (1, 0.3)) * pluck(t, 0.002, 0.22)
    crack = hiss(t, 400, 5000, 83) * pluck(t, 0.001, 0.05)[:, None]
    rumble = hiss(t, 40, 520, 84) * pluck(t, 0.004, 0.20)[:, None]
    return np.tanh(both(1.3 * thump) + 0.22 * crack + 0.42 * rumble)


def shield_change():
    return both(figure(0.26, [(0.0, -2, 0.8), (0.075, 5, 1.0)], (1, 0.0, 0.25, 0.0, 0.08), 0.05))


def shield_hit():
    t = clock(0.36)
    swell = np.sin(np.pi * np.minimum(t / 0.36, 1)) ** 1.5 * np.exp(-t / 0.22)
    chord = sum(sweep(glide(t, note(p) * 0.94, note(p), 0.06), (1, 0.3)) for p in (-19, -12, -7))
    return both(chord * swell) + 0.15 * hiss(t, 300, 1400, 85) * swell[:, None]


def chain():
    return both(figure(0.50, [(0.0, 3, 0.7), (0.08, 8, 0.85), (0.16, 15, 1.0)], (1, 0.35, 0.12), 0.11))


def game_start():
    t = clock(1.3)
    rise = hiss(t, 200, 2500, 86) * (ramp(0, 0.5, t) * ramp(0.62, 0.5, t))[:, None]
    calls = figure(1.3, [(0.0, -19, 0.6), (0.17, -12, 0.7), (0.34, -7, 0.8), (0.51, 0, 1), (0.51, -12, 0.8), (0.51, 7, 0.6)],
                   (1, 0.4, 0.25, 0.1), 0.28)
    return both(calls) + 0.12 * rise


def game_over():
    t = clock(1.6)
    fall = figure(1.6, [(0.0, 0, 0.8), (0.22, -4, 0.8), (0.44, -9, 0.9), (0.70, -16, 1), (0.70, -28, 0.9)],
                  (1, 0.4, 0.25, 0.1), 0.32)
    drone = sweep(glide(t, 90, 38, 0.5), (1, 0.3)) * pluck(t, 0.05, 0.5)
    return both(fall + 0.6 * drone)


def menu_sound(notes):
    return both(figure(0.20, notes, (1, 0.2, 0.06), 0.035))


# Peak levels in dBFS.  Nothing passes -3; what sounds ten times a second or accompanies reading lies lower.
SOUNDS = {
    "shoot_player": (shoot_player, -9),
    "shoot_enemy": (shoot_enemy, -10),
    "explode": (explode, -3.5),
    "shield_change": (shield_change, -7),
    "shield_hit": (shield_hit, -7),
    "game_start": (game_start, -3.5),
    "game_over": (game_over, -3.5),
    "chain": (chain, -5),
    "menu_move": (lambda: menu_sound([(0.0, 3, 1)]), -14),
    "menu_select": (lambda: menu_sound([(0.0, 3, 0.8), (0.06, 10, 1)]), -12),
    "menu_back": (lambda: menu_sound([(0.0, 3, 1), (0.06, -4, 0.8)]), -12),
}


FILES = {
    f"sounds/{name}.ogg": lambda path, serial=serial, make=make, peak=peak: write_ogg(
        path, finished(make(), peak), serial, quality=5)
    for serial, (name, (make, peak)) in enumerate(SOUNDS.items(), start=1)
}
