# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The instruments of the music and the desk that mixes them."""

from functools import lru_cache

import numpy as np

from synth import *

TAIL = 3.6  # seconds in which the last chord rings out


# ---------------------------------------------------------------------------------------------------------
# Drums.  A variant is another stroke of the same drum.
# ---------------------------------------------------------------------------------------------------------

@lru_cache(None)
def kick(high=170, low=47, seconds=0.30, click=0.5):
    t = clock(seconds)
    body = sine(glide(t, high, low, 0.028) + 900 * np.exp(-t / 0.0022)) * pluck(t, 0.0008, seconds * 0.42)
    stroke = bandpass(noise(t, 11, 1)[:, 0], 1500, 6000) * pluck(t, 0.0002, 0.004)
    return saturate(1.1 * body + click * stroke, 1.9) * ease(seconds, seconds * 0.7, t)


@lru_cache(None)
def snare(variant=0, tone=196, seconds=0.26, dark=1.0):
    t = clock(seconds)
    shell = modes(t, [(tone, 1, 0.05), (tone * 1.51, 0.7, 0.035), (tone * 2.3, 0.3, 0.02)])
    wires = bandpass(noise(t, 20 + variant), 700, 6500 * dark, 1) * (pluck(t, 0.0006, 0.055) + 0.25 * pluck(t, 0.01, 0.11))[:, None]
    return saturate(panned(0.75 * shell) + 0.85 * wires, 1.5) * ease(seconds, seconds * 0.6, t)[:, None]


@lru_cache(None)
def clap(variant=0):
    t = clock(0.32)
    hands = sum(pluck(t - d, 0.0004, 0.006) for d in (0.0, 0.011, 0.023)) + pluck(t - 0.031, 0.0008, 0.075)
    return bandpass(noise(t, 30 + variant), 850, 3600) * hands[:, None] * 1.5 * ease(0.32, 0.2, t)[:, None]


@lru_cache(None)
def hat(variant=0, decay=0.028):
    t = clock(min(0.6, decay * 7))
    metal = sum(np.sign(np.sin(2 * np.pi * f * 1.9 * t + variant)) for f in (2137, 3151, 3823, 4519, 5303, 6101)) / 6
    sound = 0.35 * np.column_stack([metal, np.roll(metal, 23)]) + 0.8 * noise(t, 40 + variant)
    return highpass(sound, 7200, 3) * (pluck(t, 0.0004, decay) * ease(t[-1], t[-1] * 0.6, t))[:, None]


@lru_cache(None)
def shaker(variant=0):
    t = clock(0.09)
    return bandpass(noise(t, 50 + variant), 5200, 12000) * (ease(0, 0.022, t) * ease(0.085, 0.025, t))[:, None]


@lru_cache(None)
def tom(midi, seconds=0.34):
    t = clock(seconds)
    body = sine(hz(midi) * (1 + 0.7 * np.exp(-t / 0.03))) * pluck(t, 0.001, 0.11)
    skin = bandpass(noise(t, 60, 1)[:, 0], 300, 2400) * pluck(t, 0.0005, 0.02)
    return saturate(body + 0.5 * skin, 1.4) * ease(seconds, seconds * 0.6, t)


@lru_cache(None)
def crash(variant=0, seconds=2.6):
    t = clock(seconds)
    wash = highpass(bandpass(noise(t, 70 + variant), 3800, 13000), 3000)
    shimmer = sum(np.sin(2 * np.pi * f * t + f) for f in (3411, 4127, 5233, 6871, 7907)) / 5
    return (wash + 0.20 * panned(shimmer)) * (pluck(t, 0.001, seconds * 0.2) * ease(seconds, seconds * 0.5, t))[:, None]


@lru_cache(None)
def riser(seconds, seed=80):
    t = clock(seconds)
    x = t / seconds
    sound = swept(noise(t, seed), 250 * 24 ** x, 1.6, band=True)
    tone = saws(hz(45) * 2 ** (2 * x), np.random.default_rng(seed), 0.012)
    return (sound + 0.12 * swept(tone, 300 * 14 ** x)) * (x ** 2 * ease(1.0, 0.985, x))[:, None]


