# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Hands and eyes for tests of the built program: real keys, real files, a real web server, and eyes
that read the texts and numbers on the screen.

The program's clock belongs to the test: time goes on for it when the test lets time pass or looks again
for what it waits for, and a key has reached it before any time goes on. So how busy the machine is
changes nothing but how long a test takes.
"""

import ctypes
import functools
import http.server
import json
import mmap
import os
import pathlib
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from operator import ne

import numpy as np

ROOT = pathlib.Path(__file__).resolve().parent.parent
GRAPHICS = ROOT / "graphics"
DEFAULTS = "width=800\nheight=600\nname=Gamer\nreplay=replay.rpl\nmouse=0\nfullscreen=0\nmusic=1\n"
DESKTOP = (1280, 1024)
PATIENCE = 60  # seconds of the program's time until something that must happen counts as missing
GAME_SECONDS = 135  # by then the field has shrunk to nothing
REAL_PATIENCE = 400  # seconds of the real time: a program that hangs is told from a busy machine
executable = ROOT / "build" / "quorvane"


def main():
    """Runs the tests of the calling file:  FILE EXECUTABLE [Class.test_name ...]"""
    global executable
    executable = pathlib.Path(sys.argv.pop(1)).resolve()
    # A shell starts background commands deaf to it, and so would be the programs started from here.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    unittest.main(verbosity=2)


def xlib():
    """The X library, and the extension that presses keys."""
    x11, xtst = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XStringToKeysym.restype = ctypes.c_ulong
    return x11, xtst


KEYSYMS = {"shift": "Shift_L", "alt": "Alt_L"}


class Clock:
    """The program's clock (owned_clock.cpp), in milliseconds."""
    NOW, GRANTED, WANTED, FRAMES = range(4)
    LENIENT = 0.25  # real seconds

    def __init__(self, process):
        self.file = tempfile.NamedTemporaryFile()
        self.file.write(struct.pack("=4I", 1000, 1000, 0, 0))
        self.file.flush()
        self.page = memoryview(mmap.mmap(self.file.fileno(), 16)).cast("I")
        self.is_over = process

    @property
    def now(self):
        return self.page[self.NOW]

    def jump(self, ms):
        """Time that the program does not live through: it is not run meanwhile."""
        self.page[self.NOW] = self.page[self.GRANTED] = self.now + ms

    def passes(self, ms, whole=True):
        """Lets time go on until it is used up. What does not sleep uses none: a program that only draws
        is let go after some frames, and unless the `whole` time is wanted, one that does neither, too."""
        page, first, began = self.page, self.page[self.FRAMES], time.monotonic()
        before = page[self.NOW]
        end = page[self.GRANTED] + ms if page[self.WANTED] else before + ms
        page[self.GRANTED] = end
        while not self.is_over():
            wanted = page[self.WANTED]
            if wanted > end:
                return
            if page[self.NOW] == before and page[self.FRAMES] - first >= 30:
                return
            if not whole and time.monotonic() - began > self.LENIENT:
                return
            if page[self.NOW] != before:
                before, first, began = page[self.NOW], page[self.FRAMES], time.monotonic()
            time.sleep(0.0005)


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE).stdout


