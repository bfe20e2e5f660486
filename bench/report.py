#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

"""Makes docs/performance.md of what bench/run has measured:  report.py RESULTS BUILD > FILE"""

import datetime
import json
import os
import pathlib
import re
import shlex
import statistics
import subprocess
import sys

results, build = (pathlib.Path(argument) for argument in sys.argv[1:])


def medians(name):
    """Of a Google Benchmark run: the medians of each benchmark, by its name."""
    rows = {}
    for row in json.loads((results / name).read_text())["benchmarks"]:
        if row.get("error_occurred"):
            sys.exit(f"{name}: {row['name']}: {row['error_message']}")
        if row.get("aggregate_name", "median") == "median":
            key = re.sub(r"/(iterations|repeats|min_time):[\d.]+|/process_time|/real_time", "", row["run_name"])
            rows[key] = row
    return dict(sorted(rows.items(), key=lambda row: [int(n) for n in re.findall(r"\d+", row[0])]))


def table(heads, rows):
    aligned = ["---"] + ["---:"] * (len(heads) - 1)
    lines = [heads, aligned, *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines) + "\n"


def percentile(values, share):
    return sorted(values)[min(len(values) - 1, int(share * len(values)))]


def nanoseconds(row, key="cpu_time"):
    return row[key] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]


def spread(values):
    return f"{min(values):,.0f} to {max(values):,.0f}"


# --- The machine ------------------------------------------------------------------------------


def machine():
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    command = next(
        entry["command"]
        for entry in json.loads((build / "compile_commands.json").read_text())
        if entry["file"].endswith("/src/game.cpp")
    )
    words = shlex.split(command)
    version = subprocess.run([words[0], "--version"], capture_output=True, text=True, check=True)
    flags = [w for w in words if re.match(r"-([Ofm]|std)", w) and "prefix-map" not in w]
    loads = [(results / f"load-{when}").read_text().split()[0] for when in ("before", "after")]
    return table(
        ["Machine", ""],
        [
            ["Processor", cpu.group(1) if cpu else os.uname().machine],
            ["Cores", os.cpu_count()],
            ["System", f"{os.uname().sysname} {os.uname().machine}"],
            ["Compiler", version.stdout.splitlines()[0]],
            ["Flags", f"`{' '.join(flags)}`"],
            ["Date", datetime.date.today()],
            ["Load average before and after", " and ".join(loads)],
        ],
    ).replace("---:", "---")


# --- Sections ---------------------------------------------------------------------------------


def games(sim):
    rows = []
    for name, row in sim.items():
        if name.startswith("play_"):
            rows.append(
                [
                    row["label"],
                    f"{row['s_per_step'] * 1e6:.2f}",
                    f"{row['times_real']:,.0f}",
                    f"{row['log_bytes_per_frame']:.2f}",
                ]
            )
    return table(["Game", "µs a step", "times real time", "log bytes a frame"], rows)