@lru_cache(None)
def fall(seconds, seed=81):
    """A wave that breaks on the first beat and draws back."""
    t = clock(seconds)
    boom = panned(sine(glide(t, 90, 33, 0.25)) * pluck(t, 0.003, 0.5))
    return (0.8 * swept(noise(t, seed), glide(t, 5200, 160, seconds * 0.22), 0.9) * pluck(t, 0.004, seconds * 0.2)[:, None]
            + 0.9 * boom) * ease(seconds, seconds * 0.5, t)[:, None]


# ---------------------------------------------------------------------------------------------------------
# Tones.  Lengths in seconds, loud from 0 to 1: harder notes are brighter, too.
# ---------------------------------------------------------------------------------------------------------

@lru_cache(None)
def bass(midi, seconds, loud=0.8, bright=900.0):
    """Analogue: saw and square an octave apart through a plucked filter, on a sine."""
    t = clock(seconds + 0.05)
    f = hz(midi) + 0 * t
    tone = 0.7 * saw(f) + 0.5 * pulse(f * 1.003, 0.42, 0.3)
    cutoff = 110 + hz(midi) + bright * loud * np.exp(-t / (0.05 + 0.06 * loud))
    return (saturate(swept(tone, cutoff, 1.2, steep=True, block=32), 1.4) * 0.75
            + 0.60 * sine(f)) * gate(t, 0.004, seconds, 0.045)


@lru_cache(None)
def reese(midi, seconds, seed=5):
    """Two saws that beat against each other, above a steady sine."""
    t = clock(seconds + 0.08)
    f = hz(midi) + 0 * t
    rng = np.random.default_rng(seed)
    growl = saws(f * 2, rng, 0.011, 3, 0.6) * 0.6 + saws(f, rng, 0.009, 3, 0.3)
    cutoff = 260 + 340 * (0.5 + 0.5 * np.sin(2 * np.pi * t / max(seconds, 0.35) - 1.2))
    return (0.55 * swept(growl, cutoff, 1.0, steep=True) + panned(0.75 * sine(f))) * gate(t, 0.008, seconds, 0.07)[:, None]


def acid(total, notes, cutoff, seed=6):
    """A single voice with a squelching filter that slides between notes.

    notes: (start sample, seconds, pitch, accent, slide into it); cutoff: a curve for the whole length."""
    pitch, envelope, sweep = np.zeros(total), np.zeros(total), np.zeros(total)
    for start, seconds, midi, accent, slide in notes:
        pitch[start:] = midi
        t = clock(seconds * (1.02 if slide else 0.72) + 0.02)[:total - start]
        envelope[start:start + len(t)] = (0.85 + 0.3 * accent) * gate(t, 0.003, seconds * (1.0 if slide else 0.62), 0.03)
        sweep[start:start + len(t)] = (1.2 + 1.1 * accent) * np.exp(-t / (0.10 - 0.03 * accent))
    pitch[:notes[0][0]] = notes[0][2]
    pitch = signal.sosfilt(signal.butter(1, 18, fs=RATE, output="sos"), pitch - pitch[0]) + pitch[0]
    f = hz(pitch)
    tone = 0.8 * saw(f) + 0.35 * pulse(f, 0.47, 0.2)
    out = saturate(swept(tone, np.minimum(cutoff * 2 ** sweep, 5200), 3.4, steep=True, block=48) * envelope * 0.7, 1.8)
    return out


@lru_cache(None)
def pad_note(midi, seconds, seed=7, detune=0.007, attack=0.35, release=0.6):
    t = clock(seconds + release)
    f = hz(midi) * 2 ** (0.03 / 12 * np.sin(2 * np.pi * 0.19 * t + midi))
    return saws(f, np.random.default_rng(seed + midi), detune, 7) * gate(t, attack, seconds, release)[:, None]


