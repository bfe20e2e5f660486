# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""What sounds and music are made with: oscillators, filters, rooms, levelling and the Ogg Vorbis files.

Sound is an array of samples, mono or with one column per ear."""

import subprocess
import tempfile
import wave
from pathlib import Path

import numpy as np
from scipy import ndimage, signal

RATE = 44100


# ---------------------------------------------------------------------------------------------------------
# Time, pitch and envelopes
# ---------------------------------------------------------------------------------------------------------

def clock(seconds):
    return np.arange(int(seconds * RATE)) / RATE


def hz(midi):
    return 440.0 * 2 ** ((np.asarray(midi) - 69) / 12)


def glide(t, start, end, pace):
    """Values that move from start toward end; pace is the time constant in seconds."""
    return end + (start - end) * np.exp(-t / pace)


def pluck(t, attack, decay):
    """Zero before the time zero, so that pluck(t - 0.1, ...) begins later."""
    t = np.maximum(t, 0)
    return (1 - np.exp(-t / attack)) * np.exp(-t / decay)


def ease(low, high, value):
    """0 up to low, 1 from high on, a smooth step between; low > high gives a falling step."""
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def gate(t, attack, seconds, release):
    """Opens at time zero and closes after the given seconds."""
    return ease(0, attack, t) * ease(seconds + release, seconds, t)


# ---------------------------------------------------------------------------------------------------------
# Sources
# ---------------------------------------------------------------------------------------------------------

def phase_of(frequency, start=0.0):
    return start + np.cumsum(np.asarray(frequency) / RATE)


def sine(frequency):
    return np.sin(2 * np.pi * phase_of(frequency))


def step_residue(phase, pace):
    """What rounds off the jump of a saw at phase 0, so that it does not alias."""
    late, early = phase < pace, phase > 1 - pace
    residue = np.zeros_like(phase)
    a = phase[late] / pace[late]
    residue[late] = 2 * a - a * a - 1
    a = (phase[early] - 1) / pace[early]
    residue[early] = a * a + 2 * a + 1
    return residue


def saw(frequency, start=0.0):
    phase, pace = phase_of(frequency, start) % 1, np.asarray(frequency) / RATE
    return 2 * phase - 1 - step_residue(phase, pace)


def pulse(frequency, width=0.5, start=0.0):
    return (saw(frequency, start) - saw(frequency, start + 1 - width)) * 0.7


def saws(frequency, rng, detune=0.006, voices=7, width=0.9):
    """Saws around one pitch, spread over the stereo field."""
    offsets = np.linspace(-1, 1, voices)
    out = np.zeros((len(frequency), 2))
    for k, offset in enumerate(offsets):
        side = width * offsets[(k * 3) % voices]
        voice = saw(frequency * (1 + detune * offset * (1 + 0.15 * rng.standard_normal())), rng.random())
        out += np.outer(voice * (1 - 0.45 * abs(offset)), pan_law(side))
    return out / voices ** 0.5


def fm(frequency, ratio, index, feedback_ratio=0.0, feedback_index=0.0):
    """One sine bends the phase of another; a third may bend the first."""
    phase = 2 * np.pi * phase_of(frequency)
    bend = np.sin(ratio * phase + feedback_index * np.sin(feedback_ratio * phase))
    return np.sin(phase + index * bend)


def modes(t, partials):
    """A struck body: (frequency, strength, decay in seconds) of each of its modes."""
    return sum(strength * np.sin(2 * np.pi * frequency * t) * np.exp(-np.maximum(t, 0) / decay) * (t >= 0)
               for frequency, strength, decay in partials)


def noise(t, seed, channels=2):
    return np.random.default_rng(seed).standard_normal((len(t), channels))


# ---------------------------------------------------------------------------------------------------------
# Filters and effects
# ---------------------------------------------------------------------------------------------------------

def lowpass(x, frequency, order=2):
    return signal.sosfilt(signal.butter(order, frequency, "low", fs=RATE, output="sos"), x, axis=0)


def highpass(x, frequency, order=2):
    return signal.sosfilt(signal.butter(order, frequency, "high", fs=RATE, output="sos"), x, axis=0)


def bandpass(x, low, high, order=1):
    return signal.sosfilt(signal.butter(order, (low, high), "band", fs=RATE, output="sos"), x, axis=0)


def bell_boost(x, frequency, decibels, q=0.8):
    """Raises or lowers the neighbourhood of a frequency."""
    a, w = 10 ** (decibels / 40), 2 * np.pi * frequency / RATE
    alpha = np.sin(w) / (2 * q)
    b = np.array([1 + alpha * a, -2 * np.cos(w), 1 - alpha * a])
    c = np.array([1 + alpha / a, -2 * np.cos(w), 1 - alpha / a])
    return signal.lfilter(b / c[0], c / c[0], x, axis=0)


def swept(x, cutoff, q=0.75, steep=False, band=False, block=64):
    """A lowpass (or bandpass) whose cutoff follows a curve of one value per sample; q may be such a curve, too."""
    shape = x.shape
    x = x.reshape(len(x), -1)
    w = 2 * np.pi * np.clip(np.asarray(cutoff)[::block], 20, 0.45 * RATE) / RATE
    alpha = np.sin(w) / (2 * (q[::block] if np.ndim(q) else q))
    norm = 1 / (1 + alpha)
    sections = np.zeros((len(w), 2 if steep else 1, 6))
    if band:
        sections[:, 0, 0], sections[:, 0, 2] = alpha * norm, -alpha * norm
    else:
        sections[:, 0, 0] = sections[:, 0, 2] = (1 - np.cos(w)) / 2 * norm
        sections[:, 0, 1] = (1 - np.cos(w)) * norm
    sections[:, 0, 3], sections[:, 0, 4], sections[:, 0, 5] = 1, -2 * np.cos(w) * norm, (1 - alpha) * norm
    if steep:
        # The second pair of poles without resonance, or it would whistle twice.
        alpha = np.sin(w) / 1.2
        sections[:, 1] = np.column_stack([(1 - np.cos(w)) / 2, 1 - np.cos(w), (1 - np.cos(w)) / 2,
                                          1 + alpha, -2 * np.cos(w), 1 - alpha]) / (1 + alpha)[:, None]
    state = np.zeros((sections.shape[1], 2, x.shape[1]))
    out = np.empty_like(x)
    for k, section in enumerate(sections):
        out[k * block:(k + 1) * block], state = signal.sosfilt(section, x[k * block:(k + 1) * block], axis=0, zi=state)
    return out.reshape(shape)


def saturate(x, drive):
    return np.tanh(drive * x) / np.tanh(drive)


def pan_law(side):
    """Strengths of the left and right ear at equal power; side from -1 to 1."""
    return np.array([np.cos((side + 1) * np.pi / 4), np.sin((side + 1) * np.pi / 4)])


def panned(mono, side=0.0):
    return np.outer(mono, pan_law(side))


def room(seconds, seed, bright=0.5, before=0.01):
    """The answer of a space to a clap, one for each ear: single walls first, then a dense tail whose treble dies first.

    bright is the share of its length that the treble lasts."""
    rng = np.random.default_rng(seed)
    t = clock(before + seconds)
    spectrum = np.fft.rfft(rng.standard_normal((len(t), 2)), axis=0)
    f = np.fft.rfftfreq(len(t), 1 / RATE)[:, None]
    tail = np.zeros((len(t), 2))
    edges = [120, 500, 1800, 5000, 11000]
    for k, (low, high) in enumerate(zip(edges, edges[1:])):
        band = 1 / (1 + (f / high) ** 6) / (1 + (low / np.maximum(f, 1)) ** 6)
        decay = seconds / 6.9 * (1 - (1 - bright) * k / 3)
        tail += np.fft.irfft(spectrum * band, len(t), axis=0) * np.exp(-t / decay)[:, None] * (1.0, 1.0, 0.9, 0.7)[k]
    tail *= ease(0, 0.03 + 0.02 * seconds, t)[:, None] * 0.9 + 0.1
    for ear in (0, 1):
        for time in rng.uniform(0.003, 0.05, 9):
            tail[int(time * RATE), ear] += rng.choice([-1, 1]) * 2.5 * np.exp(-time / 0.03)
    silent = int(before * RATE)
    tail = np.concatenate([np.zeros((silent, 2)), tail[:len(tail) - silent]])
    return tail / np.sqrt((tail ** 2).sum(0))


def in_room(x, answer):
    """Only the room's answer, as long as x."""
    return np.column_stack([signal.oaconvolve(x[:, ear], answer[:, ear])[:len(x)] for ear in (0, 1)])


