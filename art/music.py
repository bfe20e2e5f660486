# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT
"""The music: four pieces that may follow each other in any order.

All begin with quiet chords, end on a chord that rings out, and have one loudness.  Notes are numbered as in MIDI
(60 is the middle C), times count in bars and sixteenths."""

import numpy as np

from instruments import *

LOUDNESS = -16.8    # LUFS
CEILING = -10.0      # dBTP: leaves the effects room in the mixer, which only sums
QUALITY = 5.5


def sing(desk, channel, bar, tune, gain=1.0, side=0.0, transpose=0, **voice):
    """tune: (sixteenth, length in sixteenths, note).  Close notes are tied, the first of a phrase is not."""
    before, end = None, -1
    for step, length, midi in tune:
        loud = 0.82 + 0.12 * (step % 8 == 0) + desk.rng.uniform(-0.05, 0.05)
        start = max(desk.at(bar, step) + int(desk.rng.normal(0, 0.003) * RATE), 0)
        desk.put(channel, start, lead(length * desk.step * 0.96, midi + transpose, before, loud, **voice), gain, side)
        before, end = (midi + transpose, step + length)


def chord(desk, channel, bar, notes, bars=1.0, gain=1.0, **voice):
    for midi in notes:
        desk.put(channel, desk.at(bar), pad_note(midi, bars * 16 * desk.step, **voice), gain)


