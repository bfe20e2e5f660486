#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Uses the built program as a person does.

Runs on a display of its own (DISPLAY), from the project's root:
    tools/virtual-display 1280x1024 tests/program_test.py build/quorvane [Program.test_name ...]
"""

import array
import cmath
import hashlib
import math
import os
import re
import signal
import time
import wave
from operator import mul

import program_driver
from program_driver import (DEFAULTS, DESKTOP, GAME_SECONDS, KEY_DOWN, KEY_UP, PATIENCE, ROOT, SEED, TICK, Driver,
                            Recording, digit_glyphs, recorded, run)

BROKEN = ROOT / "tests" / "golden" / "broken"
GAMES = ROOT / "tests" / "golden" / "games"


def development_salt():
    table = (ROOT / "src" / "replay_salt.h").read_text().split("= {")[1]
    salt, previous = b"", 0
    for delta in re.findall(r"-?\d+", table):
        previous = (previous + int(delta)) % 256
        salt += bytes([previous])
    return salt


class Program(Driver):
    def test_first_start(self):
        """Arguments and the environment mean nothing, and a key acts when it is released."""
        self.settings.unlink()
        self.environment.update(QUORVANE_WIDTH="320", QUORVANE="--fullscreen")
        self.start("--help", "-width", "320", "%n%s", "")
        image = self.look()
        self.assertEqual([self.menu(i, image) for i in range(5)],
                         ["Start game", "Load replay", "Settings", "Quit", ""])
        self.hold("Down")
        self.key("Up")
        self.expect_menu("Start game", 3)
        self.release("Down")
        self.expect_menu("Start game")
        run("xdotool", "windowsize", self.window, 700, 500)  # for the window system alone
        self.wait_for("the small window", lambda: self.geometry()[:2], (700, 500))
        self.key("Up")
        self.assertEqual(self.geometry()[:2], (700, 500))
        run("xdotool", "windowsize", self.window, 800, 600)
        self.expect_menu("Start game", 3)
        self.key("Up", "space")
        self.expect_menu("Resolution")
        image = self.look()
        self.assertEqual([self.menu(i, image) for i in range(4)],
                         ["Resolution", "Music ON", "Music OFF", ""])
        self.key("Return")
        self.expect_menu("Windowed 800x600")
        image = self.look()
        self.assertEqual([self.menu(i, image) for i in range(1, 7)],
                         ["Windowed 1024x768", "Windowed 1280x720", "Native Fullscreen",
                          "800x600 Fullscreen", "1024x768 Fullscreen", ""])
        self.key("Escape")
        self.expect_menu("Resolution")
        self.choose(2)  # music off
        self.key("Escape")
        self.expect_menu("Start game", 2)
        self.key("Escape")
        self.expect_end(stderr="Loading settings failed, using defaults\n")
        self.assertEqual(self.settings.read_text(), DEFAULTS.replace("music=1", "music=0"))

    def test_video_modes(self):
        """Games and mode changes in turn: every mode has its pictures, whatever a game left."""
        self.start()
        for entry, (width, height), fullscreen in (
                (1, (1024, 768), 0), (3, DESKTOP, 1), (2, (1280, 720), 0), (5, (1024, 768), 1),
                (1, (1024, 768), 0), (4, (800, 600), 1), (0, (800, 600), 0)):
            self.choose(2, 0, entry)
            self.expect_size(width, height)
            self.expect_menu("Windowed 800x600", entry)
            self.key("Escape", "Escape")
            self.expect_menu("Start game", 2)
            self.key("Up", "Up")
            self.short_game()
            self.assertEqual(self.settings.read_text(),
                             f"width={width}\nheight={height}\nname=Gamer\nreplay=replay.rpl\n"
                             f"mouse=0\nfullscreen={fullscreen}\nmusic=1\n")
            self.key("Escape")
            self.expect_menu("Start game")
        self.key("Up")
        self.expect_menu("Start game", 3)
        self.key("Return")
        self.expect_end()
        self.assertEqual(self.settings.read_text(), DEFAULTS)

    def test_game_upload_and_playback(self):
        server = self.serve()
        server.reply = b"You are number 1\nof 1 (50% off)\n"
        entered = int(time.time())
        self.start()
        self.choose(0)
        self.expect_typed("Gamer")
        self.hold("shift")
        self.key("a")
        self.release("shift")
        self.key("n", "n", "minus", "2", "comma")
        self.expect_typed("Ann-2")
        self.key("Return")
        printed = ""
        for _ in range(4):  # a game without a single hit would prove little
            self.expect_game()
            began = time.time()
            self.assertIn("\nname=Ann-2\n", self.settings.read_text())
            self.fight_to_death()
            picture = self.look()
            if digit_glyphs().read(picture, picture.width - 530, 15, 10, white=True) != f"{0:10}":
                break
            self.key("Escape")
            self.expect_menu("Start game")
            self.choose(0)
            self.expect_typed("Ann-2")
            self.key("Return")
        self.assertEqual(server.posts, [])
        self.key("Return")
        self.expect_message("You are number 1", "of 1 (50% off)")
        printed += "Posting data to the server succeeded!\n"

        data = self.replay.read_bytes()
        recording = Recording(data)
        self.assertTrue(recording.intact)
        self.assertEqual(recording.name, "Ann-2")
        self.assertGreater(recording.score, 0)
        self.assertTrue(self.shows(picture, *recording.hud()), recording.hud())
        self.assertEqual(recording.events[0], (SEED, recording.events[0][1]))
        seed = recording.events[0][1]
        clocks = [entered, seed, began, recording.created + 1, time.time() + 1]
        self.assertEqual(clocks, sorted(clocks))
        salt = development_salt()
        self.assertEqual(hashlib.sha1(data[26:] + salt).digest(), data[6:26])
        self.assertNotIn(salt, program_driver.executable.read_bytes())
        (path, kind, body), = server.posts
        self.assertEqual(path, "http://localhost:8080/quorva/uploader/upload.php")
        self.assertIn('name="submit"\r\n\r\nUpload file\r\n', body[:500].decode("latin-1"))
        self.assertIn(data + b"\r\n--" + kind.split("boundary=")[1].encode(), body)

        self.key("Return")
        self.expect_menu("Start game")
        self.choose(1)
        self.expect_typed("replay.rpl")
        self.key("BackSpace")
        self.expect_typed("")
        self.key("Tab")
        self.expect_typed("replay.rpl")
        self.key("Return")
        self.expect_finished()
        printed += "initialized replay correctly\n"
        self.assertTrue(self.shows(self.look(), *recording.hud()), recording.hud())
        self.key("Return")
        self.expect_menu("Start game", 1)
        self.assertEqual(self.replay.read_bytes(), data)
        self.key("Escape")
        self.expect_end(stdout=printed)
        self.assertEqual(self.settings.read_text(), DEFAULTS.replace("Gamer", "Ann-2"))

    def test_ways_out(self):
        """Escape, a close request and a termination signal in the screens that there are."""
        self.environment["http_proxy"] = "http://127.0.0.1:9"  # nobody answers there
        self.start()
        self.choose(0)
        self.expect_typed("Gamer")
        self.key("x", "Escape")  # what was typed stays
        self.expect_menu("Start game")
        self.choose(0)
        self.expect_typed("x")
        run("xdotool", "windowsize", self.window, 700, 500)  # sets the mode anew
        self.expect_menu("Start game")
        self.expect_size(800, 600)
        self.choose(0)
        self.expect_typed("x")
        self.key("Return")
        self.expect_game()
        self.close_window()  # ends the game, not yet the program
        self.expect_prompt()
        self.key("Return")  # fails, and so there is nothing to show
        self.expect_menu("Start game")
        first = self.replay.read_bytes()
        self.choose(0)
        self.expect_typed("x")
        self.key("Return")
        self.expect_game()
        self.key("w", "Escape")
        self.expect_prompt()
        self.close_window()
        self.expect_end(stdout="Posting data failed: Couldn't connect to server\n")
        self.assertNotEqual(self.replay.read_bytes(), first)
        self.assertEqual(self.settings.read_text(), DEFAULTS.replace("Gamer", "x"))

        self.start()
        self.choose(1)
        self.expect_typed("replay.rpl")
        self.key("Return")
        self.expect_game()
        self.key("Escape")
        self.expect_finished()
        self.key("Escape")
        self.expect_menu("Start game", 1)
        self.process.send_signal(signal.SIGTERM)
        self.expect_end(stdout="initialized replay correctly\n")

    def test_every_screen_ends(self):
        """Closing the window and signals to stop, wherever the player is: the game that was played is
        saved, so are the settings, and nothing is posted that was not asked for."""
        server = self.serve()
        stops = (self.close_window, lambda: self.process.send_signal(signal.SIGINT),
                 lambda: self.process.send_signal(signal.SIGTERM))
        screens = (
            ("a list", lambda: (self.choose(2), self.expect_menu("Resolution"))),
            ("a name", lambda: (self.choose(0), self.expect_typed("Gamer"))),
            ("a file", lambda: (self.choose(1), self.expect_typed("replay.rpl"))),
            ("the prompt", self.short_game),
            ("an answer", lambda: (self.short_game(), self.key("Return"),
                                   self.expect_message("O"))),
            ("a playback", lambda: (self.key("Down"), self.play_back())))
        before = recorded([(SEED, 1), (TICK, 0)])
        for number, (name, reach) in enumerate(screens):
            with self.subTest(name):
                self.replay.write_bytes(before)
                self.settings.write_text(DEFAULTS + "more\n")
                server.posts.clear()
                self.start()
                reach()
                stops[number % 3]()
                self.expect_end(stdout={"an answer": "Posting data to the server succeeded!\n",
                                        "a playback": "initialized replay correctly\n"}.get(name, ""))
                self.assertEqual(self.settings.read_text(), DEFAULTS)
                self.assertEqual(len(server.posts), name == "an answer")
                self.assertEqual(self.replay.read_bytes() != before,
                                 name in ("the prompt", "an answer"))
        for stop in stops[1:]:  # in a game and in a playback they end that first
            self.start()
            self.enter_game()
            stop()
            self.expect_prompt()
            self.replay.write_bytes((GAMES / "0015-idle.rpl").read_bytes())
            self.key("Escape")
            self.expect_menu("Start game")
            self.replay.write_bytes((GAMES / "0015-idle.rpl").read_bytes())
            self.choose(1)
            self.expect_typed("replay.rpl")
            self.key("Return")
            self.expect_game()
            stop()
            self.expect_finished()
            stop()
            self.expect_end(stdout="initialized replay correctly\n")

    def test_names(self):
        (self.folder / "x.rpl.rpl").touch()
        for name in ("ab1.rpl", "ab2.rpl", "z" * 56 + ".rpl", "notes.txt", "c.RPL"):
            (self.folder / name).touch()
        listed = [name for name in os.listdir(self.folder) if re.fullmatch("[^.]*[.]rpl", name)]
        self.start()
        self.choose(0)
        self.expect_typed("Gamer")
        self.key("q", "Tab", "r")  # Tab starts over
        self.expect_typed("r")
        self.key("BackSpace", *["n"] * 20)
        self.hold("BackSpace")
        self.expect_typed("")
        self.release("BackSpace")
        self.hold("shift")
        self.key("a", "9")
        self.release("shift")
        self.key("slash", "9", "comma", "space", "period", "minus", "F1", "x", "BackSpace")
        self.expect_typed("A99 .-")
        run("xdotool", "type", "--delay", "20", "b" * 60)
        self.key("Return")
        self.expect_game()
        name = "A99 .-" + "b" * 43
        self.assertIn(f"\nname={name}\n", self.settings.read_text())
        self.key("Escape")
        self.expect_prompt()
        self.key("Escape")
        self.expect_menu("Start game")
        self.assertEqual(self.recording().name, name[:32])
        self.replay.unlink()

        self.key("Down", "Return")
        for typed, completed in (("", listed[0]), ("ab", next(f for f in listed if f[:2] == "ab")),
                                 ("x", "x"), ("c", "c"), ("zz", "z" * 49)):
            self.key(*(typed or ["BackSpace"]))
            self.expect_typed(typed)
            self.key("Tab")
            if len(completed) < 49:
                self.expect_typed(completed)
        self.key("Return")  # cut, it names no file
        self.expect_menu("Start game", 1)
        self.key("Escape")
        self.expect_end(stdout="Error -1 initializing replay file\n")
        self.assertEqual(self.settings.read_text(), DEFAULTS.replace("Gamer", name)
                         .replace("replay.rpl", "z" * 49))

    @staticmethod
    def difference(scene, other):
        return abs(scene - other).mean()

    def lose(self, cause, longer_than, keys):
        """Plays until a game is lost to that, and to nothing that came before by chance. Returns the
        picture of its end. Each key is held for so many seconds, without a number to the end."""
        for _ in range(6):
            self.enter_game()
            for key, *seconds in keys:
                self.hold(key)
                if seconds:
                    self.time_passes(seconds[0])
                    self.release(key)
            self.expect_prompt(GAME_SECONDS + PATIENCE, pause=0.5)
            self.release(*[key for key, *seconds in keys if not seconds])
            picture = self.look()
            self.key("Escape")
            self.expect_menu("Start game")
            lost_to = self.lost_to()
            recording = self.recording()
            shown = self.shows(picture, *recording.hud())  # shots may fly over the numbers
            if lost_to == cause and recording.length > longer_than and shown:
                return picture
        self.fail(f"wanted a loss to {cause} and {recording.hud()} shown, the last one was to {lost_to}, "
                  f"{'shown' if shown else 'not shown'}")

    def expect_losses(self, *losses):
        """As often as such a game is played back it is the same game, in no less time; on a machine
        that is too busy it takes longer, and that is all."""
        self.start()
        other = self.scene(self.look())
        for loss in losses:
            with self.subTest(loss):
                picture = self.lose(*loss)
                scene = self.scene(picture)
                recording = self.recording()
                self.assertTrue(recording.intact)
                self.key("Down")
                seconds = recording.length / 1000
                took = self.play_back(standstill=1 if seconds > 3 else 0)
                self.assertGreaterEqual(took, seconds)
                self.assertLess(took, seconds + 3)  # the standstill, the keys, and until it is seen
                picture = self.look()
                self.assertTrue(self.shows(picture, *recording.hud()), recording.hud())
                # The same picture, but for stars that are anywhere.
                self.assertLess(self.difference(scene, self.scene(picture)), 0.4)
                self.assertGreater(self.difference(scene, other), 0.8)
                other = scene
                self.key("Return")
                self.expect_menu("Start game", 1)
                self.key("Up")
                self.assertEqual(self.replay.read_bytes(), recording.data)
        self.key("Escape")
        self.expect_end(stdout="initialized replay correctly\n" * len(losses))

    def test_deaths_by_flying(self):
        """Into the hole, over the edge, and waiting where the edge comes to."""
        self.expect_losses(("hole", 0, [("w",)]), ("edge", 0, [("s",)]), ("edge", 10000, [("s", 2.8)]))

    def test_deaths_in_battle(self):
        """Turning in the enemies' fire; a shot that comes around the hole; and doing nothing at all."""
        self.expect_losses(("enemy-shot", 0, [("s", 1.6), ("Right",), ("space",)]),
                           ("own-shot", 0, [("w", 0.24), ("Right", 0.4), ("space",)]),
                           ("hull", 0, []))

    def test_keys(self):
        """What a live game records: keys as they go down and up, frames as long as they were, and
        no key that stays down when the window loses the keyboard."""
        forward, right, shield = 0, 5, 7
        self.start()
        self.focus_window()
        self.enter_game()
        began = self.now
        self.hold("s", "Down")
        self.time_passes(0.06)
        self.release("s", "Down")
        self.hold("Control_L")
        self.key("p", "Return", "F1", "Tab")
        time.sleep(1)  # long enough for the X server to repeat a key
        self.time_passes(0.2)
        self.release("Control_L")
        self.hold("d", "alt", "Tab")
        self.time_passes(0.06)
        self.focus_elsewhere()
        self.release("Tab", "alt", "d")
        self.time_passes(0.1)
        self.focus_window()
        self.key("w", "Escape")
        lasted = self.now - began
        self.expect_prompt()
        self.key("Escape")
        self.expect_menu("Start game")
        recording = self.recording()
        backward = 1
        self.assertEqual(recording.keys,
                         [(KEY_DOWN, backward), (KEY_DOWN, backward), (KEY_UP, backward),
                          (KEY_UP, backward), (KEY_DOWN, shield), (KEY_UP, shield),
                          (KEY_DOWN, right), (KEY_UP, right), (KEY_DOWN, forward),
                          (KEY_UP, forward)])
        self.assertAlmostEqual(recording.length / 1000, lasted, delta=0.5)
        self.assertEqual(set(recording.frames[1:]), {20})
        self.key("Escape")
        self.expect_end()

    def test_answers(self):
        """What the scoreboard may answer, and what becomes of it."""
        server = self.serve()
        self.start()
        posted, printed = "Posting data to the server succeeded!\n", ""
        cases = (  # status, reply, what is shown of it, None for nothing; what is printed before
            (200, b"OK\n", "OK ", ""),
            (200, b"OK", "O  ", ""),
            (200, b"a\0b", "", ""),
            (404, b"Not Found\n", "Not Found ", ""),
            (200, b"%s%n%99999d\n", "%s%n%99999d ", ""),
            (200, b"x" * 10_000_000, "x" * 31, ""),
            (200, b"y\n" * 5_000_000, "y ", ""),
            (200, b"", None, ""),
            (200, b"\r", None, "found invalid character 13 from index 0\n"),
            (200, b"ab\xc8", None, "found invalid character -56 from index 2\n"),
            (200, bytes(range(32, 256)), None, "found invalid character 127 from index 95\n"))
        for number, (server.status, server.reply, shown, complaint) in enumerate(cases):
            with self.subTest(number):
                self.short_game()
                self.key("Return")
                if shown is not None:
                    # Where the prompt was there is nothing, and the game is still to be seen.
                    self.expect_message(shown) if shown else self.expect_overlay(286, {0: " " * 19})
                    self.assertTrue(self.in_game())
                    self.key("Return" if number % 2 else "Escape")
                self.expect_menu("Start game")
                self.assertEqual(len(server.posts), number + 1)
                self.assertIn(self.replay.read_bytes(), server.posts[-1][2])
                printed += complaint + posted
        self.key("Escape")
        self.expect_end(stdout=printed)

    def test_bad_recordings(self):
        """Refused or played for as long as the player likes; then a game is played as ever."""
        zeros = recorded([(SEED, 1)] + [(TICK, 0)] * 1_000_000)
        refused = {"nothing": -1, "a folder": -107, "short-0": -107, "short-74": -107, "magic-5": -101, "length-more": -102,
                   "version-4": -103, "byte28": -104, "byte29-5": -105, "byte30": -106,
                   "event-cut-tail": -110}
        played = ("0014-adv-onlyseed", "0015-adv-empty",  # over at once; Escape ends the others
                  "0010-adv-noseed-fresh", "0005-adv-keyslots", "0000-adv-hugetick",
                  "0002-adv-timeoverflow", "0001-adv-negtick", "zeros")
        self.start()
        self.key("Down")
        printed = ""
        for name in (*refused, *played):
            with self.subTest(name):
                if name == "a folder":
                    self.replay.mkdir()
                elif name != "nothing":
                    folder = BROKEN if name in refused else GAMES
                    self.replay.write_bytes(zeros if name == "zeros" else
                                            (folder / f"{name}.rpl").read_bytes())
                self.key("Return")
                self.expect_typed("replay.rpl")
                self.key("Return")
                if name in played:
                    printed += "initialized replay correctly\n"
                    if name not in played[:2]:
                        self.expect_game()
                        self.key("Escape")
                    self.expect_finished()
                    self.key("Escape")
                else:
                    printed += f"Error {refused[name]} initializing replay file\n"
                self.expect_menu("Start game", 1)
                if name == "a folder":
                    self.replay.rmdir()
        self.key("Up")
        self.short_game()
        self.key("Escape")
        self.expect_menu("Start game")
        self.assertTrue(self.recording().intact)
        self.key("Escape")
        self.expect_end(stdout=printed)

    def test_sounds(self):
        """What is heard when: every effect, and the only track, is a tone of its own. By the real clock,
        as the mixer goes by it; and by that, too, no frame comes before it is due."""
        self.owns_clock = False
        chunk, rate = 4096, 44100  # frames that the mixer makes at a time
        names = ("shoot_player", "shoot_enemy", "explode", "shield_change", "shield_hit", "game_start",
                 "game_over", "chain", "menu_move", "menu_select", "menu_back", "music")
        cycles = {name: 60 + 20 * number for number, name in enumerate(names)}  # in a chunk

        def write_tone(path, name, seconds):
            with wave.open(str(path), "wb") as out:
                out.setparams((1, 2, rate, 0, "NONE", ""))
                out.writeframes(b"".join(
                    round(2000 * math.sin(math.tau * cycles[name] * frame / chunk))
                    .to_bytes(2, "little", signed=True) for frame in range(round(seconds * rate))))

        def loudness(pcm, name):
            """Of a tone in a chunk: its part of a wave that fills it."""
            samples = array.array("h", pcm)[::8]  # the left channel of every fourth frame
            turn = 2j * math.pi * cycles[name] * 4 / chunk
            wave_at = [cmath.exp(turn * index) for index in range(len(samples))]
            return abs(sum(map(mul, samples, wave_at))) * 2 / len(samples) / 2000

        for folder in ("sounds", "music"):
            (self.folder / folder).unlink()
            (self.folder / folder).mkdir()
        for name in names[:-1]:
            write_tone(self.folder / "sounds" / f"{name}.ogg", name, 0.05)
        write_tone(self.folder / "music" / "tone.wav", "music", 0.5)
        sink = self.folder / "sound"
        self.environment.update(SDL_AUDIODRIVER="disk", SDL_DISKAUDIOFILE=str(sink),
                                SDL_DISKAUDIODELAY=str(round(1000 * chunk / rate)))
        phases = []  # what is expected, and where it ended

        def phase(expected):
            time.sleep(0.4)  # until the chunk is out that was being made
            phases.append((expected.split(), sink.stat().st_size // (4 * chunk)))

        self.start()
        time.sleep(2)  # the track ends four times
        phase("music")
        self.hold("Down")
        phase("music")
        self.release("Down")
        phase("music menu_move")
        self.key("Down", "Return")
        phase("music menu_move menu_select")
        self.key("Down", "Down", "Return")  # music off
        phase("music menu_move menu_select")
        self.key("Escape")
        phase("menu_back")
        self.key("Up", "Up")
        phase("menu_move")
        self.enter_game()
        phase("menu_select game_start")
        self.hold("space")
        time.sleep(1.2)
        self.release("space")
        phase("shoot_player")
        self.key("Control_L")
        phase("shield_change")
        self.hold("w")
        self.expect_prompt()
        self.release("w")
        phase("game_over")
        self.key("Escape")
        self.expect_menu("Start game")
        if self.lost_to() == "hull":  # by chance, and without a sound
            phases[-1] = [], phases[-1][1]
        recording = self.recording()
        self.assertGreater(recording.length / len(recording.frames), 19)
        self.key("Escape")
        self.assertEqual(self.ended(), 0)

        pcm, first = sink.read_bytes(), 0
        for number, (expected, last) in enumerate(phases):
            chunks = [pcm[4 * chunk * k:4 * chunk * (k + 1)] for k in range(first, last)]
            heard = {name: sum(loudness(part, name) > 0.15 for part in chunks) for name in names}
            with self.subTest(phase=number, heard=heard, chunks=len(chunks)):
                # Enemies may be heard whenever they are there.
                silent = set(names) - {"shoot_enemy", "explode", "shield_hit"} - set(expected)
                self.assertEqual([name for name in expected if not heard[name]], [])
                self.assertEqual([name for name in silent if heard[name]], [])
                if expected == ["music"]:
                    self.assertGreater(heard["music"], 0.8 * len(chunks))
                if expected == ["shoot_player"]:  # ten a second
                    self.assertIn(heard["shoot_player"], range(8, 18))
            first = last


if __name__ == "__main__":
    program_driver.main()
