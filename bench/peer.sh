#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Checking recorded games without drawing, side by side with Chocolate Doom, which does the same
# kind of work:  bench/peer.sh BUILD_FOLDER OUT
# Writes a JSON object a line, with the name of what was run, the seconds of play in it, and what
# `measure` says. Rounds alternate between the programs, so that both meet the same noise. Without
# chocolate-doom and freedoom only our own lines are there.

set -euo pipefail
cd "$(dirname "$(dirname "$(readlink -f "$0")")")"
build=$(readlink -f "$1")
out=$(readlink -f "$2")

rounds=7
games=(0009-ace-other 0020-ace-same 0017-hoverer)
copies=50 # of each game in the long run
wad=/usr/share/games/doom/freedoom1.wad
PATH=$PATH:/usr/games

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
: >"$out"

# Demos of three minutes and of an hour, 35 tics a second: somebody who runs, turns and strafes
# about, shoots half of the time, and comes back whenever he has died.
write_demos() {
    python3 - "$scratch" <<'END'
import sys
for name, seconds in (("short", 180), ("long", 3600)):
    demo = bytearray([109, 2, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0])
    state, turn, strafe = 1, 0, 0
    for tic in range(35 * seconds):
        if tic % 35 == 0:
            state = (state * 1103515245 + 12345) % 2**31
            turn, strafe = (state >> 16) % 9 - 4, ((state >> 20) % 3 - 1) * 24
        buttons = (1 if tic % 70 < 35 else 0) | (2 if tic % 35 == 0 else 0)
        demo += bytes([50, strafe % 256, turn % 256, buttons])
    with open(f"{sys.argv[1]}/{name}.lmp", "wb") as file:
        file.write(demo + b"\x80")
END
    # Its default is to wait a second for a screen to settle.
    echo "startup_delay 0" >"$scratch/settings.cfg"
}

# Ends with status 255 after printing its own timing, which is in whole ticks of its clock.
doom() {
    note "$1" "$2" env HOME="$scratch" SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy \
        chocolate-doom -iwad "$wad" -extraconfig "$scratch/settings.cfg" -nodraw -nosound -nogui \
        -timedemo "$scratch/$3"
}

# note NAME PLAYED_SECONDS COMMAND...
note() {
    local name=$1 played=$2
    shift 2
    "$build/bench/measure" "$@" | sed "s/{/{\"name\": \"$name\", \"played_s\": $played, /" >>"$out"
}

verify() { note "$1" "$2" "$build/replay/quorvane-replay" verify "${@:3}"; }

# played NAMES...: seconds of play in these games
played() { for game in "$@"; do grep "^$game" tests/golden/games/index.tsv; done |
    awk -F '\t' '{ ms += $5 } END { print ms / 1000 }'; }

many=()
one_of_each=()
for game in "${games[@]}"; do
    one_of_each+=("tests/golden/games/$game.rpl")
done
for ((i = 0; i < copies; ++i)); do
    many+=("${one_of_each[@]}")
done
all_seconds=$(awk "BEGIN { print $copies * $(played "${games[@]}") }")

peer=
if command -v chocolate-doom >/dev/null && [ -f "$wad" ]; then
    peer=yes
    write_demos
    # It must have run the whole demo, or its figures mean nothing.
    (cd "$scratch" && HOME=$scratch SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy chocolate-doom \
        -iwad "$wad" -extraconfig settings.cfg -nodraw -nosound -nogui -timedemo "$scratch/long" \
        >messages 2>&1) || true
    if ! grep -q 'timed 126000 gametics' "$scratch/messages"; then
        echo "chocolate-doom did not run the demo; going on without it:" >&2
        tail -n 3 "$scratch/messages" >&2
        peer=
    fi
else
    echo "chocolate-doom or freedoom is not installed; measuring only ourselves." >&2
fi

# Ours must have played whole games, too: each to its own end.
"$build/replay/quorvane-replay" verify "${one_of_each[@]}" >"$scratch/verdicts" || true
if [ "$(grep -c 'bad-signature.*end=self' "$scratch/verdicts")" -ne "${#games[@]}" ]; then
    cat "$scratch/verdicts" >&2
    exit 1
fi

for ((round = 0; round < rounds; ++round)); do
    for game in "${games[@]}"; do
        verify "one $game" "$(played "$game")" "tests/golden/games/$game.rpl"
    done
    verify "many, one job" "$all_seconds" --jobs 1 "${many[@]}"
    verify "many, a job a core" "$all_seconds" "${many[@]}"
    if [ -n "$peer" ]; then
        doom "peer one" 180 short
        doom "peer long" 3600 long
    fi
done
