#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""The built program while the world misbehaves: what it says, what it leaves and how it ends.

Runs on a display of its own (DISPLAY), from the project's root:
    tools/virtual-display 1280x1024 tests/fault_test.py build/quorvane [Faults.test_name ...]
"""

import contextlib
import os
import re
import resource
import signal
import struct
import subprocess
import time

import program_driver
from program_driver import DEFAULTS, PATIENCE, ROOT, SEED, TICK, Driver, recorded, run

NO_SETTINGS = "Loading settings failed, using defaults\n"
NO_ERROR = "glGetError() == 0\n"
GROUPS = (  # of pictures, in load order: a file belongs to the first that matches
    (-1, "static", "player_shot_(blue|red)_1|shot_enemy2?|gui_|font_|game_|menu_|player_muzzle|bg_"),
    (-2, "shot", "player_shot_"), (-3, "shield", "player_shield_"),
    (-4, "player ship", "player_ship_"), (-5, "red enemy", "enemy_red"),
    (-6, "blue enemy", "enemy_blue"), (-7, "explosion", "enemy_explosion_"))
# A bitmap of one pixel with 16 bits, which no picture may have.
BITMAP_16 = (b"BM" + struct.pack("<IIIIiiHHIIiiIIIII", 70, 0, 66, 40, 1, 1, 1, 16, 3, 4, 0, 0, 0, 0,
                                 0xf800, 0x7e0, 0x1f) + bytes(4))


def no_video(width, height):
    return f"Error -1 initializing video to {width}x{height}\n" + NO_ERROR


class Faults(Driver):
    def own(self, folder):
        """Makes a folder of the program's files one whose entries can be replaced."""
        (self.folder / folder).unlink()
        (self.folder / folder).mkdir()
        for file in (ROOT / folder).iterdir():
            (self.folder / folder / file.name).symlink_to(file)
        return sorted((self.folder / folder).iterdir())

    def leave(self):
        """Escape until it is over: a key may come before there is anybody to take it."""
        self.wait_for("the window", self.geometry, lambda box: box is not None)
        run("xdotool", "mousemove", 400, 300)
        while self.process.poll() is None:
            self.key("Escape")

    @contextlib.contextmanager
    def other_display(self, size, *options):
        """Another screen of that size for the program and for the hands and eyes."""
        reader, writer = os.pipe()
        with subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", size + "x24",
                               "-noreset", "-nolisten", "tcp", *options], pass_fds=[writer],
                              stderr=subprocess.DEVNULL) as server:
            os.close(writer)
            with open(reader) as number:
                display = ":" + number.readline().strip()
            usual = os.environ["DISPLAY"]
            os.environ["DISPLAY"] = self.environment["DISPLAY"] = display
            try:
                yield server
            finally:
                os.environ["DISPLAY"] = self.environment["DISPLAY"] = usual
                self.end()
                server.kill()

    def test_starts(self):
        """Settings and video drivers that stop the start, or do not."""
        for name, settings, driver, status, stderr, saved in (
                ("no SDL", None, "no such driver", 255,
                 NO_SETTINGS + "Error -1 initializing SDL library\n", None),
                ("no display", DEFAULTS, "x11", 255, "Error -1 initializing SDL library\n",
                 DEFAULTS),
                ("no GL mode", None, "dummy", 254, NO_SETTINGS + no_video(800, 600), None),
                ("too wide", DEFAULTS.replace("800", "1000000"), None, 254,
                 no_video(1000000, 600), DEFAULTS.replace("800", "1000000")),
                ("negative", DEFAULTS.replace("800", "-5"), None, 254, no_video(-5, 600),
                 DEFAULTS.replace("800", "-5")),
                ("bad third line", "width=640\nheight=480\nnick=x\n", None, 0, NO_SETTINGS,
                 DEFAULTS.replace("800", "640").replace("600", "480")),
                ("cut", DEFAULTS[:40], None, 0, NO_SETTINGS, DEFAULTS.replace("replay.rpl", "r")),
                ("not text", "\0\xff=" * 50, None, 0, NO_SETTINGS, DEFAULTS)):
            with self.subTest(name):
                self.settings.unlink(missing_ok=True)
                if settings is not None:
                    self.settings.write_text(settings, "latin-1")
                environment = dict(self.environment)
                if driver:
                    self.environment["SDL_VIDEODRIVER"] = driver
                if driver == "x11":
                    self.environment["DISPLAY"] = ":4095"
                self.launch()
                self.environment = environment
                if status == 0:
                    self.expect_size(*map(int, re.findall(r"(?m)^(?:width|height)=(\d+)$", saved)))
                    self.leave()
                self.expect_end(status, stderr=stderr)
                self.assertEqual(self.settings.read_text() if self.settings.exists() else None, saved)

    def test_pictures(self):
        """Each picture in turn missing, and then broken in some way."""
        ways = (  # contents made of the true ones, what is made of them
            (lambda true: b"", -3), (lambda true: true[:len(true) // 2], -3),
            (lambda true: b"no picture\n", -3), (lambda true: BITMAP_16, -4),
            (lambda true: bytes(range(256)) * 16, -3))
        paths = self.own("graphics")
        tiny = run("convert", "-size", "1x1", "xc:red", "png32:-")  # good enough, and soon loaded
        for path in paths:
            path.unlink()
            path.write_bytes(tiny)
        for number, path in enumerate(paths):
            code, title = next(group[:2] for group in GROUPS if re.match(group[2], path.name))
            true = (ROOT / "graphics" / path.name).read_bytes()
            for contents, reason in ((None, -3), ways[number % len(ways)]):
                with self.subTest(path.name, way=contents and number % len(ways)):
                    path.unlink()
                    if contents:
                        path.write_bytes(contents(true))
                    self.launch()
                    try:
                        status = self.ended()
                    finally:
                        path.write_bytes(tiny)
                    # What the decoder itself has to say comes first.
                    stderr = re.sub(r"\Alibpng error: .*\n", "", self.messages("stderr"))
                    self.assertEqual(
                        (status, stderr),
                        (253, f"Error {reason} loading {title} textures\n"
                              f"Error {code} loading textures\n" + NO_ERROR))
                    self.assertEqual(self.messages("stdout"), "" if reason == -3 else
                                     f"failed to load texture: graphics/{path.name}\n")
                    self.assertEqual(self.settings.read_text(), DEFAULTS)
        self.launch()
        self.leave()
        self.expect_end()

    def test_sounds(self):
        """Each sound in turn missing or no sound; at last all of them, and a whole game."""
        paths = self.own("sounds")
        self.assertEqual(len(paths), 11)
        garbage = (b"", b"OggS" + bytes(100), bytes(range(256)) * 16, None)
        for number, path in enumerate(paths):
            with self.subTest(path.name):
                path.unlink()
                other = paths[(number + 5) % len(paths)]
                contents = garbage[number % len(garbage)]
                sound = other.read_bytes()
                other.unlink()
                other.write_bytes(sound[:len(sound) // 2] if contents is None else contents)
                self.launch()
                self.leave()
                self.expect_end()
                for file in (path, other):
                    file.unlink(missing_ok=True)
                    file.symlink_to(ROOT / "sounds" / file.name)
        for number, path in enumerate(paths):
            path.unlink()
            if number % 3:
                path.write_bytes(garbage[number % 3])
        self.start()
        self.enter_game()
        self.hold("space", "w")
        self.key("Control_L")
        self.expect_prompt()
        self.release("space", "w")
        self.key("Escape")
        self.expect_menu("Start game")
        self.key("Escape")
        self.expect_end()

    def test_music(self):
        """Folders with little or nothing to play; switched on and off they are as good as any."""
        # SDL_mixer forgets the stream of a file that is no music.
        self.environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
        music = self.folder / "music"
        music.unlink()
        for name in ("no folder", "a file", "no music"):
            with self.subTest(name):
                if name == "a file":
                    music.touch()
                elif name == "no music":
                    music.unlink()
                    music.mkdir()
                    (music / "album").mkdir()
                    (music / "text.ogg").write_text("no music")
                    (music / "none.wav").touch()
                    (music / ("x" * 251 + ".ogg")).touch()
                    os.mkfifo(music / "pipe.ogg")
                self.start()
                self.choose(2, 1)
                self.key("Return", "Down", "Return", "Up", "Return", "Escape", "Escape")
                self.expect_end()
                self.assertEqual(self.settings.read_text(), DEFAULTS)
        tracks = sorted((ROOT / "music").iterdir())
        for number, track in enumerate(tracks):
            with self.subTest(track.name):
                (music / track.name).write_bytes(track.read_bytes()[:20000])
                (music / tracks[number - 1].name).unlink(missing_ok=True)
                self.launch()
                self.leave()
                self.expect_end()

    def expect_silent_game(self):
        self.start()
        self.choose(2, 1)  # music on
        self.key("Down", "Return", "Escape")
        self.expect_menu("Start game", 2)
        self.key("Up", "Up")
        self.short_game()
        self.key("Escape")
        self.expect_menu("Start game")
        self.key("Escape")
        self.assertEqual(self.ended(), 0)
        self.assertRegex(self.messages("stdout"), r"\AMix_OpenAudio: .+\n\Z")
        self.assertEqual(re.sub("ALSA.*\n", "", self.messages("stderr")), "")
        self.assertTrue(self.recording().intact)

    def test_no_audio_device(self):
        self.environment.update(SDL_AUDIODRIVER="alsa", AUDIODEV="no such device")
        self.expect_silent_game()

    def test_no_audio_driver(self):
        self.environment["SDL_AUDIODRIVER"] = "no such driver"
        self.expect_silent_game()

    def expect_saving_fails(self, report, stderr="", **options):
        """A game and its upload while nothing can be saved, and the way out."""
        server = self.serve()
        self.start(**options)
        self.short_game()
        self.key("Return")
        self.expect_message("O")
        self.key("Return")
        self.expect_menu("Start game")
        self.assertEqual(len(server.posts), 1)
        self.choose(2, 2)  # music off, which cannot be saved either
        self.key("Escape", "Escape")
        self.expect_end(stdout=report + "Posting data to the server succeeded!\n",
                        stderr=stderr)

    def test_full_disk(self):
        """Files keep what still fitted; the next start is told, and takes what there is."""
        room = 40

        def leave_room():
            # Once a file may not grow any more, a write fails as on a full disk.
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (room, room))
        self.replay.write_bytes(bytes(1000))
        self.environment["MESA_SHADER_CACHE_DISABLE"] = "true"
        self.expect_saving_fails("", preexec_fn=leave_room)
        self.assertEqual(self.settings.read_text(), DEFAULTS[:room])
        self.assertEqual(self.replay.read_bytes()[:6], b"QRVNPL")
        self.assertEqual(self.replay.stat().st_size, room)

    def test_unwritable_places(self):
        # The superuser may write anywhere, unless the program is denied that.
        mortal = (["setpriv", "--bounding-set=-dac_override,-dac_read_search"]
                  if os.geteuid() == 0 else [])
        for name in ("folder", "files"):
            with self.subTest(name):
                self.settings.unlink(missing_ok=True)
                if name == "files":
                    self.settings.write_text(DEFAULTS)
                    self.settings.chmod(0o444)
                    self.replay.write_bytes(b"kept")
                    self.replay.chmod(0o444)
                for stream in ("stdout", "stderr"):
                    (self.folder / stream).touch()
                self.folder.chmod(0o555)
                self.addCleanup(self.folder.chmod, 0o755)
                self.expect_saving_fails('Error opening file "replay.rpl" for saving\n',
                                         NO_SETTINGS if name == "folder" else "", before=mortal)
                self.folder.chmod(0o755)
                if name == "files":
                    self.assertEqual(self.settings.read_text(), DEFAULTS)
                    self.assertEqual(self.replay.read_bytes(), b"kept")
                else:
                    self.assertFalse(self.settings.exists() or self.replay.exists())

    def test_clocks(self):
        """A calendar before 1970, after 2106 or with no answer: a game is as good as ever."""
        self.environment["LD_PRELOAD"] = ":".join(
            filter(None, [self.environment.get("LD_PRELOAD"),
                          str(program_driver.executable.parent / "tests" / "libfake_clock.so")]))
        for clock in (-1, -1000000, 2**32 + 100):
            with self.subTest(clock):
                self.environment["FAKE_CLOCK"] = str(clock)
                began = time.monotonic()
                self.start()
                self.short_game()
                self.key("Escape")
                self.expect_menu("Start game")
                recording = self.recording()
                self.assertTrue(recording.intact)
                seed = recording.events[0]
                if clock == -1:
                    self.assertEqual((recording.created, seed), (0, (SEED, 2**32 - 1)))
                else:
                    age = (recording.created - clock) % 2**32
                    self.assertLessEqual(age, time.monotonic() - began + 1)
                    self.assertLessEqual((seed[1] - clock) % 2**32, age)
                self.assertLess(recording.length, 1000 * PATIENCE)
                self.key("Down")
                self.play_back()
                self.assertTrue(self.shows(self.look(), *recording.hud()))
                self.key("Return")
                self.expect_menu("Start game", 1)
                self.key("Escape")
                self.expect_end(stdout="initialized replay correctly\n")

    def test_display_without_gl(self):
        with self.other_display("800x600", "-extension", "GLX"):
            self.launch()
            self.expect_end(254, stderr=no_video(800, 600))

    def test_refused_mode(self):
        """The screen has no room for the mode that is chosen."""
        with self.other_display("900x700"):
            self.start()
            self.choose(2, 0, 5)
            self.expect_end(254, stderr=no_video(1024, 768))
            self.assertEqual(self.settings.read_text(), DEFAULTS)

    def test_lost_display(self):
        with self.other_display("900x700") as server:
            self.start()
            server.kill()
            self.assertIn(self.ended(), (1, -signal.SIGPIPE))
            self.assertEqual(self.settings.read_text(), DEFAULTS)

    def test_pipe(self):
        """What need not have an end, or makes its reader wait, is no recording."""
        os.mkfifo(self.replay)
        (self.folder / "z.rpl").symlink_to("/dev/zero")
        self.start()
        self.choose(1)
        for name in ("replay.rpl", "z.rpl"):
            self.expect_typed(name if name == "replay.rpl" else "")
            self.key(*(["z", "Tab"] if name == "z.rpl" else []))
            self.expect_typed(name)
            self.key("Return")
            self.expect_menu("Start game", 1)
            self.key("Return")
            self.expect_typed(name)
            self.key("BackSpace")
        self.key("Escape", "Escape")
        self.expect_end(stdout="Error -1 initializing replay file\n" * 2)


if __name__ == "__main__":
    program_driver.main()
