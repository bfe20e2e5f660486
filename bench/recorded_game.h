// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// A recorded game that can be played again and again, without its messages.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "assertion.h"
#include "enemy.h"
#include "game.h"
#include "input.h"
#include "replay.h"

// Of the recordings in tests/golden/games: full-length games with much going on.
inline constexpr const char* BUSY_GAMES[] = {"0009-ace-other", "0020-ace-same", "0017-hoverer"};

inline int32_t shots_in_flight(const game* game) {
    int32_t count = 0;
    for (int32_t i = 0; i < game->shot_count; ++i) {
        count += game->shots[i].active;
    }
    return count;
}

class recorded_game {
public:
    // Takes a name in tests/golden/games, seen from the project's root.
    explicit recorded_game(const std::string& name) : input(input_init(nullptr), input_destroy) {
        const std::string path = "tests/golden/games/" + name + ".rpl";
        const int32_t result = input_read_file(input->replay, path.c_str());
        assert(result == 0);
        input->is_replay = 1;
        restart();
    }

    void restart() {
        input->key_state = {};  // held keys outlive a reset
        input_reset(input.get());
        game.reset(game_init(input.get(), GAME_SHIP_COUNT, 1280, 720), game_destroy);
    }

    // The next recorded frame at once, whatever the clock says; false when there is none.
    bool step() {
        const int32_t delta = replay_next_tick(input->replay, input_replay_event_cb, input.get());
        if (delta < 0 || game_is_over(game.get()) != 0) {
            return false;
        }
        game_step(game.get(), game->time + delta);
        return true;
    }

    // Restarts and goes to the frame with the most ships and shots.
    void seek_busiest() {
        int32_t most = 0;
        int32_t busiest = 0;
        restart();
        while (step()) {
            const int32_t things = shots_in_flight(game.get()) + game->enemy_handler->alive_count;
            if (things > most) {
                most = things;
                busiest = game->time;
            }
        }
        for (restart(); game->time != busiest;) {
            step();
        }
    }

    std::shared_ptr<struct input> input;
    std::shared_ptr<struct game> game;
};
