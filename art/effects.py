# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The eleven sound effects.

Each is built in layers, as a sound editor would: a transient that is heard at once, a body that says what it
is, and a short tail that puts it into a space.  All of them are mixed at full volume by the program, and a
volley starts up to eight copies of one at the same sample.  So the balance stands in the files: dense sounds of
low peak, at the levels of the table at the end."""

import numpy as np

from synth import *

HULL = room(0.22, 61, bright=0.7, before=0.002)     # close walls
DECK = room(0.55, 62, bright=0.5, before=0.006)     # a larger space for the calls


def faded(t, mono_or_stereo, start):
    """Smoothly to nothing from start to the end, so that nothing clicks."""
    closing = ease(t[-1], start, t)
    return mono_or_stereo * (closing[:, None] if mono_or_stereo.ndim == 2 else closing)


def shoot_player():
    t = clock(0.145)
    fall = glide(t, 2100, 300, 0.026)
    beam = fm(fall, 1.5, glide(t, 2.6, 0.15, 0.022)) * pluck(t, 0.0007, 0.034)
    glass = fm(fall * 2.003, 0.5, 0.8) * pluck(t, 0.0004, 0.014)
    punch = sine(glide(t, 330, 105, 0.018)) * pluck(t, 0.0012, 0.030)
    spit = bandpass(noise(t, 81), 2200, 7500) * pluck(t, 0.0003, 0.006)[:, None]
    dry = panned(0.8 * beam + 0.20 * glass + 0.75 * punch) + 0.30 * spit
    # Each ear hears its own reflection, which makes the sound wide without moving it.
    wide = np.column_stack([np.roll(beam, 310), np.roll(beam, 470)]) * (t > 0.011)[:, None]
    sound = saturate(dry + 0.16 * wide + 0.25 * in_room(dry, HULL), 1.4)
    return faded(t, lowpass(sound, 7800), 0.085)


def shoot_enemy():
    t = clock(0.22)
    fall = glide(t, 470, 118, 0.045)
    bark = fm(fall, 0.5, glide(t, 2.4, 0.3, 0.05), 3.01, 0.6) * pluck(t, 0.0025, 0.055)
    growl = saw(fall * 0.5) * pluck(t, 0.003, 0.060)
    puff = bandpass(noise(t, 82), 180, 900) * pluck(t, 0.002, 0.030)[:, None]
    dry = panned(bark + 0.4 * growl) + 0.5 * puff
    sound = swept(saturate(dry, 1.3), glide(t, 2300, 340, 0.05), 0.9)
    return faded(t, sound + 0.22 * in_room(sound, HULL), 0.12)


def explode():
    t = clock(0.88)
    rng = np.random.default_rng(84)
    thump = saturate(sine(glide(t, 210, 54, 0.055)) * pluck(t, 0.0012, 0.12), 2.6)
    second = sine(glide(np.maximum(t - 0.05, 0), 104, 44, 0.09)) * pluck(t - 0.05, 0.01, 0.17)
    crack = bandpass(noise(t, 83), 1300, 6500) * (pluck(t, 0.0003, 0.013) + 0.5 * pluck(t - 0.024, 0.0005, 0.022)
                                                  + 0.3 * pluck(t - 0.061, 0.001, 0.045))[:, None]
    fire = highpass(swept(noise(t, 85), glide(t, 5200, 330, 0.11), 0.8, steep=True), 90)
    fire *= (pluck(t, 0.002, 0.13) + 0.30 * pluck(t - 0.06, 0.05, 0.22))[:, None]
    debris = np.zeros((len(t), 2))
    for start in np.cumsum(rng.uniform(0.018, 0.052, 17)) + 0.04:
        pitch, weight = rng.uniform(500, 2900), np.exp(-start / 0.30)
        grain = modes(t - start, [(pitch, 1, 0.016), (pitch * 1.47, 0.6, 0.011), (pitch * 2.09, 0.4, 0.008)])
        debris += panned(grain * weight, rng.uniform(-0.8, 0.8))
        debris += bandpass(noise(t, rng.integers(1 << 30)), pitch * 0.7, pitch * 1.5) \
            * (weight * pluck(t - start, 0.001, 0.014))[:, None] * 1.6
    dry = panned(0.62 * thump + 0.32 * second) + 1.35 * crack + 2.3 * fire + 0.30 * debris
    sound = saturate(dry, 4.0)
    return faded(t, sound + 0.22 * in_room(sound, DECK), 0.52)


def shield_change():
    t = clock(0.30)
    sound = np.zeros((len(t), 2))
    for start, midi, side in ((0.0, 76, -0.35), (0.072, 83, 0.35)):
        tone = fm(hz(midi) + 0 * t, 2.0, 0.5 + 1.6 * np.exp(-np.maximum(t - start, 0) / 0.04), 1.0, 0.4) * pluck(t - start, 0.0015, 0.055)
        tone += 0.35 * fm(hz(midi) / 2 + 0 * t, 1.0, 0.9) * pluck(t - start, 0.003, 0.075)
        tone += 0.22 * modes(t - start, [(hz(midi) * 2.76, 1, 0.02), (hz(midi) * 5.4, 0.4, 0.008)])
        sound += panned(tone, side)
    turn = swept(noise(t, 86), 700 + 3600 * np.sin(np.pi * np.clip(t / 0.16, 0, 1)), 2.5, band=True)
    sound += 0.45 * turn * gate(t, 0.05, 0.09, 0.10)[:, None]
    return faded(t, sound + 0.30 * in_room(sound, HULL), 0.17)


def shield_hit():
    t = clock(0.42)
    body = np.zeros(len(t))
    for midi, strength in ((45, 0.9), (52, 0.8), (57, 0.7), (64, 0.35)):
        bend = hz(midi) * (1 - 0.10 * np.exp(-t / 0.035))
        body += strength * fm(bend, 1.0, glide(t, 1.8, 0.25, 0.06))
    body *= pluck(t, 0.007, 0.11)
    knock = modes(t, [(182, 1, 0.035), (301, 0.6, 0.025), (467, 0.4, 0.016)])
    soak = swept(noise(t, 87), glide(t, 2600, 260, 0.07), 1.2) * (pluck(t, 0.006, 0.07))[:, None]
    dry = panned(0.42 * body + 0.6 * knock) + 0.85 * soak
    sound = chorus(saturate(dry, 1.2), mix=0.35)
    return faded(t, lowpass(sound + 0.35 * in_room(sound, DECK), 4200), 0.24)


def bell_tone(t, start, midi, decay):
    """A glassy bell: phase modulation for the strike, a pure octave below for the hold."""
    f, age = hz(midi) + 0 * t, np.maximum(t - start, 0)
    strike = fm(f, 3.0, 1.5 * np.exp(-age / 0.05)) * pluck(t - start, 0.0012, decay)
    return strike + 0.5 * fm(f / 2, 1.0, 0.5) * pluck(t - start, 0.003, decay * 1.2) \
        + 0.16 * fm(f * 2.001, 1.41, 0.9) * pluck(t - start, 0.001, decay * 0.4)


def chain():
    t = clock(0.72)
    sound = np.zeros((len(t), 2))
    for start, midi, strength, side in ((0.0, 76, 0.75, -0.4), (0.078, 81, 0.85, 0.4), (0.156, 88, 1.0, 0.0)):
        sound += panned(bell_tone(t, start, midi, 0.12) * strength, side)
    shine = swept(noise(t, 88), 2500 + 5000 * np.clip(t / 0.3, 0, 1), 3.0, band=True)
    sound += 0.10 * shine * gate(t - 0.10, 0.08, 0.10, 0.22)[:, None]
    return faded(t, sound + 0.45 * in_room(sound, DECK), 0.40)


def brass(t, start, midi, seconds, bright, rng):
    """A wide bank of saws whose filter opens with the note."""
    age = t - start
    f = hz(midi) * (1 - 0.025 * np.exp(-np.maximum(age, 0) / 0.02))
    tone = saws(f + 0 * t, rng, 0.005) * gate(age, 0.008, seconds, 0.12)[:, None]
    return swept(tone, 250 + bright * np.exp(-np.maximum(age, 0) / 0.28), 0.9)


def game_start():
    t = clock(1.6)
    rng = np.random.default_rng(89)
    sound = np.zeros((len(t), 2))
    for start, midi in ((0.0, 57), (0.13, 64), (0.26, 69)):
        sound += 0.55 * brass(t, start, midi, 0.09, 2400, rng) + 0.35 * panned(bell_tone(t, start, midi + 12, 0.10))
    for midi, strength in ((45, 1.0), (57, 0.8), (64, 0.7), (69, 0.7), (71, 0.4), (76, 0.6)):
        sound += 0.55 * strength * brass(t, 0.42, midi, 0.50, 3600, rng)
    sound += 0.45 * panned(bell_tone(t, 0.42, 88, 0.30), 0.2) + 0.3 * panned(bell_tone(t, 0.42, 81, 0.36), -0.2)
    rise = swept(noise(t, 90), 300 + 5200 * np.clip(t / 0.42, 0, 1) ** 2, 1.5, band=True)
    sound += 0.55 * rise * (ease(0, 0.40, t) * ease(0.46, 0.42, t))[:, None]
    impact = sine(glide(np.maximum(t - 0.42, 0), 130, 44, 0.06)) * pluck(t - 0.42, 0.002, 0.20)
    burst = swept(noise(t, 91), glide(np.maximum(t - 0.42, 0), 6000, 400, 0.15)) * pluck(t - 0.42, 0.002, 0.16)[:, None]
    sound = saturate(0.30 * (sound + 1.7 * panned(impact) + 0.6 * burst), 1.8)
    return faded(t, sound + 0.40 * in_room(sound, DECK), 0.95)


def game_over():
    t = clock(2.1)
    rng = np.random.default_rng(92)
    sound = np.zeros((len(t), 2))
    # A minor line that steps down and lets go, over a body that sinks out of hearing.
    for start, midi, seconds in ((0.0, 69, 0.17), (0.20, 65, 0.17), (0.40, 62, 0.20), (0.64, 57, 0.70)):
        sound += 0.6 * brass(t, start, midi, seconds, 2000, rng) + 0.30 * panned(bell_tone(t, start, midi + 12, 0.22))
    for midi in (33, 45, 52, 60):
        slide = hz(midi) * 2 ** (-5 / 12 * ease(1.0, 2.1, t))
        bank = saws(slide, rng, 0.008) * gate(t - 0.64, 0.01, 0.65, 0.75)[:, None]
        sound += 0.5 * swept(bank, glide(np.maximum(t - 0.64, 0), 1500, 90, 0.42), 1.1)
    drop = saturate(sine(glide(t, 120, 30, 0.28)) * pluck(t, 0.003, 0.40), 1.6)
    boom = sine(glide(np.maximum(t - 0.64, 0), 110, 36, 0.10)) * pluck(t - 0.64, 0.003, 0.35)
    wind = swept(noise(t, 93), glide(t, 3800, 180, 0.40), 1.1) * pluck(t, 0.004, 0.38)[:, None]
    sound = saturate(0.34 * (1.5 * sound + panned(0.6 * drop + 0.75 * boom) + 0.8 * wind), 1.8)
    return faded(t, sound + 0.45 * in_room(sound, DECK), 1.3)


def menu_sound(seconds, notes):
    """Small glass drops: (start, note, strength) of each."""
    t = clock(seconds)
    sound = np.zeros((len(t), 2))
    for k, (start, midi, strength) in enumerate(notes):
        drop = fm(hz(midi) * (1 - 0.04 * np.exp(-np.maximum(t - start, 0) / 0.006)), 2.0,
                  0.35 + 1.3 * np.exp(-np.maximum(t - start, 0) / 0.03)) * pluck(t - start, 0.002, 0.040)
        drop += 0.5 * sine(hz(midi - 12) + 0 * t) * pluck(t - start, 0.003, 0.055)
        tick = bandpass(noise(t, 94 + k), 1800, 5200) * pluck(t - start, 0.0006, 0.004)[:, None]
        sound += strength * (panned(drop, (-0.2, 0.2)[k % 2]) + 0.20 * tick)
    return faded(t, lowpass(sound + 0.5 * in_room(sound, HULL), 6500), 0.6 * seconds)


# What makes the sound and its peak in dBFS, which for none passes -3.
SOUNDS = {
    "shoot_player": (shoot_player, -17.5),
    "shoot_enemy": (shoot_enemy, -22.0),
    "explode": (explode, -18.5),
    "shield_change": (shield_change, -16.0),
    "shield_hit": (shield_hit, -18.0),
    "game_start": (game_start, -8.5),
    "game_over": (game_over, -8.0),
    "chain": (chain, -15.5),
    "menu_move": (lambda: menu_sound(0.16, [(0.0, 76, 1)]), -19.0),
    "menu_select": (lambda: menu_sound(0.26, [(0.0, 76, 0.8), (0.065, 83, 1)]), -17.0),
    "menu_back": (lambda: menu_sound(0.26, [(0.0, 76, 0.8), (0.065, 69, 1)]), -17.0),
}


def levelled(samples, peak):
    """At the given peak, free of any offset and rumble, and silent at both ends."""
    samples = highpass(samples, 28)
    edge = np.minimum(1, np.minimum(np.arange(len(samples)) / 24, np.arange(len(samples))[::-1] / 600))
    samples = samples * edge[:, None]
    return samples / np.abs(samples).max() * level(peak)


FILES = {
    f"sounds/{name}.ogg": lambda path, serial=serial, make=make, peak=peak: write_ogg(
        path, levelled(make(), peak), serial, quality=5)
    for serial, (name, (make, peak)) in enumerate(SOUNDS.items(), start=1)
}
