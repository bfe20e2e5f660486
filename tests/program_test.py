#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Uses the built program as a person does: real keys, real files, a real web server, and eyes that
read the texts and numbers on the screen.

Runs on a display of its own (DISPLAY), from the project's root:
    tools/virtual-display 1280x1024 tests/program_test.py build/quorvane [Program.test_name ...]
"""

import ctypes
import http.server
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from operator import mul

ROOT = pathlib.Path(__file__).resolve().parent.parent
GRAPHICS = ROOT / "graphics"
DEFAULTS = "width=800\nheight=600\nname=Gamer\nreplay=replay.rpl\nmouse=0\nfullscreen=0\nmusic=1\n"
DESKTOP = (1280, 1024)
PATIENCE = 60  # seconds until something that must happen counts as missing
executable = ROOT / "build" / "quorvane"


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE).stdout


class Glyphs:
    """Reads text drawn in one font at one size by comparing every cell with every glyph."""

    def __init__(self, picture, crop, across, down, width, height, codes):
        size = f"{across * width}x{down * height}!"
        pixels = run("convert", GRAPHICS / picture, "-crop", crop, "+repage", "-resize", size,
                     "-depth", "8", "rgba:-")
        light = [max(pixels[i:i + 3]) * pixels[i + 3] for i in range(0, len(pixels), 4)]
        stride = across * width
        self.width, self.height, self.glyphs = width, height, {}
        for index, code in codes.items():
            corner = index // across * height * stride + index % across * width
            rows = [light[corner + y * stride:][:width] for y in range(height)]
            self.glyphs[code] = self.normal([value for row in rows for value in row])

    @staticmethod
    def normal(values):
        """The values with mean 0 and length 1, so that a sum of products is a correlation."""
        mean = sum(values) / len(values)
        values = [value - mean for value in values]
        length = sum(map(mul, values, values)) ** 0.5
        return [value / length for value in values] if length > 0 else values

    def read(self, image, x, y, count, advance=None, channel=max):
        text = ""
        for k in range(count):
            left = round(x + k * (advance or self.width))
            cell = self.normal(image.light(left, y, self.width, self.height, channel))
            score, code = max((sum(map(mul, cell, glyph)), code)
                              for code, glyph in self.glyphs.items())
            text += code if score > 0.6 else " "
        return text.rstrip()


class Image:
    """What the window shows."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    def light(self, x, y, width, height, channel):
        """Row by row the strongest channel of every pixel, or with `min` what is white in it."""
        values = []
        for row in range(y, y + height):
            at = (row * self.width + x) * 3
            line = self.pixels[at:at + width * 3]
            values += map(channel, line[0::3], line[1::3], line[2::3])
        return values

    def redness(self, x, y, width, height):
        rows = [self.pixels[(row * self.width + x) * 3:][:width * 3]
                for row in range(y, y + height)]
        return sum(sum(row[0::3]) - sum(row[1::3]) for row in rows)


class Board(http.server.BaseHTTPRequestHandler):
    """The scoreboard: keeps what was posted and answers with a fixed text."""
    protocol_version = "HTTP/1.1"
    reply = b"You are number 1\nof 1 (50% off)\n"

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        self.server.posts.append((self.path, self.headers["Content-Type"], body))
        self.send_response(200)
        self.send_header("Content-Length", str(len(self.reply)))
        self.end_headers()
        self.wfile.write(self.reply)

    def log_message(self, *_):
        pass


def parse_replay(data):
    """Name, score and length of the game in ms, as the header and the recorded frames tell them."""
    position, total = 75, 0
    while position < len(data):
        size = data[position] & 3 or 4
        if data[position] & 0xfc == 8:
            total += int.from_bytes(data[position + 1:position + 1 + size], "big")
        position += 1 + size
    return data[31:63].decode().strip(), int.from_bytes(data[63:67], "big"), total