class Glyphs:
    """Knows the texts drawn in one font at one size, by comparing every cell with every glyph: the
    edges in it, for what shines through from behind has few."""

    def __init__(self, picture, crop, across, down, width, height, codes):
        pixels = run("convert", GRAPHICS / picture, "-crop", crop, "+repage", "-resize",
                     f"{across * width}x{down * height}!", "-depth", "8", "rgba:-")
        rgba = np.frombuffer(pixels, np.uint8).reshape(down, height, across, width, 4).astype(float)
        light = rgba[..., :3].max(axis=-1) * rgba[..., 3] / 255
        self.width, self.height, self.codes = width, height, "".join(codes.values())
        self.glyphs = np.array([self.edges(light[i // across, :, i % across]) for i in codes])
        self.sizes = np.linalg.norm(self.glyphs, axis=1)

    @staticmethod
    def edges(cell):
        return np.concatenate([np.diff(cell, axis=axis).ravel() for axis in (0, 1)])

    def best(self, image, x, y, white):
        cell = self.edges(image.light(x, y, self.width, self.height, white))
        amount = self.glyphs @ cell / self.sizes
        best = amount.argmax()
        is_like = amount[best] > 0.4 * np.linalg.norm(cell)
        is_bright = amount[best] > 0.5 * self.sizes[best]
        return self.codes[best] if is_like and is_bright else " "

    def read(self, image, x, y, count, advance=None, white=False):
        advance = advance or self.width
        return "".join(self.best(image, round(x + k * advance), y, white)
                       for k in range(count)).rstrip()


class Image:
    """What the window shows."""

    def __init__(self, width, height, pixels):
        self.width, self.height = width, height
        self.pixels = np.frombuffer(pixels, np.uint8).reshape(height, width, 3)

    def light(self, x, y, width, height, white):
        """The strongest channel of every pixel, or what is white in it; dark where there is no image."""
        part = self.pixels[y:y + height, x:x + width].astype(float)
        light = part.min(axis=-1) if white else part.max(axis=-1)
        return np.pad(light, ((0, height - light.shape[0]), (0, width - light.shape[1])))

    def redness(self, x, y, width, height):
        part = self.pixels[y:y + height, x:x + width].astype(int)
        return (part[..., 0] - part[..., 1]).sum()


class Board(http.server.BaseHTTPRequestHandler):
    """The scoreboard: keeps what was posted and answers as it was told."""
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        self.server.posts.append((self.path, self.headers["Content-Type"], body))
        self.send_response(self.server.status)
        self.send_header("Content-Length", str(len(self.server.reply)))
        self.end_headers()
        self.wfile.write(self.server.reply)

    def log_message(self, *_):
        pass


@functools.cache
def text_glyphs(size):
    codes = {code: chr(code) for code in range(33, 127)}
    return Glyphs("gui_bitmap_font.png", "100%x100%+0+0", 16, 16, size, size, codes)


@functools.cache
def digit_glyphs():
    return Glyphs("font_numbers.png", "1020x72+0+0", 10, 1, 51, 36, {k: str(k) for k in range(10)})


SEED, TICK, KEY_UP, KEY_DOWN = 4, 8, 12, 16


class Recording:
    """A replay file, read to its last byte."""

    def __init__(self, data):
        self.data = data
        self.name = data[31:63].decode("latin-1").strip()
        self.score, self.created, size = struct.unpack(">III", data[63:75])
        self.intact = data[:6] == b"QRVNPL" and data[26:31] == b"\0\3\0\4\0"
        self.events, position = [], 75
        while position < len(data):
            width = data[position] & 3 or 4
            value = data[position + 1:position + 1 + width]
            self.events.append((data[position] & 0xfc, int.from_bytes(value, "big")))
            position += 1 + width
        self.intact &= position == len(data) == 75 + size
        self.frames = [value for kind, value in self.events if kind == TICK]
        self.length = sum(self.frames)
        self.keys = [event for event in self.events if event[0] in (KEY_UP, KEY_DOWN)]

    def hud(self):
        """What Driver.shows() looks for when the game is over."""
        return self.score, (150000 - self.length) // 100


def recorded(events):
    """A replay file with these events."""
    body = b"".join(bytes([kind | (width & 3)]) + value.to_bytes(width, "big")
                    for kind, value in events
                    for width in [max(1, (value.bit_length() + 7) // 8)])
    return (b"QRVNPL" + bytes(20) + b"\0\3\0\4\0" + b"Ada".rjust(32) +
            struct.pack(">III", 0, 0, len(body)) + body)


class Driver(unittest.TestCase):
    owns_clock = True

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
        self.clock = None
        self.window = None
        self.centred = False
        self.addCleanup(self.end)

    # --- Hands ---------------------------------------------------------------------------------

    def launch(self, *arguments, before=(), **options):
        """Starts the program, by a command that runs it if one is to come before."""
        self.end()
        environment = self.environment
        if self.owns_clock:
            self.clock = Clock(lambda: self.process.poll() is not None)
            library = executable.parent / "tests" / "libowned_clock.so"
            environment = dict(environment, OWNED_CLOCK=self.clock.file.name, LD_PRELOAD=":".join(
                filter(None, [environment.get("LD_PRELOAD"), str(library)])))
        with open(self.folder / "stdout", "wb") as out, open(self.folder / "stderr", "wb") as err:
            self.process = subprocess.Popen([*before, executable, *arguments], cwd=self.folder,
                                            stdout=out, stderr=err, env=environment, **options)

    def end(self):
        if self.process and self.process.poll() is None:
            self.process.kill()
            self.process.wait()

    def start(self, *arguments, **options):
        self.launch(*arguments, **options)
        self.expect_size(800, 600)
        self.expect_menu("Start game")

    def time_passes(self, seconds):
        if self.clock:
            self.clock.passes(round(1000 * seconds))
        else:
            time.sleep(seconds)

    @property
    def now(self):
        """Seconds, by the program's clock."""
        return self.clock.now / 1000 if self.clock else time.monotonic()

    def press(self, keys, down):
        """Has reached the program's connection when this returns."""
        x11, xtst = xlib()
        display = ctypes.c_void_p(x11.XOpenDisplay(None))
        for name in keys:
            symbol = x11.XStringToKeysym(KEYSYMS.get(name, name).encode())
            code = x11.XKeysymToKeycode(display, ctypes.c_ulong(symbol))
            self.assertNotEqual(code, 0, name)
            xtst.XTestFakeKeyEvent(display, code, down, ctypes.c_ulong(0))
            x11.XSync(display, 0)
        x11.XCloseDisplay(display)

    def key(self, *keys):
        for name in keys:
            self.press([name], True)
            self.time_passes(0.06)
            self.press([name], False)
            self.time_passes(0.06)

    def hold(self, *keys):
        self.press(keys, True)

    def release(self, *keys):
        self.press(keys, False)

    def choose(self, *entries):
        """Goes down by so many entries in each list on the way, and takes what is there."""
        for entry in entries:
            self.key(*["Down"] * entry, "Return")

    def close_window(self):
        """Asks the window to close, as a window manager does."""
        x11, _ = xlib()
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

    def focus_window(self):
        run("xdotool", "windowfocus", self.window)
        self.wait_for("the keyboard", lambda: run("xdotool", "getwindowfocus").decode().strip(),
                      str(self.window))

    def focus_elsewhere(self):
        """Gives the keyboard to the whole screen, with the pointer outside the window."""
        run("xdotool", "mousemove", DESKTOP[0] - 1, DESKTOP[1] - 1)
        x11, _ = xlib()
        display = ctypes.c_void_p(x11.XOpenDisplay(None))
        x11.XSetInputFocus(display, ctypes.c_ulong(1), 1, ctypes.c_ulong(0))  # PointerRoot
        x11.XCloseDisplay(display)

    # --- Eyes ----------------------------------------------------------------------------------

    def wait_for(self, what, look, wanted, patience=PATIENCE, pause=0.1):
        """Looks, and lets the program go on for a `pause`, until it sees what is wanted."""
        began, real_end = self.now, time.monotonic() + REAL_PATIENCE
        while True:
            seen = look()
            if wanted(seen) if callable(wanted) else seen == wanted:
                return seen
            if self.process.poll() is not None:
                self.fail(f"the program ended with {self.process.returncode} before {what}: "
                          f"{self.messages('stdout')}{self.messages('stderr')}")
            if self.now - began > patience or time.monotonic() > real_end:
                run("import", "-window", "root", executable.parent / f"{self.id()}.png")
                self.fail(f"{what}: wanted {wanted!r}, seen {seen!r}")
            if self.clock:
                self.clock.passes(round(1000 * pause), whole=False)
            else:
                time.sleep(0.05)

    def ended(self):
        """The exit status, when it is over."""
        real_end = time.monotonic() + REAL_PATIENCE
        while self.process.poll() is None and time.monotonic() < real_end:
            if self.clock:
                self.clock.passes(100, whole=False)
            else:
                time.sleep(0.05)
        return self.process.poll()

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
        self.centred = False
        run("xdotool", "windowmove", self.window, 0, 0)
        run("xdotool", "mousemove", width // 2, height // 2)

    def look(self):
        width, height, x, y = self.geometry() or (800, 600, 0, 0)
        if self.centred:
            x, y = (DESKTOP[0] - width) // 2, (DESKTOP[1] - height) // 2
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
        return text_glyphs(24).read(image, x, y, 20)

    def expect_menu(self, first, selected=0):
        """Waits for a list that begins with that title and has that entry highlighted."""
        def highlighted():
            image = self.look()
            if self.menu(0, image) != first:
                # Full screen is the middle of the screen if the display does not change its mode.
                self.centred = not self.centred
                return None
            red = [image.redness(image.width // 2 - 190, 200 + 25 * entry, 240, 24)
                   for entry in range(6)]
            return red.index(max(red))
        self.wait_for(f"the list of '{first}'", highlighted, selected)

    def typed(self):
        image = self.look()
        prompt = text_glyphs(22).read(image, image.width // 2 - 380, 140, 6, 22.4)
        if prompt not in ("Player", "Replay"):
            return None
        text = text_glyphs(16).read(image, image.width // 2 - 380, 180, min(48, image.width // 16))
        # The cursor is larger than the text; it is read as a part of it.
        behind = image.width // 2 - 380 + 16 * len(text.rstrip("_"))
        return text.rstrip("_") + text_glyphs(24).read(image, behind, 180, 1)

    def expect_typed(self, text):
        """Waits for a text entry with that text, the cursor behind it."""
        self.wait_for("the text entry", self.typed, text + "_")

    PROMPT = 286, {0: "     Upload scores?", 1: " [Return] Upload scores",
                   2: "   [Esc] Back to menu", 4: "       Scoreboard"}

    @staticmethod
    def overlay(image, left, rows):
        """What is read of the prompt or a message over the scene, rows by number, each beginning
        `left` of the middle; nothing if it is right. The scene shines through, and a letter over
        a shot cannot be read."""
        seen = [(text_glyphs(24).read(image, image.width // 2 - left,
                                      image.height // 2 - 150 + 50 * row, len(text),
                                      white=True), text) for row, text in rows.items()]
        wrong = sum(sum(map(ne, read.ljust(len(text)), text)) for read, text in seen)
        return seen if wrong > 0.2 * sum(map(len, rows.values())) else []

    def expect_overlay(self, left, rows, patience=PATIENCE, pause=0.1):
        self.wait_for("the overlay", lambda: self.overlay(self.look(), left, rows), [], patience, pause)

    def expect_prompt(self, patience=PATIENCE, pause=0.1):
        self.expect_overlay(*self.PROMPT, patience, pause)

    def prompt_or_menu(self):
        """Waits for one of them; true if it is the prompt."""
        def shown():
            image = self.look()
            return (not self.overlay(image, *self.PROMPT), self.menu(0, image) == "Start game")
        return self.wait_for("prompt or menu", shown, any)[0]

    def expect_message(self, *lines, patience=PATIENCE, pause=0.1):
        self.expect_overlay(364, dict(enumerate(lines)), patience, pause)

    def expect_finished(self, patience=PATIENCE, pause=0.1):
        self.expect_message("", "        Replay finished!", "     Please press enter to",
                            "           continue...", patience=patience, pause=pause)

    @staticmethod
    def shows(image, score, time_left):
        """Whether these are the numbers at the top, the time in tenths of a second. One digit may be
        hidden: an explosion is as bright."""
        wanted = f"{time_left:<4}{score:10}"
        seen = "".join(digit_glyphs().read(image, x, 15, count, white=True).ljust(count)
                       for x, count in ((20, 4), (image.width - 530, 10)))
        return sum(map(ne, seen, wanted)) <= 1

    def in_game(self):
        return digit_glyphs().read(self.look(), 20, 15, 4, white=True).strip().isdigit()

    @staticmethod
    def scene(image):
        """Of the last picture of a game what no number and no text of prompt or message is laid over."""
        rows = np.arange(image.height)
        behind_text = (rows - image.height // 2 + 150) % 50 < 30
        return image.pixels[~behind_text & (rows >= 60) & (rows < image.height - 40)].astype(int)

    def messages(self, stream):
        return (self.folder / stream).read_text()

    def expect_end(self, status=0, stdout="", stderr=""):
        self.assertEqual(self.ended(), status, self.messages("stderr"))
        self.assertEqual(self.messages("stdout"), stdout)
        self.assertEqual(self.messages("stderr"), stderr)

    # --- Games ---------------------------------------------------------------------------------

    def expect_game(self):
        self.wait_for("the game", self.in_game, True)

    def enter_game(self, name="Gamer"):
        """From the menu, with its first entry highlighted."""
        self.key("Return")
        self.expect_typed(name)
        self.key("Return")
        self.expect_game()

    def short_game(self, name="Gamer"):
        self.enter_game(name)
        self.key("Escape")
        self.expect_prompt()

    def play_back(self, file="replay.rpl", standstill=0):
        """From the menu, with its second entry highlighted, to the playback's last frame. On the way
        the machine is too busy for it for so many seconds. Returns how many it took."""
        self.key("Return")
        self.expect_typed(file)
        self.key("Return")
        began = self.now
        if standstill:
            self.expect_game()
            self.clock.jump(1000 * standstill)
        self.expect_finished(GAME_SECONDS + PATIENCE, pause=0.5)
        return self.now - began

    def recording(self):
        return Recording(self.replay.read_bytes())

    def lost_to(self):
        """What the recorded game is lost to. The recording has to be good."""
        def told(verb):
            tool = executable.parent / "replay" / "quorvane-replay"
            return json.loads(run(tool, verb, "--json", self.replay))
        self.assertEqual(told("verify")["verdict"], "ok")
        return told("simulate")["lost_to"]

    def fight_to_death(self):
        """Backs off from the hole, spins and fires for a while, then flies on until it is lost."""
        self.hold("s")
        self.time_passes(1.6)
        self.release("s")
        self.hold("Left", "space")
        for _ in range(9):
            self.key("Control_L")
            self.time_passes(0.9)
        self.release("Left", "space")
        self.hold("w")
        self.expect_prompt()
        self.release("w")

    def serve(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Board)
        server.posts, server.status, server.reply = [], 200, b"OK\n"
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        # The scoreboard's host is built in: the library that posts can be led elsewhere.
        self.environment["http_proxy"] = f"http://127.0.0.1:{server.server_port}"
        return server
