// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Recorded games to measure with, played again without waiting.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "assertion.h"
#include "enemy.h"
#include "playback.h"
#include "recording_file.h"

// Of the recordings in tests/golden/games: full-length games with much going on.
inline constexpr const char* BUSY_GAMES[] = {"0009-ace-other", "0020-ace-same", "0017-hoverer"};

inline int32_t shots_in_flight(const game* game) {
    int32_t count = 0;
    for (int32_t i = 0; i < game->shot_count; ++i) {
        count += game->shots[i].active;
    }
    return count;
}

// The bytes of a recording in tests/golden/games, seen from the project's root.
inline std::vector<uint8_t> recorded_game(const std::string& name) {
    std::vector<uint8_t> bytes;
    std::string reason;
    const load_status status =
        recording_file_read("tests/golden/games/" + name + ".rpl", &bytes, &reason);
    assert(status == LOAD_OK);
    return bytes;
}

// A game at its frame with the most ships and shots, for a window of the given size.
inline playback busiest_frame(std::span<const uint8_t> bytes, int32_t width, int32_t height) {
    int32_t most = 0;
    uint64_t busiest = 0;
    for (playback run(bytes); run.step();) {
        const int32_t things =
            shots_in_flight(run.game.get()) + run.game->enemy_handler->alive_count;
        if (things > most) {
            most = things;
            busiest = run.frames;
        }
    }
    playback run(bytes, width, height);
    while (run.frames != busiest && run.step()) {
    }
    return run;
}