def peer():
    runs = {}
    for line in (results / "peer.jsonl").read_text().splitlines():
        run = json.loads(line)
        runs.setdefault(run["name"], []).append(run)

    # A signature that is filler makes the status 1; anything else means that nothing was measured.
    ours = [run for name, each in runs.items() if not name.startswith("peer") for run in each]
    if any(run["status"] != 1 for run in ours):
        sys.exit("quorvane-replay did not judge the games as it should")

    def median(name, key):
        return statistics.median(run[key] for run in runs[name])

    def rate(name, key):
        return runs[name][0]["played_s"] / median(name, key)

    titles = {
        "peer long": "Chocolate Doom, a demo of an hour",
        "peer one": "Chocolate Doom, a demo of three minutes",
        "many, one job": "quorvane-replay verify --jobs 1, 150 games",
        "many, a job a core": "quorvane-replay verify, 150 games",
    }
    rows = []
    for name in sorted(runs, key=lambda name: -runs[name][0]["played_s"]):
        each = [run["played_s"] / run["cpu_s"] for run in runs[name]]
        rows.append(
            [
                titles.get(name, f"quorvane-replay verify {name.removeprefix('one ')}"),
                f"{runs[name][0]['played_s']:,.0f}",
                f"{median(name, 'cpu_s'):.3f}",
                f"{median(name, 'wall_s'):.3f}",
                f"{median(name, 'peak_mib'):.1f}",
                f"{rate(name, 'cpu_s'):,.0f}",
                spread(each),
            ]
        )
    text = table(
        ["Run", "s of play", "CPU s", "wall s", "peak MiB", "times real time a CPU s", "range"],
        rows,
    )
    cores = median("many, one job", "wall_s") / median("many, a job a core", "wall_s")
    facts = [f"All {os.cpu_count()} cores are {cores:.2f} times as fast as one job."]
    if "peer long" in runs:
        ours = rate("many, one job", "cpu_s")
        one = [name for name in runs if name.startswith("one ")]
        slowest = max(one, key=lambda name: median(name, "cpu_s"))
        facts += [
            f"On one core we re-simulate {ours / rate('peer long', 'cpu_s'):.1f} times as much play a "
            "second as the peer in its long run.",
            f"A whole check of one game, process start included, takes us at most "
            f"{median(slowest, 'cpu_s') / median('peer one', 'cpu_s'):.2f} of its processor time and "
            f"{median(slowest, 'peak_mib') / median('peer one', 'peak_mib'):.2f} of its memory.",
        ]
    else:
        facts.append("The peer was not installed, or did not run its demo.")
    return text + "\n" + "\n".join(f"- {fact}" for fact in facts) + "\n"


def steps(sim):
    cost = {}
    for name, row in sim.items():
        if match := re.fullmatch(r"step/enemies:(\d+)/shots:(\d+)", name):
            cost[int(match[1]), int(match[2])] = nanoseconds(row)
    enemies, shots = (sorted({key[i] for key in cost}) for i in (0, 1))
    return table(
        ["Enemies \\ shots"] + shots,
        [[e] + [f"{cost[e, s] / 1000:.2f}" for s in shots] for e in enemies],
    )


def recordings(sim):
    titles = {
        "load": "the game's reader",
        "inspect": "quorvane-replay's reader, from the file",
        "pack": "writer, with the signature",
    }
    rows = []
    for name, title in titles.items():
        pair = [sim[f"{name}/large:{large}"] for large in (0, 1)]
        rows.append([title] + [f"{row['bytes_per_second'] / 1e6:,.0f}" for row in pair])
    sizes = [int(sim[f"load/large:{large}"]["label"]) for large in (0, 1)]
    return table(["MB/s of file"] + [f"{size:,} bytes" for size in sizes], rows)


def arithmetic(sim):
    rows = []
    for name in sorted(sim):
        if match := re.fullmatch(r"arithmetic/(\w+)_own", name):
            own, other = (
                1e9 / sim[f"arithmetic/{match[1]}_{which}"]["items_per_second"]
                for which in ("own", "platform")
            )
            rows.append([f"`{match[1]}`", f"{own:.1f}", f"{other:.1f}", f"{other / own:.2f}"])
    return table(["", "own, ns", "platform's, ns", "platform's / own"], rows)


def drawing(draw):
    rows = []
    for name, row in draw.items():
        title = row.get("label") or f"empty, {name.split(':')[1]} enemy slots"
        counts = [f"{row[key]:g}" for key in ("gl_calls", "matrix_reads", "heap_requests")]
        rows.append(
            [title, f"{row.get('enemies', 0):.0f}", f"{row.get('shots', 0):.0f}"]
            + counts
            + [f"{nanoseconds(row) / 1000:.1f}"]
        )
    heads = ["Frame", "enemies", "shots", "GL calls", "matrix reads", "allocations"]
    return table([*heads, "µs of our code"], rows)


def real_gl(gl):
    rows = []
    for name, row in gl.items():
        _, width, height = name.split("/")
        ms = nanoseconds(row, "real_time") / 1e6
        rows.append([f"{width} × {height}", f"{ms:.1f}", f"{1000 / ms:.0f}"])
    return next(iter(gl.values()))["label"], table(["Size", "ms a frame", "frames a second"], rows)