def hats(desk, bar, steps, gain=1.0, decay=0.026):
    """steps: (sixteenth, strength)"""
    for step, strength in steps:
        desk.put("hats", desk.at(bar, step), hat(int(desk.rng.integers(4)), decay), gain * strength,
                 0.25 * (-1) ** (int(step) // 2), loose=0.0022)


def roll(desk, bar, bars, sound=snare):
    """Strokes that come closer and grow until the next section."""
    steps = int(bars * 16)
    for step in range(steps):
        share = step / steps
        if step % (4 if share < 0.4 else 2 if share < 0.75 else 1) == 0:
            desk.put("snare", desk.at(bar, step), sound(step % 3), 0.18 + 0.62 * share ** 1.5, loose=0.002)


def tom_fill(desk, bar, strokes):
    for step, midi in strokes:
        desk.put("snare", desk.at(bar, step), tom(midi), desk.rng.uniform(0.75, 0.95), (midi - 45) / 14, loose=0.002)


# ---------------------------------------------------------------------------------------------------------
# Horizon: D minor, 122 beats a minute.  Wide and hopeful, four to the floor.
# ---------------------------------------------------------------------------------------------------------

def horizon():
    desk = Desk(122, 60, 101, swing=0.04)
    dm, bb, f, c, gm, a = ((38, (50, 57, 62, 65)), (34, (53, 58, 62, 65)), (41, (53, 57, 60, 67)), (36, (52, 55, 60, 67)),
                           (43, (50, 58, 62, 67)), (33, (52, 57, 61, 64)))
    turn, lift = (dm, bb, f, c, dm, bb, gm, a), (bb, c, dm, f, gm, c, f, a)
    theme = [(0, 3, 74), (3, 3, 69), (6, 6, 77), (12, 4, 76), (16, 3, 74), (19, 3, 70), (22, 6, 74), (28, 4, 72),
             (32, 3, 72), (35, 3, 69), (38, 6, 72), (44, 2, 74), (46, 2, 76), (48, 6, 76), (54, 6, 79), (60, 4, 76),
             (64, 3, 77), (67, 3, 74), (70, 6, 81), (76, 4, 79), (80, 3, 77), (83, 3, 74), (86, 6, 77), (92, 4, 74),
             (96, 3, 79), (99, 3, 74), (102, 6, 82), (108, 4, 81), (112, 6, 81), (118, 4, 79), (122, 6, 76)]
    soaring = [(0, 6, 77), (6, 6, 82), (12, 4, 81), (16, 6, 79), (22, 10, 76), (32, 6, 77), (38, 6, 81), (44, 4, 79),
               (48, 12, 77), (60, 4, 74), (64, 6, 79), (70, 6, 82), (76, 4, 81), (80, 6, 79), (86, 6, 76), (92, 4, 72),
               (96, 6, 81), (102, 6, 77), (108, 4, 72), (112, 8, 76), (120, 8, 73)]
    for bar in range(60):
        root, notes = (lift if 48 <= bar < 56 else turn)[bar % 8]
        chord(desk, "pad", bar, notes, attack=0.5 if bar == 0 else 0.12, release=0.7)
        # Sixteenths in groups of three, three and two
        if bar < 32 or bar >= 38:
            tones = [*notes, notes[1] + 12, notes[2] + 12]
            for step in range(16):
                tone = tones[(0, 2, 4, 1, 3, 5, 2, 3, 4, 1, 3, 5, 0, 4, 2, 3)[step]]
                loud = 0.85 if step in (0, 3, 6, 8, 11, 14) else 0.5
                desk.put("arp", desk.at(bar, step), saw_pluck(tone + 12, loud, 0.13), 1, 0.5 * (-1) ** step, loose=0.002)
        if 24 <= bar < 40 or bar >= 48:
            for step in (0, 3, 6, 10, 12):
                top = notes[(1, 2, 3, 2, 1)[(step + bar) % 5]] + 24
                desk.put("bells", desk.at(bar, step), glass(top, 0.55, 0.28), 1, 0.35 * (-1) ** bar, loose=0.003)
        if 8 <= bar < 32 or 40 <= bar < 58:
            for step in (2, 3, 6, 7, 10, 11, 14, 15):
                high = 12 if step in (7, 15) and bar >= 16 else 0
                desk.put("bass", desk.at(bar, step), bass(root + high, 0.11, 0.85 if step % 4 == 2 else 0.6), loose=0.001)
            for step in (0, 4, 8, 12):
                if not (bar in (31, 57) and step > 8):
                    desk.kick(bar, step)
        if 4 <= bar < 32 or 40 <= bar < 58:
            hats(desk, bar, [(s, (0.35, 0.2, 0.55, 0.25)[s % 4]) for s in range(16)], 1 if bar >= 8 else 0.6)
        if 16 <= bar < 32 or 40 <= bar < 56:
            hats(desk, bar, [(s, 0.75) for s in (2, 6, 10, 14)], decay=0.085)
        if 12 <= bar < 32 or 40 <= bar < 56:
            for step in (4, 12):
                desk.put("snare", desk.at(bar, step), snare(bar % 3), 0.75, loose=0.0015)
                desk.put("snare", desk.at(bar, step), clap(bar % 2), 0.6, loose=0.003)
            if bar % 2:
                desk.put("snare", desk.at(bar, 15), snare(1), 0.2, loose=0.002)
        if bar in (15, 23, 31, 47, 55):
            tom_fill(desk, bar, [(10, 50), (11, 50), (12, 47), (13, 45), (14, 43), (15, 40)] if bar % 16 == 15
                     else [(12, 50), (13, 47), (14, 43), (15, 43)])
    sing(desk, "lead", 16, theme)
    sing(desk, "lead", 24, theme)
    for step, length, midi in theme:                              # the break remembers the theme on glass
        desk.put("bells", desk.at(32, step), glass(midi + (0 if step < 64 else 12), 0.7, 0.45), 1.5, 0.2, loose=0.004)
    sing(desk, "lead", 40, theme)
    sing(desk, "second", 40, theme, transpose=-12, kind="square")
    sing(desk, "lead", 48, soaring)
    sing(desk, "second", 48, [(step, length, midi) for step, length, midi in soaring], transpose=-12, kind="square")
    roll(desk, 38, 2)
    for bar in (8, 16, 24, 40, 48, 56):
        desk.put("effects", desk.at(bar), crash(bar // 8 % 2), 0.8, 0.2)
    for bar, bars in ((6, 2), (14, 2), (36, 4)):
        seconds = bars * 16 * desk.step
        desk.put("effects", desk.at(bar), riser(seconds), 0.9)
    for bar in (32, 40, 56):
        desk.put("effects", desk.at(bar), fall(2.6), 1.0)
    chord(desk, "pad", 60, (50, 57, 62, 65, 69), 0.6, 1.1, attack=0.02, release=2.2)
    desk.put("bass", desk.at(60), bass(38, 1.2, 0.9))
    desk.put("bells", desk.at(60), glass(86, 0.6, 0.5), 1.2)
    desk.kick(60, 0)
    desk.channels["pad"] = swept(chorus(desk.channel("pad")), desk.curve(
        (0, 700), (8, 1500), (16, 1900), (32, 1300), (38, 5000), (40, 2300), (56, 2600), (60, 800), (62, 400)), 0.8)
    desk.channels["arp"] = swept(desk.channel("arp"), desk.curve(
        (0, 450), (8, 2000), (16, 3200), (31, 4500), (38, 700), (40, 4200), (56, 4500), (60, 500)), 1.0)
    return desk.mix({"kick": (-21, 0.02, 0, 0), "snare": (-25.5, 0.12, 0, 0), "hats": (-32, 0.04, 0, 0.2),
                     "bass": (-22.5, 0, 0, 0.45), "pad": (-25, 0.30, 0, 0.6), "arp": (-27, 0.16, 0.30, 0.4),
                     "bells": (-29, 0.35, 0.35, 0.1), "lead": (-22.5, 0.22, 0.22, 0.15), "second": (-28, 0.25, 0.1, 0.2),
                     "effects": (-29, 0.2, 0, 0)}, room(2.6, 201), 3 * desk.step)


# ---------------------------------------------------------------------------------------------------------
# Accretion: E minor, 136 beats a minute.  Dark and mechanical, a squelching line that never rests.
# ---------------------------------------------------------------------------------------------------------

def accretion():
    desk = Desk(136, 68, 102)
    em, c, d, g, am, b = ((40, (52, 59, 64, 67)), (36, (52, 60, 64, 67)), (38, (50, 57, 62, 66)), (43, (50, 59, 62, 67)),
                          (33, (52, 57, 60, 64)), (35, (51, 59, 63, 66)))
    turn = (em, em, c, d, em, g, am, b)
    hook = [(0, 2, 76), (3, 2, 76), (6, 2, 79), (8, 2, 78), (11, 2, 74), (14, 2, 71), (16, 2, 76), (19, 2, 76), (22, 2, 71),
            (24, 4, 74), (32, 2, 76), (35, 2, 76), (38, 2, 79), (40, 2, 78), (43, 2, 76), (46, 2, 72), (48, 2, 74),
            (51, 2, 74), (54, 2, 78), (56, 6, 81), (64, 2, 83), (67, 2, 83), (70, 2, 79), (72, 2, 78), (75, 2, 76),
            (78, 2, 71), (80, 2, 74), (83, 2, 74), (86, 2, 79), (88, 4, 83), (94, 2, 81), (96, 2, 81), (99, 2, 81),
            (102, 2, 84), (104, 2, 83), (107, 2, 81), (110, 2, 76), (112, 2, 78), (115, 2, 78), (118, 2, 75), (120, 4, 71),
            (126, 2, 75)]
    chant = [(0, 12, 71), (12, 4, 74), (16, 14, 76), (32, 12, 79), (44, 4, 76), (48, 14, 74), (64, 12, 76), (76, 4, 78),
             (80, 14, 79), (96, 12, 81), (108, 4, 79), (112, 8, 78), (120, 8, 75)]
    # (sixteenth, interval above the root, accent, slides on)
    riffs = ([(0, 0, 1, 0), (2, 0, 0, 0), (3, 12, 0, 1), (4, 12, 0, 0), (6, 0, 0, 0), (7, 3, 0, 0), (8, 0, 1, 0), (10, 7, 0, 1),
              (11, 5, 0, 0), (12, 12, 1, 0), (14, 0, 0, 1), (15, -2, 0, 0)],
             [(0, 0, 1, 0), (1, 0, 0, 0), (3, 7, 0, 0), (4, 12, 1, 1), (5, 10, 0, 0), (6, 0, 0, 0), (8, 0, 0, 0), (9, 12, 0, 1),
              (10, 15, 1, 1), (11, 12, 0, 0), (12, 0, 0, 0), (13, 7, 0, 0), (14, 10, 1, 1), (15, 12, 0, 0)])
    line = []
    for bar in range(68):
        root, notes = turn[bar % 8] if bar >= 12 else em
        full = 12 <= bar < 36 or 44 <= bar < 64
        for step, interval, accent, slide in riffs[bar // 2 % 2]:
            if interval == 3 and root in (36, 38, 43, 35):
                interval = 4                                      # the third of a major chord
            if interval in (10, 15) and root in (36, 38, 43):
                interval -= 3 if interval == 10 else -1           # and its sixth and tenth
            line.append((desk.at(bar, step), desk.step, root + interval + (12 if root < 38 else 0), accent, slide))
        if 4 <= bar < 36 or 44 <= bar < 66:
            for step in (0, 4, 8, 12):
                if not (bar in (35, 65) and step > 4):
                    desk.kick(bar, step, high=190, low=50, seconds=0.26, click=0.7)
        if 8 <= bar < 36 or 44 <= bar < 64:
            for step in range(16):
                if step % 4:
                    desk.put("bass", desk.at(bar, step), bass(root, 0.075, (0, 0.6, 0.9, 0.7)[step % 4], 700), loose=0.0008)
        if bar < 64:
            hats(desk, bar, [(s, (0.5, 0.2, 0.4, 0.3)[s % 4]) for s in range(16)], 0.5 + 0.5 * (bar >= 4))
        if 8 <= bar < 36 or 44 <= bar < 64:
            hats(desk, bar, [(s, 0.8) for s in (2, 6, 10, 14)], decay=0.07)
        if full:
            for step in (4, 12):
                desk.put("snare", desk.at(bar, step), clap(bar % 2), 1.0, loose=0.002)
            for step in (7, 15) if bar % 2 else (10,):
                desk.put("snare", desk.at(bar, step), snare(step % 3, tone=260, seconds=0.14), 0.22, loose=0.002)
            for step in (0, 3, 6, 11) if bar % 2 else (0, 3, 8, 11, 14):
                for k, midi in enumerate(notes[1:]):
                    desk.put("stabs", desk.at(bar, step), saw_pluck(midi + 12, 0.9 if step in (0, 8) else 0.6, 0.09), 1,
                             loose=0.0015)
        if 52 <= bar < 64:
            for step in range(0, 16, 2):
                desk.put("hats", desk.at(bar, step), crash(1, 0.5), 0.22 if step % 4 else 0.34, 0.4, loose=0.002)
        if bar in (11, 19, 27, 35, 51, 63):
            tom_fill(desk, bar, [(8, 52), (10, 50), (11, 47), (12, 52), (13, 47), (14, 45), (15, 40)] if bar in (35, 63)
                     else [(13, 50), (14, 47), (15, 43)])
        chord(desk, "pad", bar, notes, attack=0.6 if bar == 0 else 0.15, release=0.8, detune=0.009)
        if 36 <= bar < 44:
            chord(desk, "pad", bar, [midi + 12 for midi in notes[1:]], gain=0.7, attack=0.15, release=0.8)
    for bar, gain in ((20, 1.0), (28, 1.0), (44, 1.0), (52, 0.8)):
        for step, length, midi in hook:
            loud = 0.9 if step % 8 in (0, 3) else 0.7
            desk.put("hook", desk.at(bar, step), saw_pluck(midi, loud, 0.10 + 0.03 * length, 3600), gain, -0.15, loose=0.002)
            desk.put("hook", desk.at(bar, step), glass(midi + 12, 0.5 * loud, 0.12), 0.5 * gain, 0.3, loose=0.003)
    sing(desk, "lead", 36, chant, kind="breath")
    sing(desk, "lead", 52, chant, bright=2200)
    roll(desk, 42, 2)
    for bar in (4, 12, 20, 28, 44, 52, 64):
        desk.put("effects", desk.at(bar), crash(bar // 4 % 2), 0.75, -0.2)
    for bar, bars in ((10, 2), (18, 2), (40, 4), (50, 2)):
        desk.put("effects", desk.at(bar), riser(bars * 16 * desk.step, 82), 0.9)
    for bar in (36, 44, 64):
        desk.put("effects", desk.at(bar), fall(2.4, 83), 1.0)
    chord(desk, "pad", 68, (52, 59, 64, 67, 71), 0.6, 1.1, attack=0.02, release=2.2)
    desk.put("bass", desk.at(68), bass(40, 1.1, 0.9))
    desk.put("hook", desk.at(68), glass(88, 0.6, 0.5), 1.0)
    desk.kick(68, 0, high=190, low=50, seconds=0.26, click=0.7)
    desk.channel("acid")[:] = panned(acid(desk.length, line, desk.curve(
        (0, 190), (4, 260), (12, 520), (20, 330), (28, 420), (36, 230), (42, 900), (44, 480), (52, 640), (60, 560),
        (68, 150), (69, 100))), 0.0)
    desk.channels["acid"] *= desk.curve((0, 0.75), (8, 1), (20, 0.8), (36, 0.75), (42, 1), (44, 0.85), (64, 0.8), (68, 0.5),
                                        (68.02, 0.0001), (70, 0.0001))[:, None]
    desk.channels["pad"] = swept(chorus(desk.channel("pad")), desk.curve(
        (0, 900), (4, 500), (12, 800), (34, 1000), (36, 700), (43, 4200), (44, 1300), (64, 1600), (68, 900), (70, 300)), 0.8)
    return desk.mix({"kick": (-20.5, 0.02, 0, 0), "snare": (-27, 0.16, 0, 0), "hats": (-32, 0.03, 0, 0.15),
                     "bass": (-23.5, 0, 0, 0.35), "acid": (-25, 0.10, 0.16, 0.3), "pad": (-26.5, 0.30, 0, 0.65),
                     "stabs": (-28, 0.22, 0.15, 0.35), "hook": (-24, 0.22, 0.28, 0.15), "lead": (-24, 0.30, 0.2, 0.15),
                     "effects": (-29, 0.2, 0, 0)}, room(2.2, 202, bright=0.4), 3 * desk.step)


# ---------------------------------------------------------------------------------------------------------
# Perihelion: B minor, 172 beats a minute.  Broken beats under slow, warm chords.
# ---------------------------------------------------------------------------------------------------------

def perihelion():
    desk = Desk(172, 88, 103, swing=0.06)
    turn = ((35, (57, 62, 66, 73)), (31, (59, 62, 66, 69)), (40, (55, 62, 66, 71)), (33, (55, 59, 64, 74)))
    answer = ((35, (57, 62, 66, 73)), (31, (59, 62, 66, 69)), (40, (55, 62, 66, 71)), (42, (57, 61, 64, 71)))
    air = [(0, 10, 78), (10, 6, 76), (16, 12, 74), (28, 4, 73), (32, 12, 71), (44, 4, 74), (48, 14, 69), (64, 10, 71),
           (74, 6, 74), (80, 12, 79), (92, 4, 78), (96, 10, 76), (106, 6, 74), (112, 14, 76)]
    reply = [(0, 10, 78), (10, 6, 81), (16, 12, 83), (28, 4, 81), (32, 12, 78), (44, 4, 74), (48, 14, 74), (64, 6, 79),
             (70, 6, 78), (76, 4, 76), (80, 12, 74), (92, 4, 71), (96, 10, 73), (106, 6, 76), (112, 14, 73)]
    for bar in range(88):
        root, notes = (answer if bar // 8 % 2 else turn)[bar % 8 // 2]
        drums, still = 16 <= bar < 48 or 60 <= bar < 84, 48 <= bar < 60
        if bar % 2 == 0:
            chord(desk, "pad", bar, notes, 2, attack=0.5, release=0.9)
        comping = ((0, 5), (6, 3), (11, 4)) if bar % 2 == 0 else ((3, 4), (8, 6))
        if bar % 2 == 0 and (still or bar < 8):
            comping = ((0, 22),)
        elif still or bar < 8:
            comping = ((4, 3), (10, 5)) if bar % 4 == 3 else ()
        for step, length in comping:
            for k, midi in enumerate(notes):
                desk.put("keys", desk.at(bar, step) + k * 160, electric_piano(midi, length * desk.step,
                         0.75 if step in (0, 8) else 0.55), loose=0.003)
        if 8 <= bar < 16:                                        # the beat announces itself, thin
            hats(desk, bar, [(s, (0.6, 0.2, 0.4, 0.25)[s % 4]) for s in range(16)], 0.8)
            for step in (0, 10):
                desk.kick(bar, step, 0.55, high=190, low=54, seconds=0.2)
        if drums:
            for step in (0, 10) if bar % 4 != 3 else (0, 2, 10):
                desk.kick(bar, step, 1.0 if step else 0.95, high=190, low=54, seconds=0.2, click=0.6)
            for step in (4, 12):
                desk.put("snare", desk.at(bar, step), snare(bar % 3, tone=212), 0.95, loose=0.001)
            for step in ((7, 9, 15) if bar % 2 else (7, 14)):
                desk.put("snare", desk.at(bar, step), snare(step % 3, tone=225, seconds=0.13), desk.rng.uniform(0.14, 0.26), 0.1,
                         loose=0.002)
            hats(desk, bar, [(s, (0.75, 0.22, 0.5, 0.3)[s % 4]) for s in range(16)])
            if bar % 8 == 7:
                for step, variant, gain in ((8, 0, 0.4), (9, 1, 0.5), (11, 2, 0.6), (13, 0, 0.7), (14, 1, 0.8), (15, 2, 0.85)):
                    desk.put("snare", desk.at(bar, step), snare(variant, tone=212), gain, loose=0.001)
            elif bar % 4 == 2:
                hats(desk, bar, [(14, 0.8)], decay=0.09)
            moves = ((0, 7, 0), (8, 2, 0), (10, 5, 12)) if bar % 2 == 0 else ((0, 3, 0), (4, 6, 0), (11, 5, 7 if bar % 4 == 1 else 0))
            for step, length, interval in moves:
                desk.put("bass", desk.at(bar, step), reese(root + interval, length * desk.step * 0.94), loose=0.001)
        if 8 <= bar < 48 or still or 60 <= bar < 84:
            for step in range(0, 16, 2):
                desk.put("hats", desk.at(bar, step), shaker(step % 3), 0.5 if step % 4 else 0.3, -0.4, loose=0.003)
        if 32 <= bar < 48 or 56 <= bar < 86:
            tones = [midi + 12 for midi in notes]
            for step in range(0, 16, 1 if bar >= 64 else 2):
                tone = tones[(step * 3 // 2 + bar) % 4] + (12 if step % 8 == 6 else 0)
                desk.put("arp", desk.at(bar, step), glass(tone, 0.7 if step % 4 == 0 else 0.45, 0.16), 1, 0.6 * (-1) ** (step // 2),
                         loose=0.002)
    for bar, tune, gain in ((32, air, 1.0), (40, reply, 1.0), (64, air, 1.0), (72, reply, 1.0)):
        sing(desk, "lead", bar, tune, gain, kind="breath", bright=2400)
    sing(desk, "lead", 8, air[:7], 0.7, kind="breath", bright=1600)
    sing(desk, "second", 64, air, transpose=-12)
    sing(desk, "second", 72, reply, transpose=-12)
    for step, length, midi in air:                               # keys alone with the tune
        desk.put("keys", desk.at(48, step), electric_piano(midi, length * desk.step, 0.8), 1.3, loose=0.004)
    for bar in (16, 32, 48, 60, 64, 72, 84):
        desk.put("effects", desk.at(bar), crash(bar // 8 % 2, 3.2), 0.75, 0.25)
    for bar, bars in ((14, 2), (30, 2), (56, 4)):
        desk.put("effects", desk.at(bar), riser(bars * 16 * desk.step, 84), 0.9)
    for bar in (16, 48, 60, 84):
        desk.put("effects", desk.at(bar), fall(2.8, 85), 1.0)
    roll(desk, 58, 2)
    for bar in (84, 86):                                         # the beat has left, its last chords walk out
        desk.put("bass", desk.at(bar), reese((35, 31)[bar == 86], 30 * desk.step), 0.8)
    chord(desk, "pad", 88, (50, 57, 62, 66, 73), 0.8, 1.1, attack=0.02, release=2.2)
    for k, midi in enumerate((47, 54, 62, 66, 73, 78)):
        desk.put("keys", desk.at(88) + 500 * k, electric_piano(midi, 1.8, 0.8), 1.2)
    desk.put("bass", desk.at(88), reese(35, 1.4), 0.9)
    desk.channels["pad"] = swept(chorus(desk.channel("pad")), desk.curve(
        (0, 900), (14, 1500), (16, 1200), (32, 1700), (48, 900), (59, 4000), (60, 1800), (84, 1800), (88, 900), (91, 400)), 0.75)
    desk.channels["keys"] = swept(desk.channel("keys"), desk.curve((0, 1200), (8, 2600), (84, 3600), (88, 1600)), 0.7)
    return desk.mix({"kick": (-23, 0.02, 0, 0), "snare": (-23, 0.12, 0, 0), "hats": (-31.5, 0.04, 0, 0.1),
                     "bass": (-22, 0, 0, 0.4), "keys": (-24, 0.20, 0.10, 0.2), "pad": (-26, 0.30, 0, 0.4),
                     "arp": (-29, 0.25, 0.35, 0.15), "lead": (-22.5, 0.28, 0.25, 0.1), "second": (-30, 0.25, 0.1, 0.2),
                     "effects": (-29, 0.2, 0, 0)}, room(3.0, 203, bright=0.45), 3 * desk.step)


# ---------------------------------------------------------------------------------------------------------
# Penumbra: C minor, 104 beats a minute.  A night drive, heavy and broad.
# ---------------------------------------------------------------------------------------------------------

def penumbra():
    desk = Desk(104, 52, 104)
    ab, bb, cm, eb, fm_, g = ((32, (51, 56, 60, 63)), (34, (50, 53, 58, 65)), (36, (51, 55, 60, 67)), (39, (51, 55, 58, 67)),
                              (41, (53, 56, 60, 68)), (43, (50, 55, 59, 65)))
    turn, bridge = (cm, cm, ab, bb, cm, eb, fm_, g), (ab, bb, cm, cm, ab, bb, eb, g)
    theme = [(0, 8, 72), (8, 4, 74), (12, 4, 75), (16, 6, 79), (22, 6, 77), (28, 4, 75), (32, 8, 75), (40, 4, 74), (44, 4, 72),
             (48, 12, 74), (60, 4, 70), (64, 8, 72), (72, 4, 75), (76, 4, 79), (80, 6, 82), (86, 6, 79), (92, 4, 75),
             (96, 8, 80), (104, 4, 79), (108, 4, 77), (112, 8, 79), (120, 8, 74)]
    refrain = [(0, 6, 75), (6, 6, 72), (12, 4, 75), (16, 6, 77), (22, 6, 74), (28, 4, 77), (32, 12, 79), (44, 4, 82),
               (48, 8, 79), (56, 4, 77), (60, 4, 75), (64, 6, 80), (70, 6, 75), (76, 4, 80), (80, 6, 82), (86, 6, 77),
               (92, 4, 82), (96, 12, 79), (108, 4, 75), (112, 8, 74), (120, 8, 71)]
    for bar in range(52):
        root, notes = (bridge if 20 <= bar < 28 or 40 <= bar < 48 else turn)[(bar + 4) % 8]
        chord(desk, "pad", bar, notes, attack=0.6 if bar == 0 else 0.1, release=0.7, detune=0.008)
        if bar >= 4 and not 28 <= bar < 34 and bar < 51:
            for step in range(16):
                if step % 4 != 1:
                    high = 12 if step in (6, 14, 15) else 0
                    desk.put("bass", desk.at(bar, step), bass(root + high, 0.115, (0.9, 0, 0.6, 0.7)[step % 4], 1100), loose=0.001)
        if 4 <= bar < 28 or 36 <= bar < 50:
            for step in (0, 8, 10) if bar % 4 == 3 else (0, 8):
                desk.kick(bar, step, high=150, low=46, seconds=0.34)
        if 8 <= bar < 28 or 36 <= bar < 50:
            for step in (4, 12):
                desk.put("snare", desk.at(bar, step), snare(bar % 3, tone=178, seconds=0.32, dark=0.8), 1.0)
                desk.put("snare", desk.at(bar, step), clap(bar % 2), 0.35, loose=0.002)
        if 4 <= bar < 50 and not 28 <= bar < 32:
            hats(desk, bar, [(s, (0.7, 0.25, 0.5, 0.3)[s % 4]) for s in range(16)], 0.8)
            if bar >= 12:
                hats(desk, bar, [(14, 0.7)] if bar % 2 else [(6, 0.6), (14, 0.7)], decay=0.08)
        if bar < 8 or 12 <= bar < 36 or bar >= 40:
            tones = [*notes, notes[2] + 12, notes[1] + 12]
            for step in range(16):
                tone = tones[(0, 1, 2, 3, 4, 3, 5, 2, 0, 1, 3, 4, 5, 3, 2, 1)[step]] + 12
                desk.put("arp", desk.at(bar, step), glass(tone, 0.75 if step % 4 == 0 else 0.45, 0.15, 3.0), 1, 0.6 * (-1) ** step,
                         loose=0.002)
        if bar in (11, 19, 27, 39, 47):
            tom_fill(desk, bar, [(8, 52), (9, 52), (10, 49), (12, 47), (13, 47), (14, 43), (15, 40)] if bar in (27, 47)
                     else [(12, 50), (13, 47), (14, 45), (15, 40)])
    sing(desk, "lead", 12, theme, kind="square")
    sing(desk, "lead", 20, refrain, kind="square")
    for step, length, midi in theme[:10]:
        desk.put("bells", desk.at(28, step), glass(midi + 12, 0.6, 0.5), 1, -0.2, loose=0.004)
    sing(desk, "lead", 32, theme[10:] and [(s - 64, l, m) for s, l, m in theme if s >= 64], 0.8, kind="breath")
    sing(desk, "lead", 40, refrain, kind="square")
    sing(desk, "second", 40, refrain, transpose=-12)
    roll(desk, 34, 2)
    for bar in (4, 12, 20, 28, 36, 40, 48):
        desk.put("effects", desk.at(bar), crash(bar // 4 % 2, 3.0), 0.8, -0.25)
    for bar, bars in ((2, 2), (10, 2), (33, 3)):
        desk.put("effects", desk.at(bar), riser(bars * 16 * desk.step, 86), 0.9)
    for bar in (4, 28, 36, 48):
        desk.put("effects", desk.at(bar), fall(3.0, 87), 1.0)
    chord(desk, "pad", 52, (48, 55, 60, 63, 67, 74), 0.5, 1.1, attack=0.02, release=2.2)
    desk.put("bass", desk.at(52), bass(36, 1.2, 0.9))
    desk.put("bells", desk.at(52), glass(84, 0.6, 0.5), 1.0)
    desk.kick(52, 0, high=150, low=46, seconds=0.34)
    desk.channels["pad"] = swept(chorus(desk.channel("pad")), desk.curve(
        (0, 600), (4, 1300), (12, 1700), (20, 2300), (28, 900), (35, 4200), (36, 1800), (40, 2500), (48, 1500), (52, 900),
        (54, 300)), 0.9)
    hit = room(0.34, 205, bright=0.9, before=0.0)                # a short bright room that ends as if cut
    desk.channels["snare"] += 0.55 * in_room(desk.channel("snare"), hit)
    return desk.mix({"kick": (-21.5, 0.02, 0, 0), "snare": (-23.5, 0.06, 0, 0), "hats": (-32, 0.04, 0, 0.1),
                     "bass": (-22, 0, 0, 0.35), "pad": (-24, 0.28, 0, 0.45), "arp": (-28.5, 0.2, 0.3, 0.25),
                     "bells": (-27, 0.35, 0.35, 0), "lead": (-22.5, 0.24, 0.24, 0.1), "second": (-28, 0.25, 0.1, 0.2),
                     "effects": (-29, 0.2, 0, 0)}, room(2.8, 204), 3 * desk.step)


FILES = {
    f"music/{make.__name__}.ogg": lambda path, serial=serial, make=make: write_ogg(
        path, mastered(make(), LOUDNESS, CEILING), serial, QUALITY)
    for serial, make in enumerate((horizon, accretion, perihelion, penumbra), start=100)
}
