// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What a game is lost to. The game itself keeps no note of it: it is read from what the last step
// changed, so the game has to be watched from step to step.

#pragma once

#include <cstdint>
#include <vector>

#include "game.h"

class loss_watch {
public:
    // Before each step but the first.
    void remember(const game& game);

    // After the step in which the game became over: "hole", "edge", "hull" (an enemy's),
    // "enemy-shot", "own-shot", or "shot" if its place in the pool is taken again already.
    const char* cause(const game& game) const;

private:
    vector place = {0.0, -2.0};  // of the player, where it starts
    std::vector<uint8_t> in_flight;
};
