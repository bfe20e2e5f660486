#!/usr/bin/python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Every picture, sound and track against what the drawing code and the mixer expect of it.

    tests/asset_test.py [--root FOLDER] [Assets.test_name ...]

The system's own Python has the modules for pictures.
"""

import pathlib
import re
import subprocess
import sys
import unittest

import numpy as np
from PIL import Image

SOURCE = pathlib.Path(__file__).resolve().parent.parent
root = SOURCE

BORDERLESS = "nothing at its border"  # rotating and additive layers, which would show a square
PICTURES = {  # pattern: size, demands
    r"player_ship_[12]\.png": (256, 256, BORDERLESS),
    r"player_shield_(blue|red)_[1-6]\.png": (256, 256, BORDERLESS),
    r"player_shield_flash_[12]\.png": (256, 256, BORDERLESS),
    r"enemy_explosion_[1-4]\.png": (256, 256, BORDERLESS),
    r"enemy_(blue|red)\.png": (128, 128, BORDERLESS),
    r"player_shot_(blue|red)_[1-3]\.png": (128, 128, BORDERLESS),
    r"shot_enemy2?\.png": (128, 128, BORDERLESS),
    r"player_muzzle_flash\.png": (128, 128, BORDERLESS),
    r"bg_black_hole(_ray)?\.png": (512, 512, BORDERLESS),
    r"bg_twirl_big\.png": (1024, 1024, BORDERLESS),
    r"bg_space\.jpg": (2048, 2048, ""),
    r"gui_bitmap_font\.png": (512, 512, ""),
    r"font_numbers\.png": (1024, 128, ""),
    r"game_splash\.png": (1024, 128, BORDERLESS),
    r"gui_gauge(_bar)?\.png": (1024, 128, ""),
    r"gui_chain_[1-7]\.png": (512, 128, BORDERLESS),
    r"menu_keyboard\.png": (1024, 512, ""),
    r"gui_cursor\.png": (32, 32, ""),
}
LOOPS = {"player_ship_%d.png": 2, "player_shield_blue_%d.png": 6, "player_shield_red_%d.png": 6,
         "player_shot_blue_%d.png": 3, "player_shot_red_%d.png": 3}
SOUNDS = {  # longest, seconds
    "shoot_player": 0.15, "shoot_enemy": 0.4, "explode": 0.9, "shield_change": 0.5,
    "shield_hit": 0.7, "game_start": 3.0, "game_over": 4.0, "chain": 1.0, "menu_move": 0.3,
    "menu_select": 0.4, "menu_back": 0.4}
PEAK = 10 ** (-3 / 20)
CODEC = 10 ** (0.2 / 20)  # what Vorbis may add to a peak
TOTAL = 24_000_000


def loaded_names():
    """The files that the program asks for."""
    sources = "".join((SOURCE / "src" / name).read_text() for name in ("assets.cpp", "player.cpp"))
    return set(re.findall(r'"((?:graphics|sounds)/[^"]+\.\w+)"', sources))


def picture(name):
    image = Image.open(root / "graphics" / name)
    return np.asarray(image).astype(float)


def seen(pixels):
    """What a picture shows: its colour times its alpha."""
    return pixels[..., :3] * pixels[..., 3:] / 255


def decoded(path):
    data = subprocess.run(["oggdec", "-Q", "-R", "-b", "16", "-o", "-", str(path)], check=True,
                          stdout=subprocess.PIPE).stdout
    return np.frombuffer(data, "<i2").reshape(-1, 2) / 32768


def vorbis_header(path):
    """Channels and sampling rate from the identification header."""
    data = path.read_bytes()[:58]
    at = data.index(b"\x01vorbis") + 7
    return data[at + 4], int.from_bytes(data[at + 5:at + 9], "little")


class Assets(unittest.TestCase):
    def for_each(self, items, check):
        for item in items:
            with self.subTest(item):
                check(item)

    def test_files_are_those_that_the_program_loads(self):
        present = {f"{folder}/{path.name}" for folder in ("graphics", "sounds")
                   for path in (root / folder).iterdir()}
        self.assertEqual(present, loaded_names())
        self.assertEqual({path.stem for path in (root / "sounds").iterdir()}, set(SOUNDS))
        size = sum(path.stat().st_size for folder in ("graphics", "sounds", "music")
                   for path in (root / folder).iterdir())
        self.assertLess(size, TOTAL)

    def test_pictures(self):
        def check(path):
            fits = [row for pattern, row in PICTURES.items() if re.fullmatch(pattern, path.name)]
            self.assertEqual(len(fits), 1)
            width, height, demand = fits[0]
            image = Image.open(path)
            self.assertEqual(image.size, (width, height))
            self.assertEqual(image.mode, "RGB" if path.suffix == ".jpg" else "RGBA")
            if path.suffix == ".jpg":
                self.assertLess(np.asarray(image).mean(), 0.25 * 255)
                return
            header = path.read_bytes()[24:29]
            self.assertEqual((header[0], header[1], header[4]), (8, 6, 0),
                             "8 bits a channel, colour with alpha, not interlaced")
            pixels = np.asarray(image)
            self.assertGreater(pixels[..., 3].max(), 20, "there is nothing in it")
            if demand == BORDERLESS:
                alpha = pixels[..., 3]
                border = np.concatenate([alpha[0], alpha[-1], alpha[:, 0], alpha[:, -1]])
                self.assertEqual(border.max(), 0)
            # Filtering mixes clear pixels' colours in: they have to be those of their neighbours.
            # One between two colours can be like one of them only, so it is the mean that counts.
            fringes = []
            for axis, step in ((0, 1), (0, -1), (1, 1), (1, -1)):
                beside = np.roll(pixels, step, axis).astype(int)
                clear = (beside[..., 3] == 0) & (pixels[..., 3] >= 64)
                fringes.append(np.abs(beside - pixels)[clear, :3].ravel())
            fringes = np.concatenate(fringes)
            self.assertLess(fringes.mean() if fringes.size else 0, 48)
        self.for_each(sorted((root / "graphics").iterdir()), check)

    def test_hole_is_black(self):
        pixels = picture("bg_black_hole.png")
        y, x = np.mgrid[-1:1:512j, -1:1:512j]
        inside = np.hypot(x, y) < 0.85
        self.assertEqual(pixels[inside, :3].max(), 0)
        self.assertEqual(pixels[inside, 3].min(), 255)

    def test_loops_do_not_jump(self):
        def check(pattern):
            frames = [seen(picture(pattern % (k + 1))) for k in range(LOOPS[pattern])]
            steps = [np.abs(a - b).mean() for a, b in zip(frames, frames[1:])]
            self.assertGreater(min(steps), 0, "two frames are the same")
            self.assertLess(np.abs(frames[-1] - frames[0]).mean(), 1.5 * max(steps))
        self.for_each(LOOPS, check)
        ships = [picture(f"player_ship_{k}.png") for k in (1, 2)]
        self.assertLess(np.abs(ships[0] - ships[1])[:140].max(), 8, "only the engines differ")

    def test_chain_banner_builds_up(self):
        light = [seen(picture(f"gui_chain_{k}.png")).sum() for k in range(1, 8)]
        self.assertEqual(light, sorted(light))

    def test_colours_differ_without_hue(self):
        pairs = [("enemy_blue.png", "enemy_red.png"), ("shot_enemy.png", "shot_enemy2.png"),
                 ("player_shot_blue_1.png", "player_shot_red_1.png"),
                 ("player_shield_blue_1.png", "player_shield_red_1.png")]

        def check(pair):
            masks = [picture(name)[..., 3] > 96 for name in pair]
            overlap = (masks[0] & masks[1]).sum() / (masks[0] | masks[1]).sum()
            self.assertLess(overlap, 0.75, "their outlines are too much alike")
            light = [(seen(picture(name)) @ [0.2126, 0.7152, 0.0722]).mean() for name in pair]
            self.assertGreater(light[0], 1.1 * light[1], "blue is not the brighter one")
        self.for_each(pairs, check)

    def test_font_cells(self):
        alpha = picture("gui_bitmap_font.png")[..., 3]
        empty = {*range(0, 33), *range(127, 161)}
        for code in range(256):
            y, x = code // 16 * 32, code % 16 * 32
            cell = alpha[y:y + 32, x:x + 32]
            with self.subTest(code=code, character=chr(code)):
                self.assertEqual(cell.max() > 100, code not in empty)
                ring = np.concatenate([cell[0], cell[-1], cell[:, 0], cell[:, -1]])
                self.assertEqual(ring.max(), 0, "it reaches into its neighbours")

    def test_digit_strip(self):
        alpha = picture("font_numbers.png")[..., 3]
        self.assertEqual(alpha[72:].max(), 0)
        for digit in range(10):
            left = round(digit * 101.99)
            cell = alpha[:72, left:left + 102]
            with self.subTest(digit=digit):
                self.assertGreater(cell.max(), 200)
                self.assertEqual(max(cell[:, :2].max(), cell[:, -2:].max(), cell[0].max()), 0)

    def test_sounds(self):
        def check(name):
            path = root / "sounds" / f"{name}.ogg"
            self.assertEqual(vorbis_header(path), (2, 44100))
            samples = decoded(path)
            self.assertLessEqual(len(samples) / 44100, SOUNDS[name])
            self.assertLessEqual(np.abs(samples).max(), PEAK * CODEC)
            self.assertGreater(np.abs(samples).max(), 0.03, "it is silent")
            ends = np.abs(samples[[0, 1, 2, -3, -2, -1]]).max()
            self.assertLess(ends, 0.02, "it clicks")
        self.for_each(SOUNDS, check)

    def test_music(self):
        tracks = sorted((root / "music").iterdir())
        self.assertGreaterEqual(len(tracks), 3)

        def check(path):
            self.assertEqual(vorbis_header(path), (2, 44100))
            self.assertLess(path.stat().st_size, 3_000_000)
            samples = decoded(path)
            self.assertTrue(90 <= len(samples) / 44100 <= 150, len(samples) / 44100)
            self.assertLess(np.abs(samples).max(), 1.0, "it clips")
            self.assertLess(np.abs(samples[[0, -1]]).max(), 0.02, "it clicks")
            said = subprocess.run(["ffmpeg", "-nostats", "-i", str(path), "-af", "ebur128", "-f",
                                   "null", "-"], capture_output=True, text=True, check=True).stderr
            loudness = float(re.findall(r"I: +(-?[\d.]+) LUFS", said)[-1])
            self.assertTrue(-17 <= loudness <= -15, loudness)
        self.for_each(tracks, check)


if __name__ == "__main__":
    if "--root" in sys.argv:
        at = sys.argv.index("--root")
        root = pathlib.Path(sys.argv[at + 1])
        del sys.argv[at:at + 2]
    unittest.main()
