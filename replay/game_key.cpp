// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "game_key.h"

#include <iterator>

#include "game.h"
#include "replay.h"

game_key_watch::game_key_watch(uint32_t seed) : bytes(4) { replay_write_32(bytes.data(), seed); }

void game_key_watch::take(const game& game) {
    uint8_t step[5] = {};
    replay_write_32(step, static_cast<uint32_t>(game.time - game.previous_time));
    for (int32_t slot = 0; slot < KEY_SPECIAL; ++slot) {  // that one is read by nobody
        step[4] = static_cast<uint8_t>(step[4] | game.key_state.keys[slot] << slot);
    }
    bytes.insert(bytes.end(), std::begin(step), std::end(step));
}