def echoes(x, seconds, feedback, low=300, high=3500, count=6):
    """Repeats that wander from side to side and grow duller; x itself is not in them."""
    out, shift = np.zeros_like(x), int(seconds * RATE)
    wet = np.column_stack([x.mean(1) * 1.2, x.mean(1) * 0.3])
    for _ in range(count):
        wet = bandpass(wet, low, high)
        wet = np.concatenate([np.zeros((shift, 2)), wet[:-shift, ::-1]]) * feedback
        out += wet
    return out / feedback


def chorus(x, depth=0.0022, pace=0.31, mix=0.5):
    """Copies on slowly moving delays, the ears in opposite motion."""
    n = np.arange(len(x))
    out = x.copy()
    for ear, turn in ((0, 0.0), (1, np.pi)):
        delay = (0.009 + depth * np.sin(2 * np.pi * pace * n / RATE + turn)) * RATE
        out[:, ear] += mix * np.interp(n - delay, n, x[:, ear])
    return out / (1 + mix * mix) ** 0.5


# ---------------------------------------------------------------------------------------------------------
# Level
# ---------------------------------------------------------------------------------------------------------

def decibels(value):
    return 20 * np.log10(np.maximum(value, 1e-9))


def level(db):
    return 10 ** (db / 20)


def followed(gain, hop, release):
    """Gain that falls at once with the given one and comes back over the release time (seconds)."""
    pull, current, out = np.exp(-hop / (release * RATE)), 1.0, []
    for wanted in gain.tolist():
        current = wanted if wanted < current else wanted + (current - wanted) * pull
        out.append(current)
    return np.array(out)