def allocations(sim):
    row = sim["step_allocations"]
    events = {
        "player_shots": "shots of the player",
        "kills": "kills",
        "shield_changes": "changes of the shield",
        "spawns": "new enemies",
        "pool_growths": "growths of the shot pool",
    }
    rows = [
        [title, f"{row.get(key, 0):,.0f}", 1 if key == "pool_growths" else 2]
        for key, title in events.items()
    ]
    return (
        table(["What happened", "how often", "allocations each"], rows)
        + f"\nOf {row['steps']:,.0f} steps {row['steps_without']:,.0f} asked for nothing. "
        f"The table leaves {row['unexplained']:,.0f} allocations unexplained.\n"
    )


def start_up():
    runs = [json.loads(line) for line in (results / "start-up.jsonl").read_text().splitlines()]
    if any(run["status"] != 0 for run in runs):
        sys.exit("the program did not start")
    run, bare = ({key: statistics.median(run[key] for run in part) for key in runs[0]}
                 for part in (runs[::2], runs[1::2]))
    frames = (results / "frames.txt").read_text().splitlines()
    played = int(frames[-1].split()[1]) / 1024
    return table(
        ["The program, 800 × 600", ""],
        [
            ["start to first menu frame, wall s", f"{run['wall_s']:.3f}"],
            ["of that processor time, s", f"{run['cpu_s']:.3f}"],
            ["a bare program of the same libraries that opens the same window and decodes the same files, wall s", f"{bare['wall_s']:.3f}"],
            ["the start is so many times as long", f"{run['wall_s'] / bare['wall_s']:.2f}"],
            ["peak memory at the menu, MiB", f"{run['peak_mib']:.0f}"],
            ["peak memory after a minute of games (320 × 240), MiB", f"{played:.0f}"],
        ],
    )


def pacing():
    frames = []
    for line in (results / "frames.txt").read_text().splitlines()[:-1]:
        number, read, ticks, slept, before, after, shown = map(int, line.split())
        frames.append((number, read, ticks + slept, ticks, max(after, read) - read, slept, shown))
    # Each interval as the sum of what made it: steps of the due times, the place of the reading
    # within its millisecond, the sleep beyond what was asked, and the work behind the sleep.
    intervals = []
    parts = {"clock": [], "sleep": [], "work": []}
    late = 0
    for old, new in zip(frames, frames[1:]):
        if new[0] != old[0] + 1:
            continue  # another game
        sums = {}
        for sign, (_, read, due, ticks, asleep, slept, shown) in ((-1, old), (1, new)):
            values = {
                "clock": due + (read / 1e6 - ticks),
                "sleep": asleep / 1e6 - slept,
                "work": (shown - read - asleep) / 1e6,
            }
            for key, value in values.items():
                sums[key] = sums.get(key, 0) + sign * value
        interval = (new[6] - old[6]) / 1e6
        assert abs(sum(sums.values()) - interval) < 1e-3
        intervals.append(interval)
        late += new[5] == 0
        for key, value in sums.items():
            parts[key].append(value)
    mean = statistics.fmean(intervals)
    variance = statistics.pvariance(intervals)

    def share(key):
        part_mean = statistics.fmean(parts[key])
        together = (
            (a - part_mean) * (b - mean) for a, b in zip(parts[key], intervals, strict=True)
        )
        return statistics.fmean(together) / variance

    clock_mean = statistics.fmean(parts["clock"])
    errors = [abs(value - clock_mean) for value in parts["clock"]]
    return table(
        ["Frames of live games, 320 × 240", ""],
        [
            ["intervals measured", f"{len(intervals):,} in {sum(intervals) / 1000:.0f} s"],
            ["median, ms", f"{statistics.median(intervals):.2f}"],
            ["1st and 99th percentile, ms", " and ".join(
                f"{percentile(intervals, p):.2f}" for p in (0.01, 0.99))],
            ["worst, ms", f"{max(intervals):.2f}"],
            ["mean, ms", f"{mean:.3f}"],
            ["standard deviation, ms", f"{variance ** 0.5:.3f}"],
            ["of its square, from the limiter's millisecond clock", f"{share('clock'):.0%}"],
            ["… from sleeps that ended late", f"{share('sleep'):.0%}"],
            ["… from stepping, drawing and showing", f"{share('work'):.0%}"],
            ["the clock's part of an interval: median and worst error, ms",
             f"{statistics.median(errors):.2f} and {max(errors):.2f}"],
            ["frames that came too late to sleep", f"{late:,}"],
        ],
    )