class Program(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        for name in ("graphics", "sounds", "music"):
            (self.folder / name).symlink_to(ROOT / name)
        self.settings = self.folder / "qrvn-settings.dat"
        self.replay = self.folder / "replay.rpl"
        self.settings.write_text(DEFAULTS)
        self.environment = dict(os.environ, SDL_AUDIODRIVER="dummy", no_proxy="")
        self.process = None
        self.window = None

    # --- Hands ---------------------------------------------------------------------------------

    def launch(self):
        with open(self.folder / "stdout", "wb") as out, open(self.folder / "stderr", "wb") as err:
            self.process = subprocess.Popen([executable], cwd=self.folder, stdout=out, stderr=err,
                                            env=self.environment)
        self.addCleanup(lambda: self.process.poll() is None and self.process.kill())

    def start(self):
        self.launch()
        self.expect_size(800, 600)
        self.expect_menu("Start game")

    def key(self, *keys):
        for name in keys:
            run("xdotool", "keydown", name)
            time.sleep(0.08)
            run("xdotool", "keyup", name)
            time.sleep(0.08)

    def hold(self, *keys):
        for name in keys:
            run("xdotool", "keydown", name)

    def release(self, *keys):
        for name in keys:
            run("xdotool", "keyup", name)

    def choose(self, *entries):
        """Goes down by so many entries in each list on the way, and takes what is there."""
        for entry in entries:
            self.key(*["Down"] * entry, "Return")

    def close_window(self):
        """Asks the window to close, as a window manager does."""
        x11 = ctypes.CDLL("libX11.so.6")
        x11.XOpenDisplay.restype = ctypes.c_void_p
        display = ctypes.c_void_p(x11.XOpenDisplay(None))

        class ClientMessage(ctypes.Structure):
            _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong),
                        ("sent", ctypes.c_int), ("display", ctypes.c_void_p),
                        ("window", ctypes.c_ulong), ("message", ctypes.c_ulong),
                        ("format", ctypes.c_int), ("data", ctypes.c_long * 5),
                        ("room", ctypes.c_long * 24)]

        protocols = x11.XInternAtom(display, b"WM_PROTOCOLS", 0)
        delete = x11.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
        message = ClientMessage(33, 0, 1, None, self.window, protocols, 32,
                                (ctypes.c_long * 5)(delete))
        x11.XSendEvent(display, ctypes.c_ulong(self.window), 0, ctypes.c_long(0),
                       ctypes.byref(message))
        x11.XCloseDisplay(display)

    # --- Eyes ----------------------------------------------------------------------------------

    def wait_for(self, what, look, wanted):
        deadline = time.monotonic() + PATIENCE
        while True:
            seen = look()
            if wanted(seen) if callable(wanted) else seen == wanted:
                return seen
            if self.process.poll() is not None:
                self.fail(f"the program ended with {self.process.returncode} before {what}: "
                          f"{self.messages('stdout')}{self.messages('stderr')}")
            if time.monotonic() > deadline:
                run("import", "-window", "root", executable.parent / f"{self.id()}.png")
                self.fail(f"{what}: wanted {wanted!r}, seen {seen!r}")
            time.sleep(0.05)

    def geometry(self):
        found = subprocess.run(["xdotool", "search", "--name", "^Quorvane$"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        for window in found.stdout.split():
            known = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
            fields = dict(line.split("=") for line in known.stdout.decode().splitlines())
            if fields:
                self.window = int(window)
                return tuple(int(fields[name]) for name in ("WIDTH", "HEIGHT", "X", "Y"))
        return None

    def expect_size(self, width, height):
        """Waits for the window to have that size, and does what a window manager would: puts it
        where all of it can be seen, and the pointer on it, so that it gets the keys."""
        self.wait_for("the window", self.geometry,
                      lambda box: box is not None and box[:2] == (width, height))
        run("xdotool", "windowmove", self.window, 0, 0)
        run("xdotool", "mousemove", width // 2, height // 2)

    def look(self):
        width, height, x, y = self.geometry() or (800, 600, 0, 0)
        shot = run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage",
                   "-depth", "8", "ppm:-")
        _, size, _, pixels = shot.split(b"\n", 3)
        image = Image(*map(int, size.split()), pixels)
        if (image.width, image.height) != (width, height):  # the window is changing
            image = Image(width, height, bytes(width * height * 3))
        return image

    def menu(self, entry, image=None):
        image = image or self.look()
        x, y = image.width // 2 - 190, 200 + 25 * entry
        return TEXT[24].read(image, x, y, 20)

    def expect_menu(self, first, selected=0):
        """Waits for a list that begins with that title and has that entry highlighted."""
        def highlighted():
            image = self.look()
            if self.menu(0, image) != first:
                return None
            red = [image.redness(image.width // 2 - 190, 200 + 25 * entry, 240, 24)
                   for entry in range(6)]
            return red.index(max(red))
        self.wait_for(f"the list of '{first}'", highlighted, selected)

    def typed(self):
        image = self.look()
        if TEXT[22].read(image, image.width // 2 - 380, 140, 6, 22.4) not in ("Player", "Replay"):
            return None
        text = TEXT[16].read(image, image.width // 2 - 380, 180, 30)
        # The cursor is larger than the text; it is read as a part of it.
        behind = image.width // 2 - 380 + 16 * len(text.rstrip("_"))
        return text.rstrip("_") + TEXT[24].read(image, behind, 180, 1)

    def expect_typed(self, text):
        """Waits for a text entry with that text, the cursor behind it."""
        self.wait_for("the text entry", self.typed, text + "_")

    def expect_overlay(self, left, rows):
        """Waits for the upload prompt or a message over the scene: rows by number, each beginning
        `left` of the middle. The scene shines through, so that a letter may be misread."""
        def misread():
            image = self.look()
            seen = [(TEXT[24].read(image, image.width // 2 - left, image.height // 2 - 150 + 50 * row,
                                   len(text), channel=min), text) for row, text in rows.items()]
            wrong = sum(a != b for read, text in seen for a, b in zip(read.ljust(len(text)), text))
            return seen if wrong > 0.08 * sum(map(len, rows.values())) else []
        self.wait_for("the overlay", misread, [])

    def expect_prompt(self):
        self.expect_overlay(286, {0: "     Upload scores?", 1: " [Return] Upload scores",
                                  2: "   [Esc] Back to menu", 4: "       Scoreboard"})

    def expect_message(self, *lines):
        self.expect_overlay(364, dict(enumerate(lines)))

    def hud(self):
        """Score, and the time left in tenths of a second."""
        image = self.look()
        score = DIGITS.read(image, image.width - 530, 15, 10, channel=min).strip()
        left = DIGITS.read(image, 20, 15, 5, channel=min).strip()
        return (int(score), int(left)) if score.isdigit() and left.isdigit() else None

    def messages(self, stream):
        return (self.folder / stream).read_text()

    def expect_end(self, status=0, stdout="", stderr=""):
        self.assertEqual(self.process.wait(PATIENCE), status, self.messages("stderr"))
        self.assertEqual(self.messages("stdout"), stdout)
        self.assertEqual(self.messages("stderr"), stderr)

    # --- Games ---------------------------------------------------------------------------------

    def enter_game(self):
        self.choose(0)
        self.expect_typed("Gamer")
        self.key("Return")
        self.wait_for("the game", self.hud, lambda hud: hud is not None)

    def fight_to_death(self):
        """Backs off from the hole, spins and fires for a while, then flies on until it is lost."""
        self.hold("s")
        time.sleep(1.6)
        self.release("s")
        self.hold("Left", "space")
        for _ in range(9):
            self.key("Control_L")
            time.sleep(0.9)
        self.release("Left", "space")
        self.hold("w")
        self.expect_prompt()
        self.release("w")

    def serve(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Board)
        server.posts = []
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        # The scoreboard's host is built in: the library that posts can be led elsewhere.
        self.environment["http_proxy"] = f"http://127.0.0.1:{server.server_port}"
        return server.posts

    def test_first_start(self):
        self.settings.unlink()
        self.start()
        image = self.look()
        self.assertEqual([self.menu(i, image) for i in range(5)],
                         ["Start game", "Load replay", "Settings", "Quit", ""])
        self.key("Up")
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
        self.choose(2, 0, 1)
        self.expect_size(1024, 768)
        self.expect_menu("Windowed 800x600", 1)
        self.key("Escape", "Escape")
        self.expect_menu("Start game", 2)
        self.key("Up", "Up")
        self.enter_game()
        self.key("Escape")
        self.expect_prompt()
        self.key("Escape")
        self.expect_menu("Start game")
        self.choose(2, 0, 3)
        self.expect_size(*DESKTOP)
        self.expect_menu("Windowed 800x600", 3)
        self.key("Escape", "Escape", "Down")
        self.expect_menu("Start game", 3)
        self.key("Return")
        self.expect_end()
        self.assertEqual(self.settings.read_text(),
                         DEFAULTS.replace("800", "1280").replace("600", "1024")
                         .replace("fullscreen=0", "fullscreen=1"))

    def test_game_upload_and_playback(self):
        posts = self.serve()
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
        for attempt in range(4):  # a game without a single hit would prove little
            self.wait_for("the game", self.hud, lambda hud: hud is not None)
            self.assertIn("\nname=Ann-2\n", self.settings.read_text())
            self.fight_to_death()
            score, time_left = self.hud()
            if score > 0 or attempt == 3:
                break
            self.key("Escape")
            self.expect_menu("Start game")
            self.choose(0)
            self.expect_typed("Ann-2")
            self.key("Return")
        self.assertGreater(score, 0)
        self.assertEqual(posts, [])
        self.key("Return")
        self.expect_message("You are number 1", "of 1 (50% off)")
        printed += "Posting data to the server succeeded!\n"

        data = self.replay.read_bytes()
        name, saved_score, length = parse_replay(data)
        self.assertEqual(name, "Ann-2")
        self.assertEqual((saved_score, (150000 - length) // 100), (score, time_left))
        (path, kind, body), = posts
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
        self.expect_message("", "        Replay finished!", "     Please press enter to",
                            "           continue...")
        printed += "initialized replay correctly\n"
        self.assertEqual(self.hud(), (score, time_left))
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
        self.wait_for("the game", self.hud, lambda hud: hud is not None)
        self.close_window()  # ends the game, not yet the program
        self.expect_prompt()
        self.key("Return")  # fails, and so there is nothing to show
        self.expect_menu("Start game")
        first = self.replay.read_bytes()
        self.choose(0)
        self.expect_typed("x")
        self.key("Return")
        self.wait_for("the game", self.hud, lambda hud: hud is not None)
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
        self.wait_for("the playback", self.hud, lambda hud: hud is not None)
        self.key("Escape")
        self.expect_message("", "        Replay finished!")
        self.key("Escape")
        self.expect_menu("Start game", 1)
        self.process.send_signal(signal.SIGTERM)
        self.expect_end(stdout="initialized replay correctly\n")

    def test_nothing_but_pictures(self):
        """No sounds, no music, no audio device, replays that cannot be read or written."""
        (self.folder / "sounds").unlink()
        (self.folder / "music").unlink()
        self.environment["SDL_AUDIODRIVER"] = "no such driver"
        self.replay.mkdir()
        (self.folder / "b.rpl").write_bytes(b"no replay" * 20)
        self.start()
        self.enter_game()
        self.key("Escape")
        self.expect_prompt()
        self.key("Escape")
        self.expect_menu("Start game")
        self.choose(1)
        self.expect_typed("replay.rpl")
        self.key("Return")
        self.expect_menu("Start game", 1)
        self.key("Return")
        self.expect_typed("replay.rpl")
        self.key("b", "Tab")
        self.expect_typed("b.rpl")
        self.key("Return")
        self.expect_menu("Start game", 1)
        self.key("Escape")
        self.assertEqual(self.process.wait(PATIENCE), 0)
        first, *others = self.messages("stdout").splitlines()
        self.assertRegex(first, "^Mix_OpenAudio: .")
        self.assertEqual(others, ['Error opening file "replay.rpl" for saving',
                                  "Error -107 initializing replay file",
                                  "Error -101 initializing replay file"])

    def test_failing_starts(self):
        """What stops the start, each with its messages and status; the settings stay as they are."""
        pictures = self.folder / "graphics"
        pictures.unlink()
        pictures.mkdir()
        for picture in GRAPHICS.iterdir():
            (pictures / picture.name).symlink_to(picture)
        absurd = DEFAULTS.replace("800", "1000000")
        for missing, settings, driver, status, message in (
                ("gui_cursor.png", DEFAULTS, None, 253,
                 "Error -3 loading static textures\nError -1 loading textures\n"),
                ("enemy_explosion_4.png", DEFAULTS, None, 253,
                 "Error -3 loading explosion textures\nError -7 loading textures\n"),
                (None, absurd, None, 254, "Error -1 initializing video to 1000000x600\n"),
                (None, absurd.replace("1000000", "-5"), None, 254,
                 "Error -1 initializing video to -5x600\n"),
                (None, DEFAULTS, "no such driver", 255, "Error -1 initializing SDL library\n")):
            with self.subTest(missing=missing, settings=settings, driver=driver):
                if missing:
                    (pictures / missing).unlink()
                if driver:
                    self.environment["SDL_VIDEODRIVER"] = driver
                self.settings.write_text(settings)
                self.launch()
                self.expect_end(status, stderr=message +
                                ("glGetError() == 0\n" if status != 255 else ""))
                self.assertEqual(self.settings.read_text(), settings)
                if missing:
                    (pictures / missing).symlink_to(GRAPHICS / missing)


if __name__ == "__main__":
    executable = pathlib.Path(sys.argv.pop(1)).resolve()
    FONT_CODES = {code: chr(code) for code in range(33, 127)}
    TEXT = {size: Glyphs("gui_bitmap_font.png", "100%x100%+0+0", 16, 16, size, size, FONT_CODES)
            for size in (16, 22, 24)}
    DIGITS = Glyphs("font_numbers.png", "1020x72+0+0", 10, 1, 51, 36, {k: str(k) for k in range(10)})
    unittest.main(verbosity=2)
