# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""What sounds and music are made with: oscillators, noise, envelopes, loudness and the Ogg Vorbis writer.

Sound is an array of samples with one column per ear."""

import subprocess
import tempfile
import wave
from pathlib import Path

import numpy as np

# ---------------------------------------------------------------------------------------------------------
# Sound: arrays of samples, one column per ear
# ---------------------------------------------------------------------------------------------------------

RATE = 44100


def clock(seconds):
    return np.arange(int(seconds * RATE)) / RATE


def sweep(frequency, partials=(1.0,)):
    """A tone that follows the given frequency curve, with overtones of the given strengths."""
    phase = 2 * np.pi * np.cumsum(frequency) / RATE
    return sum(strength * np.sin((k + 1) * phase) for k, strength in enumerate(partials))


def glide(t, start, end, pace):
    """Frequencies that fall or rise from start toward end; pace is the time constant in seconds."""
    return end + (start - end) * np.exp(-t / pace)


def pluck(t, attack, decay):
    return (1 - np.exp(-t / attack)) * np.exp(-t / decay)


def hiss(t, low, high, seed):
    """Noise between two frequencies, in stereo."""
    spectrum = np.fft.rfft(np.random.default_rng(seed).standard_normal((2, len(t))), axis=1)
    f = np.fft.rfftfreq(len(t), 1 / RATE)
    band = 1 / (1 + (f / high) ** 4) / (1 + (low / np.maximum(f, 1)) ** 4)
    noise = np.fft.irfft(spectrum * band, len(t), axis=1).T
    return noise / noise.std()


def both(mono):
    return np.column_stack([mono, mono])


def note(semitones):
    """Frequency of a note counted in semitones from the A of 440 Hz."""
    return 440.0 * 2 ** (semitones / 12)


def after(t, start):
    """Time since start, clamped; makes an envelope begin later in a sound."""
    return np.maximum(t - start, 0)


def figure(seconds, notes, partials, decay):
    """A row of plucked notes: (start, semitones, strength)."""
    t = clock(seconds)
    return sum(strength * pluck(after(t, start), 0.004, decay) * (t >= start) * sweep(note(pitch) + 0 * t, partials)
               for start, pitch, strength in notes)


def finished(samples, peak):
    """Levelled, free of any offset, and faded at both ends so that nothing clicks."""
    fade = np.minimum(1, np.minimum(np.arange(len(samples)) / 40, np.arange(len(samples))[::-1] / 700))
    samples = (samples - samples.mean(0)) * fade[:, None]
    return samples / np.abs(samples).max() * 10 ** (peak / 20)


def write_ogg(path, samples, serial, quality):
    """Encodes through oggenc; the fixed serial number keeps the file the same from run to run."""
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / "source.wav"
        with wave.open(str(source), "wb") as out:
            out.setparams((2, 2, RATE, 0, "NONE", ""))
            out.writeframes(np.round(np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes())
        subprocess.run(["oggenc", "-Q", "--serial", str(serial), "-q", str(quality), "-o", str(path), str(source)], check=True)


def loudness(samples):
    """Integrated loudness in LUFS after ITU-R BS.1770: K weighting, then gated blocks of 400 ms."""
    z = np.exp(-2j * np.pi * np.fft.rfftfreq(len(samples)))

    def biquad(b, a):
        return (b[0] + b[1] * z + b[2] * z * z) / (1 + a[0] * z + a[1] * z * z)

    k, q = np.tan(np.pi * 1681.974450955533 / RATE), 0.7071752369554196
    high, band = 10 ** (3.999843853973347 / 20), 10 ** (3.999843853973347 / 20 * 0.4996667741545416)
    norm = 1 + k / q + k * k
    shelf = biquad(np.array([high + band * k / q + k * k, 2 * (k * k - high), high - band * k / q + k * k]) / norm,
                   np.array([2 * (k * k - 1), 1 - k / q + k * k]) / norm)
    k, q = np.tan(np.pi * 38.13547087602444 / RATE), 0.5003270373238773
    norm = 1 + k / q + k * k
    low_cut = biquad((1, -2, 1), np.array([2 * (k * k - 1), 1 - k / q + k * k]) / norm)
    weighted = np.fft.irfft(np.fft.rfft(samples, axis=0) * (shelf * low_cut)[:, None], len(samples), axis=0)
    hop = RATE // 10
    tenths = (weighted[:len(weighted) // hop * hop] ** 2).reshape(-1, hop, 2).mean(1).sum(1)
    blocks = np.convolve(tenths, np.full(4, 0.25), "valid")
    blocks = blocks[blocks > 10 ** ((-70 + 0.691) / 10)]
    blocks = blocks[blocks > blocks.mean() / 10]
    return -0.691 + 10 * np.log10(blocks.mean())
