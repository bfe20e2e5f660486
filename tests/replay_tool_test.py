#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Drives quorvane-replay on golden recordings, on broken ones and on ones made here.

    tests/replay_tool_test.py build/replay/quorvane-replay [ReplayTool.test_name ...]
"""

import collections
import csv
import hashlib
import itertools
import json
import os
import pathlib
import pty
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

GOLDEN = pathlib.Path(__file__).resolve().parent / "golden"
TRACE = (GOLDEN / "trace-example.txt").read_bytes()
SALT = bytes(range(77))
SEED, TICK, UP, DOWN, MOUSE_X, MOUSE_Y = range(4, 28, 4)
executable = None


def index_of(folder):
    with open(GOLDEN / folder / "index.tsv", newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file, delimiter="\t"))


def golden(name):
    return (GOLDEN / "games" / name).read_bytes()


def events_of(image):
    events, at = [], 75
    while at < len(image):
        width = image[at] & 3 or 4
        events.append((image[at] & 0xfc, int.from_bytes(image[at + 1:at + 1 + width], "big")))
        at += 1 + width
    return events


def image_of(events, score=0, name=b"Ada", created=None, salt=SALT):
    # A signed file. An event may have a third item, its width.
    body = bytearray()
    for kind, value, *width in events:
        width = width[0] if width else max(1, (value.bit_length() + 7) // 8)
        body += bytes([kind | width & 3]) + value.to_bytes(width, "big")
    if created is None:
        spent = sum(event[1] for event in events if event[0] == TICK)
        created = (events[0][1] if events else 0) + spent // 1000 + 5
    signed = (b"\0\3\0\4\0" + name.rjust(32) +
              struct.pack(">III", score, created % 2**32, len(body)) + body)
    return b"QRVNPL" + hashlib.sha1(signed + salt).digest() + signed


class ReplayTool(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        (self.folder / "games").symlink_to(GOLDEN / "games")
        self.write("salt", SALT)

    def write(self, name, data):
        (self.folder / name).write_bytes(data)
        return name

    def start(self, *arguments, **pipes):
        pipes = {**dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.PIPE), **pipes}
        return subprocess.Popen([executable, *arguments], cwd=self.folder, **pipes)

    def run_tool(self, *arguments, status=0, stdin=b""):
        # Standard output. A failure has one line on standard error, but for a mere verdict.
        tool = self.start(*arguments)
        output, error = tool.communicate(stdin)
        self.error = error.decode()
        self.assertEqual(tool.returncode, status, (arguments, error))
        self.assertLessEqual(self.error.count("\n"), status, arguments)
        return output

    def verify(self, *files, status=1):
        output = self.run_tool("verify", "--json", "--salt-file", "salt", *files, status=status)
        return [json.loads(line) for line in output.splitlines()]

    def test_verdicts(self):
        game = events_of(golden("0031-fireholder.rpl"))  # its last step kills, and scores 621
        lemming = events_of(golden("0019-lemming.rpl"))
        ticks = [i for i, event in enumerate(lemming) if event[0] == TICK]
        kill = next(i for i, line in enumerate(TRACE.split(b"\n")) if line.split(b"\t")[4] == b"27")
        until_kill = lemming[:ticks[kill] + 1]
        quiet = [(SEED, 5), *[(TICK, 20 * (i > 0)) for i in range(9)]]
        end = (TICK, 20)
        refused = "impossible", None, None  # unplayed
        # What is written, then verdict, matching score, end, and words of the reasons or remarks.
        cases = [
            (game, {"score": 1449}, "ok", "after", "self", ""),
            (game, {"score": 828}, "ok", "before", "self", ""),
            (game, {"score": 1448}, "wrong-score", "none", "self", ""),
            (game, {"score": 1449, "salt": b""}, "bad-signature", "after", "self", ""),
            (game[:-1], {"score": 828}, "ok", "both", "log", ""),
            (until_kill, {"score": 0}, "ok", "before", "log", "above 100 ms 12 times"),
            (until_kill, {"score": 27}, "unfinished", "after", "log", ""),
            (quiet[:2], {"name": b"\xff" * 32}, "ok", "both", "log", ""),
            (quiet + [(TICK, 2**31)], {}, "impossible", "both", "negative-tick", "2^31"),
            (quiet + [(TICK, 2**31 - 160)], {}, "impossible", "both", "time-overflow", "2^31"),
            (game + [end] * 2, {"score": 1449}, "impossible", "after", "self",
             f"the game's end 2 times from event {len(game)}"),
            # No limiter lets a frame come so early, no hands press so much; 20 ms a frame leave 1020.
            (quiet + [(TICK, 0)] * 51, {}, "ok", "both", "log", "below 15 ms"),
            (quiet + [(TICK, 0)] * 51 + [(TICK, 19)], {}, *refused, "frames than the time"),
            (quiet + [(TICK, 18)] * 510, {}, "ok", "both", "log", ""),
            (quiet + [(TICK, 18)] * 511, {}, *refused, "frames than the time"),
            (quiet + [(TICK, 2000)] + [(TICK, 0)] * 51, {}, "ok", "both", "log", "below 15 ms"),
            (quiet + [(TICK, 2000)] + [(TICK, 0)] * 52, {}, *refused, "frames than the time"),
            (quiet + [(DOWN, 6), (UP, 6)] * 70 + [end], {}, "ok", "both", "log", ""),
            (quiet + [(DOWN, 6), (UP, 6)] * 70 + [(DOWN, 6), end], {}, *refused, "more keys"),
            (quiet + [(TICK, 200)] + [(DOWN, 6), (UP, 6)] * 160 + [end], {}, "ok", "both", "log", "above"),
            (quiet + quiet, {}, *refused, "second seed"),
            (quiet + [(SEED, 5)] * 60000, {}, *refused, "second seed"),
            (quiet, {"created": 0}, "ok", "both", "log", "time at which the game began"),
            (quiet, {"name": b"A\0da"}, "impossible", "both", "log", "zero byte"),
            *[(log, {}, "impossible", "both", "log", words) for log, words in (
                ([], "no frame"), (quiet[:1], "no frame"), (quiet[1:], "begin with a seed"),
                ([(DOWN, 0)] + quiet, "begin with a seed"),
                (quiet[:1] + quiet[2:], "first frame time"), (quiet + [(DOWN, 8), end], "slot of 8"),
                (quiet + [(UP, 300), end], "slot of 8"), (quiet + [(MOUSE_Y, 8), end], "mouse"),
                (quiet + [(28, 8), end], "unknown type from event 10"),
                (quiet + [(TICK, 20, 2)], "shortest form"), (quiet + [(DOWN, 6)], "last frame"))],
            *[(quiet + log + [end], {}, "ok", "both", "log", words) for log, words in (
                ([], ""), ([(TICK, 14), (TICK, 101)], "below 15 ms from event 10"),
                ([(UP, 6), (UP, 6), (DOWN, 6), (DOWN, 6), (UP, 2), (DOWN, 2)], ""),  # fire: two keys
                ([(UP, 6)] * 3, "of its slot"), ([(DOWN, 2)] * 2, "of its slot"))]]
        names = [self.write(f"{i}.rpl", image_of(case[0], **case[1])) for i, case in enumerate(cases)]
        for case, line in zip(cases, self.verify(*names), strict=True):
            with self.subTest(str(case)[-120:]):
                self.assertEqual((line["verdict"], line.get("matched"), line.get("end")), case[2:5], line)
                unplayed = {"before", "after", "frames", "time", "lost_to", "key"} - line.keys()
                self.assertEqual(len(unplayed), 6 if case[3] is None else case[2] == "impossible", line)
                notes = line["reasons"] + (line["remarks"] if case[2] == "ok" else [])
                self.assertIn(case[5], "; ".join(notes))
                self.assertEqual(notes == [], case[5] == "", line)

    def test_golden_games(self):
        index = index_of("games")
        possible = ("stalls", "wraps", "holehug")  # of the hostile ones
        refused = ("zeroticks", "poolgrowth", "manykeys", "reseed", "trailing", "randombytes")
        losses = set()
        for row, line in zip(index, self.verify(*("games/" + row["file"] for row in index)), strict=True):
            is_refused = row["kind"].endswith(refused)
            self.assertEqual([str(line.get(key)) for key in ("frames", "time", "end", "after")],
                             [row[key] if not is_refused else "None"
                              for key in ("frames", "last_time", "end", "score")], row)
            hostile = "adv" in row["kind"] and not row["kind"].endswith(possible)
            self.assertEqual(line["verdict"], "impossible" if hostile else "bad-signature", line)
            self.assertEqual("key" in line, not hostile)
            lost_to = "-" if is_refused else line["lost_to"]
            self.assertEqual(lost_to == "-", is_refused or line["end"] != "self", line)
            if lost_to != "-":
                self.assertIn(f"\nlost_to {lost_to}\n", self.run_tool("simulate", line["file"]).decode())
                losses.add(lost_to)
        self.assertEqual(losses, {"hole", "edge", "hull", "enemy-shot", "own-shot"})

    def test_key(self):
        """What is one game, and what is another."""
        def key_of(events, **header):
            printed = self.run_tool("key", self.write("game", image_of(events, **header))).decode()
            self.assertRegex(printed, "^[0-9a-f]{64}  game\n$")
            return printed[:64]
        game = events_of(golden("0009-ace-other.rpl"))
        game = game[:next(i for i in range(400, len(game)) if game[i][0] == TICK) + 1]
        known, keys, last = game[0][1].to_bytes(4, "big"), 0, False
        for kind, value in game[1:]:
            if kind == TICK:
                known += value.to_bytes(4, "big") + bytes([keys])
                keys &= 127  # the shield is taken once
            else:
                keys = keys | 1 << value if kind == DOWN else keys & ~(1 << value)
        key = hashlib.sha256(known).hexdigest()
        self.assertEqual(key_of(game), key)
        at = next(i for i, event in enumerate(game) if i > 99 and event[0] == TICK == game[i + 1][0])
        down = next(i for i, event in enumerate(game) if event == (DOWN, 6))
        for same, header in ((game, {"name": b"B", "score": 1, "created": 9, "salt": b""}),
                             (game[:at] + [(DOWN, 4), (UP, 4)] + game[at:], {}),
                             (game[:down] + [(DOWN, 6)] + game[down:], {})):
            self.assertEqual(key_of(same, **header), key)
        self.assertEqual(self.verify("game")[0]["key"], key)
        moved = game[:at] + [(TICK, game[at][1] + 1), (TICK, game[at + 1][1] - 1)] + game[at + 2:]
        late = game[:down] + [game[down + 1], game[down]] + game[down + 2:]
        others = [[(SEED, game[0][1] + 1)] + game[1:], game + [(TICK, 20)], moved, late, game[:at] + [(DOWN, 4)] + game[at:]]
        self.assertEqual(len({key, *map(key_of, others)}), 1 + len(others))
        self.write("odd", image_of(game + [(DOWN, 8)]))
        lines = self.run_tool("key", "odd", "game", status=1)
        self.assertEqual((lines.count(b"\n"), self.error.count("slot of 8")), (1, 1))

    def test_course(self):
        """Every point of the score, and what is heard, and when; likeness goes by it."""
        seen = set()
        for row in index_of("games"):
            if "adv" in row["kind"]:
                continue
            name = "games/" + row["file"]
            line = json.loads(self.run_tool("verify", "--json", "--course", name, status=1))
            entries, scores = line["course"]["entries"], line["course"]["scores"]
            self.assertEqual(sum(points for _, _, points in entries), line["after"], row)
            self.assertEqual(entries[-1][:2], [line["time"], "end"])
            self.assertEqual(entries, sorted(entries, key=lambda entry: entry[0]))
            self.assertEqual(scores, [sum(points for time, _, points in entries if time <= 1000 * second)
                                      for second in range(line["time"] // 1000 + 1)])
            # A chain is broken once; what leaves the field is heard like a hit and breaks none.
            kinds = [kind for _, kind, _ in entries]
            chains = [kind for kind in kinds if kind in ("kill", "hit")]
            self.assertNotIn(("hit", "hit"), list(zip(["hit", *chains], chains)))
            sounds = [line.split(b"\t")[13].split(b",") for line in
                      self.run_tool("simulate", "--trace", name).split(b"\n") if b"\t" in line]
            heard = [int(sound) for step in sounds for sound in step if sound != b"-"]
            self.assertEqual([kinds.count(kind) for kind in ("shot", "shield", "absorbed", "chain")],
                             [heard.count(sound) for sound in (0, 3, 4, 7)])
            seen.update(kinds)
        self.assertEqual(seen, {"shot", "shield", "absorbed", "chain", "kill", "hit", "end"})
        self.write("late", image_of([(SEED, 1), (TICK, 0), (TICK, 2**31 - 1)]))
        line = json.loads(self.run_tool("verify", "--json", "--course", "late", status=1))
        self.assertEqual((line["time"], line["course"]["scores"]), (2**31 - 1, [0] * 151))

    def test_likeness(self):
        game = events_of(golden("0020-ace-same.rpl"))
        other = events_of(golden("0000-ace-same.rpl"))
        ticks = [i for i, event in enumerate(game) if event[0] == TICK]
        added = [event for i, event in enumerate(game)
                 for event in [event, (TICK, 0)][:2 if i in ticks[50:2000:100] else 1]]
        for events, likeness in ((game, "1.00"), (added, "0.9."), (game[:ticks[3000]], "1.00"),
                                 (game[:1] + other[1:], "0.0."), (game[:ticks[50]], "undefined")):
            self.write("a", image_of(game)), self.write("b", image_of(events, name=b"B"))
            for pair in (("a", "b"), ("b", "a")):
                self.assertRegex(self.run_tool("likeness", *pair).decode(), f"^{likeness}\n$")
        # Twenty pairs of points and time are enough, nineteen are not.
        course = json.loads(self.run_tool("verify", "--json", "--course", "games/0009-ace-other.rpl", status=1))
        won = {(points, moment // 40): moment for moment, _, points in course["course"]["entries"][::-1] if points}
        enough = events_of(golden("0009-ace-other.rpl"))
        times = itertools.accumulate(value if kind == TICK else 0 for kind, value in enough)
        at = list(times).index(sorted(won.values())[19])
        for events, likeness in ((enough[:at + 1], b"1.00\n"), (enough[:at], b"undefined\n")):
            self.write("b", image_of(events))
            self.assertEqual(self.run_tool("likeness", "b", "b"), likeness)
        self.write("b", image_of(other))
        self.assertEqual(self.run_tool("likeness", "a", "b", status=1), b"")
        self.assertIn("seed", self.error)

    def test_names_and_jobs(self):
        names = [f"games/{row['file']}" for row in index_of("games")] + ["gone", "salt"]
        lines = self.run_tool("verify", *names, status=2)
        self.assertEqual(lines.split(b"\n")[-2], b"summary\t75 files\tok=0 bad-signature=40 unfinished=0 "
                         b"wrong-score=0 impossible=33 broken=1 crashed=0 unreadable=1")
        for options, given in ((["--jobs", "1", *names], ""), (["--jobs", "4", *names], ""),
                               ([], "\n\n".join(names)), (["-0", "-"], "\0".join(names))):
            self.assertEqual(self.run_tool("verify", *options, stdin=given.encode(), status=2), lines)
        backwards = self.run_tool("verify", *names[::-1], status=2)
        self.assertEqual(backwards.split(b"\n")[-3::-1], lines.split(b"\n")[:-2])

    def test_broken_files(self):
        for row in index_of("broken"):
            path = str(GOLDEN / "broken" / row["file"])
            status = {"0": 0, "-1": 2}.get(row["code"], 1)
            for verb in ("info", "simulate", "dump"):
                self.assertEqual(self.run_tool(verb, path, status=status) != b"", status == 0, row)
                self.assertEqual(self.error.startswith(f"quorvane-replay: {path}: "), status > 0)
            verdict = self.verify(path, status=status or 1)[0]["verdict"]
            self.assertIn(verdict, (("bad-signature", "impossible"), ("broken",), ("unreadable",))[status])

    def test_round_trip(self):
        odd = [(kind, 5, width) for kind in range(0, 256, 4) for width in (1, 2, 3, 4)]
        paths = [*(GOLDEN / "games").glob("*.rpl"), *(GOLDEN / "broken").glob("ok*.rpl"),
                 self.folder / self.write("odd", image_of(odd, 2**32 - 1, bytes(range(224, 256))))]
        self.assertGreater(len(paths), 75)
        for path in paths:
            self.assertEqual(self.run_tool("pack", "-", "-", stdin=self.run_tool("dump", str(path))),
                             path.read_bytes(), path)

    def test_packing(self):
        image = golden("0014-adv-onlyseed.rpl")
        text = self.run_tool("dump", "games/0014-adv-onlyseed.rpl").decode()
        self.run_tool("pack", "-", "out", stdin=text.encode() + b"\n #\n 28 300  width 3 # odd\r\n")
        expected = image[:74] + b"\x09" + image[75:] + b"\x1f\0\1\x2c"
        self.assertEqual((self.folder / "out").read_bytes(), expected)
        bad = [(text + line + "\n", text.count("\n") + 1) for line in (
            "tick", "tock 1", "tick 4294967296", "tick x", "tick 1 2", "tick 1 width", "30 1", "256 1",
            "tick 1 width 5", "tick 256 width 1", "tick 1 width 1 1", "tick " + "9" * 2000, "tick -1",
            "tick +1", "tick 1\0", "tick 20 width -1", "# \0")]
        bad += [(text.replace(was, new, 1), line) for was, new, line in (
            ("text 1", "text 2", 1), ("a5", "a", 2), ("a5", "ax", 2), ("name", "nome", 3),
            ("score 0", "score", 4), ("score 0", "score 0 0", 4))] + [("", 1), (text[:60], 2)]
        (self.folder / "link").symlink_to("linked")
        for _ in range(2):  # to nothing, then to a file
            self.run_tool("pack", "-", "link", stdin=text.encode())
            self.assertTrue((self.folder / "link").is_symlink())
            self.assertEqual((self.folder / "linked").read_bytes(), image)
        for broken, line in bad:
            self.run_tool("pack", self.write("text", broken.encode()), "no", status=1)
            self.assertIn(f"text: line {line} ", self.error, broken[-40:])
        self.assertFalse((self.folder / "no").exists())
        for command in (("-", "no/where"), (".", "out"), ("gone", "out"), ("-", "/dev/full")):
            self.run_tool("pack", *command, stdin=text.encode(), status=2)
        self.run_tool("pack", "-", "long", stdin=(text + "# " + "x" * 1021 + "tick 20").encode())
        self.assertEqual((self.folder / "long").read_bytes(), image)
        # A full disk leaves the file that was there.
        limited = subprocess.run(["sh", "-c", 'ulimit -f 0; trap "" XFSZ; exec "$0" pack - out', executable],
                                 input=text.encode(), cwd=self.folder, capture_output=True)
        self.assertEqual((limited.returncode, limited.stderr.count(b"\n")), (2, 1))
        self.assertEqual((self.folder / "out").read_bytes(), expected)
        self.assertEqual({path.name for path in self.folder.iterdir()},
                         {"games", "link", "linked", "long", "out", "salt", "text"})

    def test_simulate(self):
        self.assertEqual(self.run_tool("simulate", "--trace", "games/0019-lemming.rpl"),
                         TRACE.replace(b"\nscore", b"\nlost_to edge\nscore"))
        for row in index_of("games")[::6]:
            row["file"] = "games/" + row["file"]
            state = json.loads(self.run_tool("simulate", "--json", row["file"]))
            bits = state["position_bits"] + state["velocity_bits"] + [state["angle_bits"]]
            state |= dict(zip(("px", "py", "vx", "vy", "angle"), bits), fresh=state["fresh_process"])
            self.assertEqual({key: str(state[key]) for key in row if key != "kind"},
                             {key: row[key] for key in row if key != "kind"})

    def test_diff(self):
        game = events_of(golden("0019-lemming.rpl"))
        step = sum(event[0] == TICK for event in game[:50])
        for other, steps, groups in (
                (image_of(game), 726, ""), (TRACE, 726, ""), (image_of(game[:50]), step, "end"),
                (image_of([(SEED, 1)] + game[1:]), 0, "generator waves"),
                (image_of(game[:50] + [(DOWN, 2)] + game[50:]), step, "player keys"),
                (image_of(game[:50] + [(TICK, 21)] + game[51:]), step, "clock player ships"),
                (TRACE.replace(b"\t0\t27\t", b"\t0\t28\t", 1), 642, "player")):
            line = json.loads(self.run_tool("simulate", "--json", "--diff", self.write("other", other),
                                            "games/0019-lemming.rpl", status=int(groups != "")))
            self.assertEqual((line["step"], line["groups"]), (steps, groups.split()), line)
            self.assertEqual(line["result"], "parted" if groups else "same")
        cut = TRACE.splitlines(keepends=True)
        for other, status in (("salt", 1), ("gone", 2), (self.write("cut", b"".join(cut[:300])), 1),
                              (self.write("odd", b"".join(cut[:9] + [b"what\n"] + cut[10:])), 1)):
            self.run_tool("simulate", "--diff", other, "games/0019-lemming.rpl", status=status)
        os.mkfifo(self.folder / "pipe")
        tool = self.start("simulate", "--diff", "pipe", "games/0019-lemming.rpl")
        (self.folder / "pipe").write_bytes(TRACE)
        self.assertIn(b"result same\n", tool.communicate()[0])
        # No game has so many frames.
        self.write("long", image_of([(SEED, 1)] + [(TICK, 0)] * 200001))
        state = json.loads(self.run_tool("simulate", "--json", "long"))
        self.assertEqual((state["end"], state["frames"]), ("frame-limit", 200000))
        # A log without a seed and a game without a step are the same as themselves, too.
        for log in ([(TICK, 20 * (i > 0)) for i in range(20000)], [(SEED, 1)]):
            self.write("trace", self.run_tool("simulate", "--trace", self.write("log", image_of(log))))
            for other in ("log", "trace"):
                self.run_tool("simulate", "--diff", other, "log")

    def test_info(self):
        log = [(SEED, 9), (TICK, 0), (DOWN, 6), (UP, 6), (MOUSE_X, 1), (MOUSE_Y, 2), (0, 1), (TICK, 300)]
        self.write("a", image_of(log, 77, b'A"\\\xe9\n\xc3\xa9', 1709208000))
        self.assertEqual(json.loads(self.run_tool("info", "--json", "--salt-file", "salt", "a")), {
            "file": "a", "size": 92, "name": 'A"\\\xe9\n\xe9', "score": 77, "created": 1709208000,
            "date": "2024-02-29 12:00:00 UTC", "duration": 300, "frames": 2, "events": 8,
            "types": {"seed": 1, "tick": 2, "key_up": 1, "key_down": 1, "mouse_x": 1, "mouse_y": 1,
                      "unknown": 1}, "signature": "right"})
        self.assertRegex(self.run_tool("info", "a").decode(), r'name \[A"\\\\\\xe9\\x0a\xe9\]\n'
                         r"(.*\n)*created .*\(2024-02-29 12:00:00 UTC\)\n(.*\n)*signature wrong\n")

    def test_documented_example(self):
        text = (GOLDEN.parent.parent / "docs" / "replay-format.md").read_text(encoding="utf-8")
        dump = re.findall(r"^    [0-9a-f]{8}:((?: [0-9a-f]{2})+)$", text, re.M)
        self.write("example", bytes.fromhex("".join(dump)))
        line = self.verify("example")[0]
        self.assertEqual((line["reasons"], line["matched"], line["frames"]), ([], "both", 6))
        hashes = re.findall(r"\| `([0-9a-f]{16})` \|$", text, re.M)
        steps = self.run_tool("simulate", "--trace", "example").decode().split("\n")
        self.assertEqual(hashes, [step.split("\t")[1] for step in steps[:6]])

    def test_bad_input(self):
        os.mkfifo(self.folder / "pipe")
        self.write("huge", golden("0015-adv-empty.rpl"))
        self.write("long", golden("0015-adv-empty.rpl")[:71] + b"\xff" * 4)
        os.truncate(self.folder / "huge", 2**40)
        os.truncate(self.folder / "long", 75 + 2**32 - 1)
        with_export = executable.with_name("quorvane-export").exists()
        exporting = ["export --frames f"] if with_export else []
        for name, status, reason in (
                ("gone", 2, "No such file"), ("games", 2, "directory"), ("pipe", 2, "not a regular"),
                ("/dev/zero", 2, "not a regular"), ("huge", 1, "length"), ("long", 1, "larger than any")):
            for verb in ("info", "verify", "simulate", "dump", *exporting):
                self.run_tool(*verb.split(), name, status=status)
                self.assertRegex(self.error, f"^quorvane-replay: {name}: .*{reason}")
        # The largest file that is read, and one byte more.
        for seed, status, verdict in ((b"\6\0\5", 0, "impossible"), (b"\7\0\0\5", 1, "broken")):
            body = seed + b"\5\5" * (2**20 - 39)
            self.write("large", golden("0015-adv-empty.rpl")[:71] + struct.pack(">I", len(body)) + body)
            self.run_tool("info", "large", status=status)
            self.assertEqual(self.verify("large")[0]["verdict"], verdict)
        for command in ("", "what a", "info", "info --jobs 2 a", "simulate a b", "simulate --what a",
                        "simulate --trace --json a", "verify --jobs 0 a", "verify --jobs x a",
                        "verify --jobs 99999999999999999999999 a", "verify --course a", "likeness a", "pack a",
                        "verify --salt-file long a", "verify --salt-file gone a", "info --salt-file= a"):
            self.assertEqual(self.run_tool(*command.split(), status=2), b"", command)
            self.assertNotEqual(self.error, "")
        self.run_tool("what", "a", status=2)
        self.assertIn("what: no such verb", self.error)
        for verb in ("", "info", "verify", "simulate", "dump", "pack", "key", "likeness", *exporting):
            verb = verb.split(" ")[0]
            self.assertIn(f"quorvane-replay {verb}".encode(), self.run_tool(*verb.split(), "--help"))
            with open("/dev/full", "wb") as full:
                command = [executable, *verb.split(), "--help"]
                self.assertEqual(subprocess.call(command, stdout=full, stderr=full), 2, verb)
        error = json.loads(self.run_tool("info", "--json", "gone", status=2))
        self.assertEqual(error, {"file": "gone", "error": "No such file or directory"})
        self.assertRegex(self.run_tool("--version"), rb"^quorvane-replay \d+\.\d+\.\d+\n$")

    def test_hostile_names(self):
        # What a terminal obeys, or what turns a line around, is shown and not done.
        name = "\u202eA\u009b1m\U000e0041".encode()
        self.write("a", image_of([(SEED, 9), (TICK, 0)], name=name))
        line = self.run_tool("info", "--json", "a")
        self.assertEqual(json.loads(line)["name"], name.decode())
        self.assertIn(rb'"\u202eA\u009b1m\udb40\udc41"', line)
        self.assertIn(rb"\xe2\x80\xaeA\xc2\x9b1m\xf3\xa0\x81\x81]", self.run_tool("info", "a"))
        self.run_tool("verify", stdin=b"a\0gone\0", status=2)
        self.assertIn("a\\x00gone\\x00: it has a zero byte in its name", self.error)

    def test_scarcity(self):
        # Neither a missing list nor a lack of room in the system is a verdict on a file.
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        tool = self.start("verify", stdin=folder)
        self.assertRegex(tool.communicate()[1], b"^quorvane-replay: standard input: .*directory\n$")
        self.assertEqual(tool.returncode, 2)
        files = [f"games/{row['file']}" for row in index_of("games")][:20]
        limited = subprocess.run(["sh", "-c", 'ulimit -n 12; exec "$0" "$@"', executable, "verify", "--jobs",
                                  "12", *files], cwd=self.folder, capture_output=True)
        self.assertEqual(limited.stdout, self.run_tool("verify", *files, status=1))
        if b"__asan_init" in executable.read_bytes():
            return  # it takes far more memory than any limit that would be of use here

        def with_memory(kilobytes, *command):
            return subprocess.run(["sh", "-c", f'ulimit -v {kilobytes}; exec "$0" "$@"', executable, *command],
                                  cwd=self.folder, capture_output=True)
        # Enough to start with and for anything small, not for a file of 2 MB.
        enough = 500 + next(kilobytes for kilobytes in range(500, 100000, 500)
                            if with_memory(kilobytes, "--version").returncode == 0)
        self.write("large", golden("0015-adv-empty.rpl")[:71] + struct.pack(">I", 2000000) + b"\5\5" * 1000000)
        for verb in ("info", "simulate", "verify", "key", "dump"):
            limited = with_memory(enough, verb, "large")
            self.assertEqual((limited.returncode, limited.stderr.count(b"\n")), (2, 1), limited)
            self.assertIn(b"not enough", limited.stderr)

    def test_crash(self):
        # A judging process that dies costs its own file's verdict only.
        count, game = 60, "games/0036-ace-chain.rpl"
        tool = self.start("verify", "--jobs", "1", *[game] * count)
        children = pathlib.Path(f"/proc/{tool.pid}/task/{tool.pid}/children")
        killed = set()
        while tool.poll() is None and len(killed) < 5:
            for child in set(children.read_text().split()) - killed:
                killed.add(child)
                try:
                    os.kill(int(child), signal.SIGKILL)
                except ProcessLookupError:
                    pass
        output, error = tool.communicate()
        *lines, summary = output.splitlines()
        verdicts = collections.Counter(line.split(b"\t")[0] for line in lines)
        crashed = verdicts[b"crashed"]  # less than were killed, if one was quicker
        self.assertEqual(verdicts, {b"crashed": crashed, b"bad-signature": count - crashed})
        self.assertTrue(0 < crashed <= len(killed), (crashed, killed))
        for line in lines:
            self.assertRegex(line, b"^bad-signature\t|^crashed\t" + game.encode() + b"\t.*Killed$")
        self.assertRegex(summary, b"^summary\t")
        self.assertEqual((tool.returncode, error.count(b"\n")), (1, crashed))

    def test_deaf_to_children(self):
        """As many daemons start their children."""
        ignoring = {"preexec_fn": lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN)}
        output, _ = self.start("verify", "games/0015-adv-empty.rpl", "salt", **ignoring).communicate()
        self.assertRegex(output, b"^impossible\t.*\nbroken\t.*\nsummary")

    def test_export(self):
        # Pictures of a game, drawn without a display by the game's own code.
        if not executable.with_name("quorvane-export").exists():
            self.skipTest("built without quorvane-export: EGL or libpng is missing")
        game = ("export", "games/0009-ace-other.rpl", "--assets", str(GOLDEN.parent.parent))
        seconds = ("--size", "320x240", "--fps", "1", "--from", "10", "--to", "12")
        self.run_tool(*game, *seconds, "--frames", "pictures")
        pictures = sorted((self.folder / "pictures").iterdir())
        self.assertEqual([p.name for p in pictures], [f"frame-00000{i}.png" for i in range(3)])
        for picture in pictures:
            data = picture.read_bytes()
            self.assertEqual(data[:24], b"\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\1\x40\0\0\0\xf0")
            self.assertGreater(len(data), 30000)  # an empty picture has not a tenth of that
        self.assertEqual(len({picture.read_bytes() for picture in pictures}), 3)
        for wrong, status in ((("--frames", "p", "--video", "v"), 2), (("--frames", "p", "--to", "x"), 2),
                              (("--frames", "p", "--from", "3", "--to", "1"), 2), (("--what",), 2),
                              (("--video", "v.mp4", "--size", "63x48"), 2), (("--frames", "pictures"), 1),
                              (("--frames", "p", "--size", "8193x16"), 2), (("--frames", "p", "--size", "16x15"), 2),
                              (("--frames", "/dev/null/p"), 1), (("--frames", "p", "--assets", "gone"), 1)):
            self.run_tool(*game, *wrong, status=status)
            self.assertRegex(self.error, "^quorvane-replay: ")
        # A picture shows the step that is made at its own time; the one of the last step is the last.
        self.write("short", image_of([(SEED, 1), (TICK, 0), (TICK, 1000)]))
        self.run_tool("export", "short", *game[2:], "--frames", "short-frames", "--size", "16x16", "--fps", "1")
        self.assertEqual(len(list((self.folder / "short-frames").iterdir())), 2)
        self.run_tool(*game, "--frames", "wide", "--size", "8192x16", "--to", "0")
        self.assertEqual((self.folder / "wide/frame-000000.png").read_bytes()[16:24], b"\0\0\x20\0\0\0\0\x10")
        # Whatever a log asks for, a game has an end, and so has the patience of who starts this.
        self.write("slow", image_of([(SEED, 1)] + [(TICK, 0)] * 1000000))
        self.run_tool("export", "slow", "--assets", str(GOLDEN.parent.parent), "--frames", "slow-frames",
                      "--size", "16x16", "--fps", "1")
        for stop in (signal.SIGINT, signal.SIGTERM):
            folder = self.folder / f"stopped-{stop}"
            tool = self.start(*game, "--frames", folder.name, "--size", "320x240")
            while not (folder / "frame-000001.png").exists():
                self.assertIsNone(tool.poll())
                time.sleep(0.02)
            tool.send_signal(stop)
            tool.communicate()
            self.assertEqual(tool.returncode, -stop)

    def test_video(self):
        if not (executable.with_name("quorvane-export").exists() and shutil.which("ffmpeg")):
            self.skipTest("built without quorvane-export, or ffmpeg is missing")
        command = ("export", "games/0009-ace-other.rpl", "--assets", str(GOLDEN.parent.parent), "--size", "64x48",
                   "--fps", "5", "--from", "10", "--to", "11", "--video", "video.y4m")
        video = self.folder / "video.y4m"
        video.write_bytes(b"kept")
        self.run_tool(*command, status=1)
        self.assertIn("--force overwrites", self.error)
        self.assertEqual(video.read_bytes(), b"kept")
        self.run_tool(*command, "--force")
        size = video.stat().st_size
        _, *pictures = video.read_bytes().split(b"FRAME\n")  # not compressed: brightness and two colours
        self.assertEqual([len(picture) for picture in pictures], [64 * 48 * 3 // 2] * 6)
        self.assertEqual(len(set(pictures)), 6)
        for start in (lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN), lambda: os.close(0)):
            video.unlink()
            tool = self.start(*command, preexec_fn=start)
            self.assertEqual((tool.communicate(), tool.returncode), ((b"", b""), 0))
            self.assertEqual(video.stat().st_size, size)
        tool = self.start(*command, "--video", "video.what")  # ffmpeg knows no such format
        self.assertIn(b"ffmpeg", tool.communicate()[1])
        self.assertEqual(tool.returncode, 1)

    def test_progress(self):
        # Verdicts come while names still do; a long run shows a bar on a terminal.
        terminal, tool_end = pty.openpty()
        tool = self.start("verify", stderr=tool_end)
        for _ in range(2):
            tool.stdin.write(b"games/0047-circler.rpl\n")
            tool.stdin.flush()
            self.assertRegex(tool.stdout.readline(), b"^bad-signature\tgames/0047")
        self.assertRegex(os.read(terminal, 100), rb"^\r\[#+ *\] 2 of 2$")
        self.assertRegex(tool.communicate()[0], b"^summary\t2 files\t")


if __name__ == "__main__":
    executable = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