@lru_cache(None)
def glass(midi, loud=0.8, decay=0.22, ratio=2.0):
    """A pluck of phase modulation, bright at the stroke, round after it."""
    t = clock(min(2.4, decay * 5.5))
    f = hz(midi) + 0 * t
    tone = fm(f, ratio, (0.5 + 1.9 * loud) * np.exp(-t / (0.25 * decay)) + 0.12) * pluck(t, 0.0016, decay)
    tone += 0.30 * fm(f * 1.0035, 1.0, 0.5) * pluck(t, 0.003, decay * 1.3)
    return tone * loud * ease(t[-1], t[-1] * 0.7, t)


@lru_cache(None)
def saw_pluck(midi, loud=0.8, decay=0.16, bright=3200.0):
    t = clock(decay * 4.5)
    tone = saws(hz(midi) + 0 * t, np.random.default_rng(midi), 0.005, 5, 0.7) * pluck(t, 0.002, decay)[:, None]
    cutoff = 260 + hz(midi) * 0.8 + bright * loud * np.exp(-t / (decay * 0.45))
    return swept(tone, cutoff, 1.1, steep=True) * loud * ease(t[-1], t[-1] * 0.65, t)[:, None]


@lru_cache(None)
def electric_piano(midi, seconds, loud=0.7):
    t = clock(seconds + 0.35)
    f = hz(midi) + 0 * t
    body = fm(f, 1.0, (0.25 + 1.1 * loud) * np.exp(-t / 0.5))
    tine = fm(f, 14.0, 0.35 * loud * np.exp(-t / 0.06)) * np.exp(-t / 0.12)
    tone = (body + 0.35 * tine) * pluck(t, 0.003, 1.3 - 0.008 * (midi - 50)) * gate(t, 0.002, seconds, 0.3) * loud
    sway = 0.35 * np.sin(2 * np.pi * 4.4 * t)
    return np.column_stack([tone * (0.72 + sway * 0.5), tone * (0.72 - sway * 0.5)])


def lead(seconds, midi, before, loud=0.8, bright=2600.0, kind="saw"):
    """A singing voice: slides from the note before, trembles when held."""
    t = clock(seconds + 0.16)
    start = midi if before is None else midi + np.clip(before - midi, -5, 5)
    f = hz(glide(t, start, midi, 0.022) + 0.16 * np.sin(2 * np.pi * 5.3 * t) * ease(0.22, 0.6, t))
    rng = np.random.default_rng(int(midi * 10 + seconds * 1000))
    if kind == "saw":
        tone = saws(f, rng, 0.0055, 5, 0.55) * 0.9 + panned(0.35 * pulse(f * 0.5, 0.4))
    elif kind == "square":
        tone = panned(pulse(f, 0.38) * 0.5 + 0.4 * pulse(f * 1.004, 0.5, 0.4), -0.1) + panned(0.3 * saw(f * 0.997), 0.3)
    else:
        breath = bandpass(noise(t, int(midi)), 900, 4200) * (0.05 + 0.18 * np.exp(-t / 0.05))[:, None]
        tone = panned(fm(f, 1.0, 0.55 + 0.35 * np.exp(-t / 0.1)) + 0.18 * fm(f, 2.0, 0.4)) + 0.5 * breath
    cutoff = 500 + bright * loud * (0.55 + 0.45 * np.exp(-t / 0.25)) + hz(midi)
    return swept(tone, cutoff, 0.9) * (gate(t, 0.014, seconds, 0.14) * (0.8 + 0.2 * np.exp(-t / 0.15)) * loud)[:, None]


# ---------------------------------------------------------------------------------------------------------
# The desk
# ---------------------------------------------------------------------------------------------------------