def limited(x, ceiling, release=0.09):
    """Nothing passes the ceiling (linear), between the samples neither; the gain moves before the peak comes."""
    hop, ahead = 16, 96
    peaks = np.zeros(-(-len(x) // hop) * hop)
    peaks[:len(x)] = np.abs(signal.resample_poly(x, 4, 1, axis=0)).reshape(len(x), 4, 2).max((1, 2))
    wanted = np.minimum(1, ceiling / np.maximum(peaks.reshape(-1, hop).max(1), 1e-9))
    reach = ahead // hop
    wanted = ndimage.minimum_filter1d(followed(ndimage.minimum_filter1d(wanted, 2 * reach + 1), hop, release), 3)
    smooth = np.interp(np.arange(len(x)), np.arange(len(wanted)) * hop + hop / 2,
                       ndimage.uniform_filter1d(wanted, reach))
    return x * smooth[:, None]


def glued(x, threshold, ratio, release=0.16):
    """Gentle compression of everything above the threshold (dB)."""
    hop = 128
    padded = np.zeros((-(-len(x) // hop) * hop, 2))
    padded[:len(x)] = x
    power = ndimage.uniform_filter1d((padded ** 2).mean(1).reshape(-1, hop).mean(1), 7)
    over = np.maximum(decibels(np.sqrt(np.maximum(power, 0))) - threshold, 0)
    gain = ndimage.uniform_filter1d(followed(level(-over * (1 - 1 / ratio)), hop, release), 5)
    return x * np.interp(np.arange(len(x)), np.arange(len(gain)) * hop + hop / 2, gain)[:, None]


def loudness_blocks(x):
    """Power of each block of 400 ms, ten a second, weighted as in ITU-R BS.1770."""
    k, q = np.tan(np.pi * 1681.974450955533 / RATE), 0.7071752369554196
    high, band = level(3.999843853973347), level(3.999843853973347 * 0.4996667741545416)
    norm = 1 + k / q + k * k
    shelf = [(high + band * k / q + k * k) / norm, 2 * (k * k - high) / norm, (high - band * k / q + k * k) / norm,
             1, 2 * (k * k - 1) / norm, (1 - k / q + k * k) / norm]
    k, q = np.tan(np.pi * 38.13547087602444 / RATE), 0.5003270373238773
    norm = 1 + k / q + k * k
    low_cut = [1, -2, 1, 1, 2 * (k * k - 1) / norm, (1 - k / q + k * k) / norm]
    weighted = signal.sosfilt([shelf, low_cut], x, axis=0)
    hop = RATE // 10
    tenths = (weighted[:len(weighted) // hop * hop] ** 2).reshape(-1, hop, 2).mean(1).sum(1)
    return np.convolve(tenths, np.full(4, 0.25), "valid")


def loudness(x):
    """Integrated loudness in LUFS."""
    blocks = loudness_blocks(x)
    blocks = blocks[blocks > 10 ** ((-70 + 0.691) / 10)]
    blocks = blocks[blocks > blocks.mean() / 10]
    return -0.691 + 10 * np.log10(blocks.mean())


def momentary(x):
    """The loudest 400 ms in LUFS; for what is shorter, silence around it counts as well."""
    around = np.zeros((RATE // 2, 2))
    return -0.691 + 10 * np.log10(loudness_blocks(np.concatenate([around, x, around])).max())


def true_peak(x):
    return np.abs(signal.resample_poly(x, 4, 1, axis=0)).max()


# ---------------------------------------------------------------------------------------------------------
# Files
# ---------------------------------------------------------------------------------------------------------

def write_ogg(path, samples, serial, quality):
    """Encodes through oggenc; the fixed serial number keeps the file the same from run to run."""
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / "source.wav"
        with wave.open(str(source), "wb") as out:
            out.setparams((2, 2, RATE, 0, "NONE", ""))
            out.writeframes(np.round(np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes())
        subprocess.run(["oggenc", "-Q", "--serial", str(serial), "-q", str(quality), "-o", str(path), str(source)], check=True)


def read_ogg(path):
    """Samples as a player of the file gets them, two columns."""
    with tempfile.TemporaryDirectory() as folder:
        target = Path(folder) / "target.wav"
        subprocess.run(["oggdec", "-Q", "-o", str(target), str(path)], check=True)
        with wave.open(str(target), "rb") as source:
            if (source.getnchannels(), source.getframerate()) != (2, RATE):
                raise ValueError(f"{path}: not stereo at {RATE} Hz")
            return np.frombuffer(source.readframes(source.getnframes()), "<i2").reshape(-1, 2) / 32768
