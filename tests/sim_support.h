// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What the tests of simulation and recording share: logged services, a game to arrange, recordings
// made from a list of events, and tables read from files.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "animation.h"
#include "enemy.h"
#include "game.h"
#include "headless.h"
#include "input.h"
#include "mt19937.h"
#include "playback.h"
#include "replay.h"
#include "sound.h"

using numbers = std::vector<uint32_t>;
using strings = std::vector<std::string>;

// Each test starts with silent services at clock 1 ms, which log what they are asked.
struct sim_test : testing::Test {
    sim_test();
    ~sim_test() override;

    numbers sounds;
    numbers delays;
};

// A live game to arrange: nothing moves until a test says so.
struct world_test : sim_test {
    world_test() { g->radius = 10.0; }

    std::shared_ptr<input> in{input_init(nullptr), input_destroy};
    std::shared_ptr<game> g{game_init(in.get(), GAME_SHIP_COUNT, 800, 600), game_destroy};
    ship& player = g->players[0];
    enemy_handler& waves = *g->enemy_handler;
};

// Lines of a text file, split at `separator`; no lines if it cannot be read.
std::vector<strings> read_table(const std::string& path, char separator);

std::string hex_of(uint64_t value);  // 16 digits
std::string bits_of(double value);   // the same of its bits, or "nan"

template <typename... Values>
strings cells_of(const Values&... values) {
    return {(std::ostringstream() << values).str()...};
}
