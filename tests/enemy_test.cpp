// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Thresholds of waves and enemy fire, and the chain rule. Recorded games pin draws and paths.

#include "enemy.h"

#include <climits>

#include "sim_support.h"

namespace {

struct enemy_test : world_test {
    // One step of the schedule; returns the numbers drawn.
    uint32_t spawn(int32_t time) {
        const uint32_t before = genrand_count();
        enemy_spawn_ships(&waves, time, g.get(), in.get(), g->players, GAME_SHIP_COUNT);
        return genrand_count() - before;
    }
};

TEST_F(enemy_test, draws_depend_on_difficulty_cap_and_taken_groups) {
    struct {
        int32_t score, time, alive;
        uint32_t draws;  // 5 for a wave, 6 with its size, which is open above difficulty 0.4
    } const cases[] = {{0, 75000, 0, 5},  {0, 75001, 0, 6},  {1600, 0, 0, 5},  {1601, 0, 0, 6},
                       {0, 0, 35, 5},     {0, 0, 36, 0},     {8000, 0, 95, 6}, {8000, 0, 96, 0},
                       {80000, 0, 99, 6}, {80000, 0, 100, 0}};
    for (const auto& c : cases) {
        player.score = c.score;
        waves = {c.alive, 0, -1, 0, {}};
        EXPECT_EQ(spawn(c.time), c.draws) << c.score << " points, " << c.time << " ms, " << c.alive;
    }
}

TEST_F(enemy_test, fire_comes_after_more_than_the_interval_at_any_time) {
    ship& enemy = g->ships[0];
    enemy.last_shot_time = -5699;
    waves.groups[0].shot_interval = 6699;
    for (const int32_t time : {1000, INT_MAX, 1001}) {
        enemy_shoot(&waves, time, g.get(), &enemy);
        EXPECT_EQ(sounds, numbers(time == 1000 ? 0 : 1, SOUND_SHOOT_ENEMY)) << time;
    }
}

TEST_F(enemy_test, chains_score_by_enemy_and_shot_colour) {
    struct {
        std::string kills;  // enemy's and shot's colour, b or r
        int32_t score, shown;
        size_t chains;
    } const cases[] = {{"bb bb", 27, 2, 0},        {"bb bb bb", 324, 3, 1},
                       {"br br br", 702, 3, 1},    {"bb bb br bb", 657, 1, 1},
                       {"bb bb rr", 27, 0, 0},     {"bb rr rr bb rb", 45, 1, 0},
                       {"rr rr rr bb", 333, 1, 1}, {"rr rr rr rr rr rr", 648, 3, 2}};
    for (const auto& c : cases) {
        player.score = player.chain_count = 0;
        sounds.clear();
        for (size_t i = 0; i < c.kills.size(); i += 3) {
            g->ships[0].color = c.kills[i] == 'r';
            enemy_kill_handle(&waves, g->ships, &player, 0, COLOR_RED, 0);  // lost, not shot
            enemy_kill_handle(&waves, g->ships, &player, 1, c.kills[i + 1] == 'r', 777);
        }
        EXPECT_EQ(cells_of(player.score, player.chain_shown), cells_of(c.score, c.shown))
            << c.kills;
        EXPECT_EQ(sounds, numbers(c.chains, SOUND_CHAIN)) << c.kills;
    }
    EXPECT_EQ(player.chain_animation->start_time, 777);
}

}  // namespace