class Desk:
    """Time in bars and sixteenths, a stereo channel for each group of instruments, and the mix of all."""

    def __init__(self, tempo, bars, seed, swing=0.0):
        self.step, self.bars, self.swing = 60 / tempo / 4, bars, swing
        self.rng = np.random.default_rng(seed)
        self.length = int((bars * 16 * self.step + TAIL) * RATE)
        self.channels, self.kicks = {}, []

    def at(self, bar, step=0.0):
        late = self.swing * self.step * (int(step) % 2 == 1)
        return int(((bar * 16 + step) * self.step + late) * RATE)

    def channel(self, name):
        if name not in self.channels:
            self.channels[name] = np.zeros((self.length, 2))
        return self.channels[name]

    def put(self, name, start, sound, gain=1.0, side=0.0, loose=0.0):
        """loose: how many seconds a player may be early or late, and a measure for how unevenly he strikes."""
        if loose:
            start += int(self.rng.normal(0, loose) * RATE)
            gain *= 1 + np.clip(self.rng.normal(0, 25 * loose), -0.2, 0.2)
        sound = panned(sound, side) if sound.ndim == 1 else sound
        start = max(start, 0)
        end = min(start + len(sound), self.length)
        self.channel(name)[start:end] += gain * sound[:end - start]

    def kick(self, bar, step, gain=1.0, **how):
        self.kicks.append((self.at(bar, step), gain))
        self.put("kick", self.at(bar, step), kick(**how), gain)

    def curve(self, *points):
        """From (bar, value) to (bar, value) in equal ratios, one value a sample."""
        bars, values = zip(*points)
        place = np.arange(self.length) / (16 * self.step * RATE)
        return np.exp(np.interp(place, bars, np.log(values)))

    def duck(self, name, depth, recover=0.20):
        """Each kick pushes the channel down, and it comes back before the next."""
        t = clock(recover * 1.6)
        back = ease(0, recover, t)
        gain = np.ones(self.length)
        for start, strength in self.kicks:
            part = gain[start:start + len(t)]
            np.minimum(part, 1 - depth * min(strength, 1) * (1 - back[:len(part)]), out=part)
        gain = ndimage.uniform_filter1d(gain, 180)
        self.channels[name] = self.channel(name) * gain[:, None]

    def mix(self, strips, hall, echo_seconds):
        """strips: for each channel its loudness (LUFS while it plays), what it sends to the hall and to the echoes
        (0 to 1), and how far the kick pushes it down (0 to 1)."""
        dry, to_hall, to_echo = (np.zeros((self.length, 2)) for _ in range(3))
        for name, (loud, hall_send, echo_send, depth) in strips.items():
            self.channels[name] = self.channel(name) * level(loud - loudness(self.channel(name)))
            if depth:
                self.duck(name, depth)
            x = self.channels.pop(name)
            dry += x
            to_hall += hall_send * x
            to_echo += echo_send * x
        wet = echoes(to_echo, echo_seconds, 0.52)
        return dry + wet + in_room(highpass(to_hall + 0.35 * wet, 220), hall)


def mastered(mix, loud, ceiling):
    """One loudness (LUFS) for every track, and no peak above the ceiling (dBTP)."""
    mix = highpass(mix, 30)
    # Room for the transients of the effects, then air above them.
    mix = bell_boost(bell_boost(mix, 2300, -1.5, 0.7), 9000, 4.0, 0.5)
    mid, side = mix.mean(1), (mix[:, 0] - mix[:, 1]) / 2
    side = highpass(side, 140)  # the bass stands in the middle
    mix = np.column_stack([mid + side, mid - side])
    n = np.arange(len(mix)) / RATE
    mix *= (ease(0, 0.03, n) * ease(n[-1], n[-1] - TAIL * 0.75, n))[:, None]
    mix *= level(loud - loudness(mix))
    mix = glued(mix, loud + 1.0, 2.0)
    gain = loud - loudness(mix)
    knee = 1.1 * level(ceiling)
    for _ in range(6):
        # Drums are rounded off first, as a tape would, so that the limiter has little to do.
        out = limited(knee * np.tanh(mix * level(gain) / knee), level(ceiling))
        gain += loud - loudness(out)
    return out
