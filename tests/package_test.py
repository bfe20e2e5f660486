#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Installs what has been built, starts it as a player does, upgrades it and takes it away again.

Runs on a display of its own (DISPLAY):
    tools/virtual-display 1280x1024 tests/package_test.py cmake build [Package.test_name ...]
"""

import os
import pathlib
import platform
import pty
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import termios
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
NOBODY = 65534
cmake = build = None


def run(*command, **options):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False, **options)


class Package(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.folder.chmod(0o755)
        self.home = self.folder / "home"
        self.home.mkdir()
        self.mine = self.home / "quorvane"

    def install(self, name):
        tree = self.folder / name
        done = run(cmake, "--install", build, "--prefix", tree)
        self.assertEqual(done.returncode, 0, done.stdout)
        return tree

    def environment(self, **more):
        return dict(os.environ, XDG_DATA_HOME=str(self.home), SDL_AUDIODRIVER="dummy", **more)

    def start(self, tree, *arguments, **options):
        return run(tree / "bin" / "quorvane", *arguments, env=self.environment(), **options)

    def with_game(self, name, script):
        """An installation whose game is a script: what the command does around it is looked at."""
        tree = self.install(name)
        game = tree / "libexec" / "quorvane" / "quorvane"
        game.unlink()
        game.write_text(f"#!/bin/sh\n{script}\n")
        game.chmod(0o755)
        return tree

    def music(self):
        return {path.name: path.read_bytes() for path in (self.mine / "music").iterdir()}

    # --- What is installed ---------------------------------------------------------------------

    def test_metadata(self):
        tree = self.install("usr")
        share = tree / "share"
        for check in (["desktop-file-validate", *share.glob("applications/*.desktop")],
                      ["appstreamcli", "validate", "--no-net", *share.glob("metainfo/*.xml")],
                      ["mandoc", "-Tlint", "-Wwarning", *share.glob("man/man*/*")],
                      ["update-mime-database", share / "mime"]):
            done = run(*check)
            self.assertEqual((done.returncode, re.findall("(?i)error|warning", done.stdout)),
                             (0, []), f"{check[0]}: {done.stdout}")
        self.assertIn("application/x-quorvane-replay:*.rpl",
                      (share / "mime" / "globs").read_text().split("\n"))
        icons = {str(path.relative_to(share / "icons/hicolor").parent): path
                 for path in share.glob("icons/hicolor/*/*/*")}
        self.assertEqual(len(icons), 16, sorted(icons))
        shown = re.search("(?m)^application/x-quorvane-replay:(.*)$",
                          (share / "mime" / "icons").read_text())[1]
        self.assertEqual({path.stem for place, path in icons.items() if "mimetypes" in place},
                         {shown})
        for place, path in icons.items():
            if not place.startswith("scalable"):
                size = run("identify", "-format", "%wx%h", path).stdout
                self.assertEqual(size, place.split("/")[0], path)
        version = run(tree / "bin" / "quorvane-replay", "--version").stdout.split()[1]
        self.assertIn(f"quorvane {version}\n", self.start(tree, "--version").stdout)
        self.assertIn(f"## {version} (", (ROOT / "CHANGELOG.md").read_text())
        for path in (ROOT / "graphics", ROOT / "sounds", ROOT / "music"):
            self.assertEqual(sorted(os.listdir(path)),
                             sorted(os.listdir(share / "quorvane" / path.name)))

    def test_notices_go_with_every_copy(self):
        notices = (self.install("usr") / "share/doc/quorvane/copyright").read_text()
        licences = set(re.findall(r"\n\nLicense: (\S+)\n ", notices))
        for path in [*ROOT.glob("src/*"), *ROOT.glob("replay/*"), *ROOT.glob("tools/*.*")]:
            for holder in re.findall(r"(?m)^// SPDX-FileCopyrightText: (.*)$", path.read_text()):
                self.assertIn(holder, notices, path.name)
            for terms in re.findall(r"(?m)^// SPDX-License-Identifier: (.*)$", path.read_text()):
                self.assertLessEqual(set(terms.split(" AND ")), licences, path.name)

    def test_hardened_programs(self):
        tree = self.install("usr")
        for name in ("libexec/quorvane/quorvane", "libexec/quorvane/quorvane-export",
                     "bin/quorvane-replay"):
            found = run("readelf", "-hldW", "--dyn-syms", tree / name).stdout
            for wanted in (r"DYN \(Position-Independent", r"GNU_RELRO", r"BIND_NOW",
                           r"GNU_STACK +\S+ \S+ \S+ \S+ \S+ RW ", r"__stack_chk_fail",
                           r"__\w*printf_chk"):
                self.assertRegex(found, wanted, name)
            code = run("objdump", "-d", "--no-show-raw-insn", tree / name).stdout
            if platform.machine() == "x86_64":
                self.assertRegex(code, r"or[ql] +\$0x0,(0x[0-9a-f]+)?\(%rsp", f"{name}: no probed stack")
        # Containers that check their indices: what has any says so.
        self.assertRegex(run("readelf", "-W", "--dyn-syms", tree / "bin/quorvane-replay").stdout,
                         "glibcxx_assert_fail")

    def test_links_in_documents(self):
        pages = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]
        self.assertGreater(len(pages), 5)
        for page in pages:
            text = page.read_text()
            for target in re.findall(r"\]\(([^)]+)\)", text):
                if re.match(r"https?://", target):
                    continue
                path, _, anchor = target.partition("#")
                found = (page.parent / path) if path else page
                self.assertTrue(found.exists(), f"{page.name}: {target}")
                if anchor:
                    titles = re.findall(r"(?m)^#+ (.*)$", found.read_text())
                    anchors = [re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
                               for title in titles]
                    self.assertIn(anchor, anchors, f"{page.name}: {target}")

    def test_installed_export(self):
        tree = self.install("usr")
        if not (tree / "libexec/quorvane/quorvane-export").exists():
            self.skipTest("built without quorvane-export: EGL or libpng is missing")
        done = run(tree / "bin" / "quorvane-replay", "export",
                   tree / "share/doc/quorvane/examples/duel.rpl", "--frames", "frames", "--size",
                   "320x180", "--to", "0.1", "--fps", "10", cwd=self.home)
        self.assertEqual((done.returncode, sorted(os.listdir(self.home / "frames"))),
                         (0, ["frame-000000.png", "frame-000001.png"]), done.stdout)

    # --- The player's directory ----------------------------------------------------------------

    def test_ordinary_user_and_read_only_system(self):
        tree = self.install("usr")
        for path in [tree, *tree.rglob("*")]:
            path.chmod(path.stat().st_mode & ~(stat.S_IWUSR | stat.S_IWGRP | stat.S_IWOTH))
        user = {}
        environment = self.environment()
        if os.getuid() == 0:
            os.chown(self.home, NOBODY, NOBODY)
            user = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            # Nobody may be unable to read where the tests are; leaks are looked for by all others.
            environment = {name: value for name, value in environment.items()
                           if name not in ("LD_PRELOAD", "LSAN_OPTIONS")}
            environment["ASAN_OPTIONS"] = "detect_leaks=0"
        game = subprocess.Popen([tree / "bin" / "quorvane"], env=environment, cwd="/", **user)
        self.addCleanup(lambda: game.poll() is None and game.kill())
        deadline = time.monotonic() + 60
        while run("xdotool", "search", "--onlyvisible", "--class", "^quorvane$").returncode != 0:
            self.assertIsNone(game.poll(), "the game has ended")
            self.assertLess(time.monotonic(), deadline, "no window")
            time.sleep(0.1)
        game.send_signal(signal.SIGTERM)
        self.assertEqual(game.wait(60), 0)
        self.assertTrue((self.mine / "qrvn-settings.dat").read_text().startswith("width=800\n"))
        self.assertEqual(self.music(), {path.name: path.read_bytes()
                                        for path in (ROOT / "music").iterdir()})
        for path in tree.rglob("*"):  # so that it can be removed
            if path.is_dir():
                path.chmod(0o755)
        tree.chmod(0o755)

    def test_upgrade(self):
        show = 'pwd; readlink graphics sounds'
        old, new = self.with_game("old", show), self.with_game("new", show)
        track = sorted(path.name for path in (ROOT / "music").iterdir())[0]
        installed = new / "share/quorvane/music"
        (installed / "added.ogg").write_bytes(b"a new track")
        old_bytes = (old / "share/quorvane/music" / track).read_bytes()
        (installed / track).write_bytes(b"the track anew")
        (old / "share/quorvane/music/removed.ogg").write_bytes(b"nobody likes it")
        shutil.copy(old / "share/quorvane/music/removed.ogg", installed)

        def links(tree):
            share = tree / "share" / "quorvane"
            return f"{self.mine}\n{share}/graphics\n{share}/sounds\n"

        self.assertEqual(self.start(old).stdout, links(old))
        (self.mine / "replay.rpl").write_bytes(b"a game")
        (self.mine / "music" / "mine.ogg").write_bytes(b"my track")
        (self.mine / "music" / "removed.ogg").unlink()
        self.assertEqual(self.music()[track], old_bytes)
        # Both are there: each start has its own pictures, and so has the first one again.
        self.assertEqual(self.start(new).stdout, links(new))
        self.assertEqual(self.start(old).stdout, links(old))
        # The old one is gone, and its links lead nowhere.
        shutil.rmtree(old)
        self.assertEqual(self.start(new).stdout, links(new))
        music = self.music()
        self.assertEqual(music[track], b"the track anew")
        self.assertEqual(music["added.ogg"], b"a new track")
        self.assertEqual(music["mine.ogg"], b"my track")
        self.assertNotIn("removed.ogg", music)
        self.assertEqual((self.mine / "replay.rpl").read_bytes(), b"a game")

    def test_what_the_player_has_put_there(self):
        tree = self.with_game("usr", "readlink graphics; ls sounds")
        track = sorted(path.name for path in (ROOT / "music").iterdir())[0]
        (self.folder / "pictures").mkdir()
        (self.mine / "sounds").mkdir(parents=True)
        (self.mine / "sounds" / "mine.ogg").touch()
        (self.mine / "music").mkdir()
        (self.mine / "music" / track).write_bytes(b"mine")
        (self.mine / "graphics").symlink_to(self.folder / "pictures")
        for _ in range(2):
            self.assertEqual(self.start(tree).stdout, f"{self.folder}/pictures\nmine.ogg\n")
            self.assertEqual(self.music()[track], b"mine")
        # A link that leads nowhere is nobody's.
        (self.folder / "pictures").rmdir()
        self.assertEqual(self.start(tree).stdout.split("\n")[0],
                         f"{tree}/share/quorvane/graphics")

    def test_failures(self):
        tree = self.with_game("usr", "exit 254")
        self.assertEqual(self.start(tree).returncode, 254)
        self.assertEqual(self.start(tree, "--fast").returncode, 2)
        self.assertEqual(self.start(tree, "-h").returncode, 0)
        killed = self.with_game("killed", "kill -SEGV $$")
        self.assertEqual(self.start(killed).returncode, 128 + signal.SIGSEGV)
        for variables, message in (
                ({"XDG_DATA_HOME": "", "HOME": ""}, "neither HOME nor XDG_DATA_HOME"),
                ({"XDG_DATA_HOME": "/dev/null"}, "cannot make or enter /dev/null/quorvane")):
            done = run(tree / "bin" / "quorvane", env=self.environment() | variables)
            self.assertEqual(done.returncode, 1)
            self.assertIn(message, done.stdout)
        shutil.rmtree(tree / "share" / "quorvane")
        self.assertIn("is not complete", self.start(tree).stdout)

    def test_no_display(self):
        """The terminal that it is started from stays as it is, and is told in words."""
        tree = self.install("usr")
        usual = self.environment()
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"):
            usual.pop(name, None)
        for variables, status, sentence in (
                ({}, 1, b"neither DISPLAY nor WAYLAND_DISPLAY is set"),
                ({"DISPLAY": ":4095"}, 255, b"does the display :4095 answer?"),
                ({"WAYLAND_DISPLAY": "none"}, 255, b"SDL 1.2 itself needs an X server"),
                ({"SDL_VIDEODRIVER": "none"}, 255, b"is its video driver none there?")):
            with self.subTest(variables):
                keyboard, terminal = pty.openpty()
                self.addCleanup(os.close, keyboard)
                self.addCleanup(os.close, terminal)
                before = termios.tcgetattr(terminal)
                done = subprocess.run([tree / "bin" / "quorvane"], timeout=60, check=False,
                                      env=usual | {"TERM": "xterm"} | variables, stdin=terminal,
                                      stdout=terminal, stderr=terminal)
                shown = os.read(keyboard, 65536)
                self.assertIn(sentence, shown)
                self.assertEqual((done.returncode, termios.tcgetattr(terminal), shown.count(b"\x1b")),
                                 (status, before, 0), shown)

    def test_screen_comes_back(self):
        output = re.search(r"(?m)^(\S+) connected", run("xrandr").stdout).group(1)
        run("xrandr", "--newmode", "small", *"38 800 832 912 1024 600 603 607 624".split())
        run("xrandr", "--addmode", output, "small")
        before = run("xrandr", "--current").stdout
        tree = self.with_game("usr", f"xrandr --output {output} --mode small; "
                                     "xrandr --current >changed; kill -KILL $$")
        self.assertEqual(self.start(tree).returncode, 128 + signal.SIGKILL)
        self.assertIn(" 800 x 600,", (self.mine / "changed").read_text())
        self.assertEqual(run("xrandr", "--current").stdout, before)

    def test_uninstall(self):
        tree = self.folder / "usr"
        copy = self.folder / "build"
        copy.mkdir()
        self.install("usr")
        files = [str(path) for path in tree.rglob("*") if not path.is_dir()]
        (copy / "install_manifest.txt").write_text("\n".join(files) + "\n")
        (tree / "share" / "applications" / "other.desktop").touch()
        done = run(cmake, f"-DMANIFEST={copy}/install_manifest.txt", "-P",
                   ROOT / "cmake" / "uninstall.cmake")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual([str(path.relative_to(tree)) for path in tree.rglob("*")
                          if not path.is_dir() or "quorvane" in path.name],
                         ["share/applications/other.desktop"])


if __name__ == "__main__":
    cmake, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
