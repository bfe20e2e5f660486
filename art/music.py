# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The music."""

import numpy as np

from canvas import ramp
from synth import *


# ---------------------------------------------------------------------------------------------------------
# Music: forty bars at 120 beats a minute, written into a ring so that the end flows into the beginning
# ---------------------------------------------------------------------------------------------------------

STEP = RATE // 8          # a sixteenth note
BAR = 16 * STEP
BARS = 40
LOUDNESS = -18.0          # LUFS

# Two four-bar turns in D minor, as semitones from A 440: bass note, then the chord above it.
TURN_A = [(-31, (-19, -16, -12)), (-35, (-19, -14, -11)), (-28, (-16, -12, -9)), (-33, (-17, -14, -9))]
TURN_B = [(-31, (-19, -16, -12)), (-35, (-19, -14, -11)), (-26, (-19, -14, -11)), (-24, (-20, -17, -12))]
# The tune, eight bars: (sixteenth at which the note starts, length in sixteenths, semitones from A 440)
TUNE = [(0, 12, 0), (12, 4, 3), (16, 12, 5), (28, 4, 3), (32, 8, 0), (40, 8, -4), (48, 14, -2),
        (64, 12, 0), (76, 4, 3), (80, 12, 5), (92, 4, 8), (96, 10, 10), (106, 6, 8), (112, 14, 7)]
# Which layers play in each stretch of eight bars
FORM = [("pad", "bass"), ("pad", "bass", "arp", "drums"), ("pad", "bass", "arp", "drums", "tune"),
        ("pad", "arp"), ("pad", "bass", "arp", "drums", "tune")]


class Ring:
    """A stereo track whose end is joined to its start."""

    def __init__(self, length):
        self.samples = np.zeros((length, 2))

    def add(self, start, mono, gain, pan=0.0):
        where = (start + np.arange(len(mono))) % len(self.samples)
        self.samples[where] += np.outer(mono, gain * np.sqrt([(1 - pan) / 2, (1 + pan) / 2]))

    def echo(self, steps, feedback):
        """Repeats that wander from side to side."""
        wet = self.samples
        for _ in range(4):
            wet = np.roll(wet, steps * STEP, axis=0)[:, ::-1] * feedback
            self.samples = self.samples + wet


def pad_voice(seconds, pitch):
    """Two slightly detuned tones with few overtones, swelling and sinking."""
    t = clock(seconds)
    tone = sum(sweep(note(pitch) * detune * (1 + 0 * t), (1, 0.4, 0.22, 0.12, 0.06)) for detune in (0.997, 1.003))
    return tone * ramp(0, 0.5, t) * ramp(seconds, seconds - 0.6, t)


def bass_voice(pitch):
    t = clock(0.26)
    return sweep(note(pitch) + 0 * t, (1, 0.6, 0.35, 0.2, 0.1)) * pluck(t, 0.004, 0.11) * ramp(0.26, 0.22, t)


def arp_voice(pitch):
    t = clock(0.32)
    return sweep(note(pitch) + 0 * t, (1, 0.0, 0.28, 0.0, 0.1)) * pluck(t, 0.003, 0.07) * ramp(0.32, 0.28, t)


def tune_voice(seconds, pitch):
    t = clock(seconds)
    tremble = 1 + 0.004 * np.sin(2 * np.pi * 5 * t) * ramp(0.2, 0.6, t)
    return sweep(note(pitch) * tremble, (1, 0.5, 0.3, 0.15, 0.08)) * ramp(0, 0.05, t) * ramp(seconds, seconds - 0.15, t)


def drum_kit():
    t = clock(0.3)
    kick = sweep(glide(t, 150, 44, 0.03), (1, 0.15)) * pluck(t, 0.001, 0.09) * ramp(0.3, 0.2, t)
    snare = hiss(t, 900, 5000, 91)[:, 0] * 0.3 * pluck(t, 0.001, 0.06) * ramp(0.3, 0.2, t)
    hat = hiss(t, 6000, 12000, 92)[:, 0] * 0.3 * pluck(t, 0.001, 0.02) * ramp(0.3, 0.2, t)
    return kick, snare, hat


def horizon():
    dry, wet = Ring(BARS * BAR), Ring(BARS * BAR)
    kick, snare, hat = drum_kit()
    for bar in range(BARS):
        layers, start = FORM[bar // 8], bar * BAR
        root, chord = (TURN_A if bar % 8 < 4 else TURN_B)[bar % 4]
        if "pad" in layers:
            for k, pitch in enumerate(chord):
                wet.add(start, pad_voice(2.5, pitch), 0.16, (-0.6, 0, 0.6)[k])
        if "bass" in layers:
            for step in (0, 2, 3, 6, 8, 10, 11, 14):
                dry.add(start + step * STEP, bass_voice(root + (12 if step in (3, 11) else 0)), 0.42)
        if "arp" in layers:
            tones = [*chord, chord[0] + 12, chord[2], chord[1]]
            for step in range(0, 16):
                wet.add(start + step * STEP, arp_voice(tones[step % 6] + 12), 0.13 if step % 4 else 0.18, 0.5 * (-1) ** step)
        if "drums" in layers:
            for step in (0, 4, 8, 12):
                dry.add(start + step * STEP, kick, 0.75)
            for step in (4, 12):
                dry.add(start + step * STEP, snare, 0.42)
            for step in range(2, 16, 4):
                dry.add(start + step * STEP, hat, 0.30, 0.3)
        if "tune" in layers and bar % 8 == 0:
            for step, length, pitch in TUNE:
                wet.add(start + step * STEP, tune_voice(length / 8 + 0.1, pitch), 0.15, -0.1)
    wet.echo(3, 0.38)
    return dry.samples + wet.samples


def mastered(samples):
    """At the common loudness, with a soft ceiling for the few peaks above it."""
    samples = samples * 10 ** ((LOUDNESS - loudness(samples)) / 20)
    return np.where(np.abs(samples) > 0.6,
                    np.sign(samples) * (0.6 + 0.3 * np.tanh((np.abs(samples) - 0.6) / 0.3)), samples)


FILES = {
    "music/horizon.ogg": lambda path: write_ogg(path, mastered(horizon()), 100, quality=3),
}