sim, draw, gl = (medians(f"{name}.json") for name in ("sim", "draw", "gl"))
renderer, gl_table = real_gl(gl)
print(f"""<!--
SPDX-FileCopyrightText: The Quorvane project
SPDX-License-Identifier: MIT

Written by bench/run; edit bench/report.py instead.
-->

# Performance

What things cost, measured by `bench/run` on one machine. Run it yourself for yours: it installs or
names what it needs, builds in `build-bench/` and writes this page anew.

Figures are medians of several runs. Machines are noisy, shared ones most of all: compare figures of
one run only, and trust ratios more than times. Nothing here is a test, and no test looks at a time.
All times are processor time of one thread unless they say wall.

{machine()}
## Whole games

Recorded games of more than two minutes, each with hundreds of enemies, and all recordings in
`tests/golden/games` that a person could have made. They are played as `quorvane-replay` plays them,
without stars and pictures. Twenty milliseconds a step are real time. A usual frame takes two bytes
in a recording; the rest are keys, and frames of 256 ms and more.

{games(sim)}
## Checking recordings, beside Chocolate Doom

`bench/peer.sh` has both programs do the same kind of work in turn: play a recording again without
drawing or sound, process start included. Chocolate Doom runs `-timedemo -nodraw` with Freedoom's
first map; the demos are made by the script. Ours are the three long games above, one at a time and
fifty times each in one run. Their signatures are filler, so that each verdict is "bad-signature"; the work is
the same. The range is of the single runs.

{peer()}
## A step, by what there is to do

Microseconds for one step with so many living enemies and shots in flight, half of them the player's
and a quarter in the hole's pull. Games hold up to about 40 enemies and 100 shots.

{steps(sim)}
## Memory in play

What the steps of the three long games ask of the heap. Recording doubles its log now and then
besides; drawing asks for nothing (below).

{allocations(sim)}
## Recordings

Megabytes (10^6 bytes) of file a second: a real log, and one that holds its
events over and over. Writing is mostly the signature's SHA-1.

{recordings(sim)}
## Arithmetic

Our routines give the same bits everywhere; the platform's need not. Nanoseconds a call over random
arguments as games have them. `math_distance` stands against `std::hypot`, `math_vector_angle` and
`math_wrap` against `std::atan2` and `std::fmod` with the same range of results, and the generator of
random numbers against `std::mt19937`.

{arithmetic(sim)}
## Drawing

Frames of the three long games at their fullest, drawn against an OpenGL that does nothing but count:
what is left is our own code.

{drawing(draw)}
The first of them on a real OpenGL, from the first call until the picture is on a virtual display, in
wall time. "{renderer}" draws with the processor.

{gl_table}
## Start and memory

The program on a virtual display, from its start until its first picture of the menu is shown.

{start_up()}
## Frame pacing

The real program at its 50 frames a second, in live games on a virtual display, in a window so small
that drawing is no limit. The time at which each frame was shown is noted from outside, and so is what
the frame limiter read and slept. An interval is the sum of three parts: the clock's (the limiter works
with whole milliseconds, so a frame is due up to one of them early or late, and every second it starts
anew from the millisecond at hand), the sleep's (the system wakes the program later than it asked), and
the work's (stepping, drawing and showing take longer in one frame than in the other). Their shares of
the variance add up to the whole.

{pacing()}""", end="")
