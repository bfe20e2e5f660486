// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What recorded games hardly ever meet: exact limits, deaths with their sounds, and broken
// preconditions.

#include "game.h"

#include <cmath>
#include <functional>
#include <span>
#include <tuple>

#include "loss.h"
#include "sim_support.h"

namespace {

double above(double x) { return std::nextafter(x, 100.0); }
double below(double x) { return std::nextafter(x, 0.0); }

struct game_test : world_test {
    // A living player at (0, -2) without points in a running game, and no sound heard.
    void start_over() {
        sounds.clear();
        player.alive = 1;
        player.score = player.chain_count = g->over = 0;
        player.position = {0, -2};
    }

    shot& put_shot(vector position, int32_t age, int32_t from_enemy, int32_t color) {
        shot& shot = g->shots[game_find_free_shot(g.get())];
        return shot = {position, {}, age, nullptr, 0.0, from_enemy, color, 1};
    }
};

TEST_F(game_test, player_is_lost_inside_the_hole_and_outside_the_field) {
    const std::pair<double, bool> cases[] = {
        {1.0, false}, {below(1.0), true}, {9.0, false}, {above(9.0), true}};
    g->radius = 9.0;
    g->time = 20;
    for (const auto& [x, lost] : cases) {
        start_over();
        player.position = {x, 0};
        player.velocity = {0, 1};
        game_update_ship(g.get(), &player);
        EXPECT_EQ(std::tuple(player.alive, g->over), std::tuple(lost ? 0 : 1, lost ? 1 : 0)) << x;
        EXPECT_EQ(sounds, numbers(lost ? 1 : 0, SOUND_GAME_OVER)) << x;
        EXPECT_EQ(animation_is_looping(player.animation), 1) << "it keeps its sprite";
        EXPECT_EQ(player.position.y, 0.02) << "and moves on";
    }
}

// At the rim of the hole, where no enemy gets: nobody plays for longer.
TEST_F(game_test, edge_comes_to_the_hole) {
    start_over();
    player.position = {0, -1};
    int32_t time = 0;
    while (g->over == 0 && time < GAME_DURATION) {
        game_step(g.get(), time += 20);
        for (ship& enemy : std::span(g->ships, size_t(g->ship_count))) {
            enemy.alive = 0;
        }
        for (shot& shot : std::span(g->shots, size_t(g->shot_count))) {
            if (shot.active == 1) {
                game_remove_shot(g.get(), &shot);
            }
        }
    }
    EXPECT_EQ(time, 135020);
}

TEST_F(game_test, shots_are_pulled_swallowed_and_lost) {
    struct {
        double x;
        int32_t active;
        double speed;  // towards the hole, after 20 ms
    } const cases[] = {{1.0, 0, 0},    {above(1.0), 1, 0.8}, {2.0, 1, 0.4}, {above(2.0), 1, 0.48},
                       {4.0, 1, 0.24}, {above(4.0), 1, 0},   {15.0, 1, 0},  {above(15.0), 0, 0}};
    g->time = 20;
    for (const auto& c : cases) {
        shot& shot = put_shot({c.x, 0}, 0, 1, COLOR_BLUE);
        game_update_shot(g.get(), &shot);
        EXPECT_EQ(shot.active, c.active) << c.x;
        EXPECT_NEAR(shot.velocity.x, -c.speed, 1e-12) << c.x;
    }
}

TEST_F(game_test, shots_are_absorbed_hit_or_pass_the_player) {
    enum { OWN, ENEMY };
    enum { BLUE, RED };
    const numbers ABSORBED = {SOUND_SHIELD_HIT};
    const numbers HITS = {SOUND_GAME_OVER};
    struct {
        double distance;
        int32_t age, from, color;
        numbers sounds;
    } const cases[] = {{0.5, 201, ENEMY, BLUE, {}},        {below(0.5), 201, ENEMY, BLUE, ABSORBED},
                       {0.1, 200, ENEMY, BLUE, {}},        {0.1, 201, ENEMY, BLUE, ABSORBED},
                       {0.2, 201, ENEMY, RED, {}},         {below(0.2), 201, ENEMY, RED, HITS},
                       {0.1, 200, ENEMY, RED, {}},         {0.2, 201, OWN, BLUE, {}},
                       {below(0.2), 201, OWN, BLUE, HITS}, {0.1, 200, OWN, RED, {}}};
    loss_watch loss;
    for (size_t i = 0; i < std::size(cases); ++i) {
        start_over();
        shot& shot = put_shot({cases[i].distance, -2}, cases[i].age, cases[i].from, cases[i].color);
        loss.remember(*g);
        game_update_ship(g.get(), &player);
        EXPECT_EQ(sounds, cases[i].sounds) << i;
        if (sounds == HITS) {
            EXPECT_STREQ(loss.cause(*g), cases[i].from == OWN ? "own-shot" : "enemy-shot") << i;
        }
        EXPECT_EQ(player.score, sounds == ABSORBED ? 15 : 0) << i;
        EXPECT_EQ(player.alive, sounds == HITS ? 0 : 1) << i;
        EXPECT_EQ(g->over, 1 - player.alive) << i;
        EXPECT_EQ(shot.active, sounds.empty() ? 1 : 0) << i;
        EXPECT_EQ(player.shield_flash->start_time == g->time, sounds == ABSORBED) << i;
        g->time = ++g->previous_time;
        shot.active = 0;
    }

    start_over();  // several are absorbed in one step, but none behind the one that hits
    for (const int32_t from : {ENEMY, OWN, ENEMY}) {
        put_shot({0.1, -2}, 201, from, BLUE);
    }
    loss.remember(*g);
    game_update_ship(g.get(), &player);
    EXPECT_EQ(sounds, (numbers{SOUND_SHIELD_HIT, SOUND_GAME_OVER}));
    EXPECT_STREQ(loss.cause(*g), "own-shot") << "and not the one that was absorbed";
}

TEST_F(game_test, enemies_die_ram_and_are_shot) {
    struct {
        vector position;
        double shot_distance;  // 99: no shot near
        int32_t from_enemy, shot_color, alive, over;
        numbers sounds;
        int32_t score;
    } const cases[] = {{{1.0, 0}, 99, 0, 0, 1, 0, {}, 0},
                       {{below(1.0), 0}, 99, 0, 0, 0, 0, {SOUND_EXPLODE}, 0},
                       {{15.0, 0}, 99, 0, 0, 1, 0, {}, 0},
                       {{above(15.0), 0}, 99, 0, 0, 0, 0, {SOUND_EXPLODE}, 0},
                       {{0.2, -2}, 99, 0, 0, 1, 0, {}, 0},
                       {{below(0.2), -2}, 99, 0, 0, 1, 1, {}, 0},
                       {{0, 5}, 0.5, 0, COLOR_BLUE, 1, 0, {}, 0},
                       {{0, 5}, below(0.5), 0, COLOR_BLUE, 0, 0, {SOUND_EXPLODE}, 9},
                       {{0, 5}, 0.1, 0, COLOR_RED, 0, 0, {SOUND_SHOOT_ENEMY, SOUND_EXPLODE}, 27},
                       {{0, 5}, 0.1, 1, COLOR_RED, 1, 0, {}, 0}};
    g->time = g->previous_time = 1000;
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const auto& c = cases[i];
        start_over();
        waves = {};
        waves.alive_count = 1;
        waves.groups[0].entry = c.position;
        ship& enemy = *game_spawn_ship(g.get(), COLOR_BLUE);  // it stands there and does not fire
        shot& shot = put_shot({c.shot_distance, 5}, 0, c.from_enemy, c.shot_color);
        game_update_ship(g.get(), &enemy);
        EXPECT_EQ(std::tuple(enemy.alive, waves.alive_count, g->over, player.alive, player.score),
                  std::tuple(c.alive, c.alive, c.over, 1 - c.over, c.score));
        EXPECT_EQ(sounds, c.sounds);
        EXPECT_EQ(animation_is_looping(enemy.animation), enemy.alive) << "the dead explode";
        EXPECT_EQ(shot.active, player.score > 0 ? 0 : 1);
        shot.active = 0;
    }
}

TEST_F(game_test, the_start_and_a_shield_press_are_heard) {
    in->key_state.keys[KEY_SHIELD] = 1;
    for (const int32_t time : {0, 0, 20}) {
        game_step(g.get(), time);
    }
    EXPECT_EQ(sounds, (numbers{SOUND_GAME_START, SOUND_SHIELD_CHANGE, SOUND_GAME_START}));
}

TEST_F(game_test, broken_preconditions_stop_the_program) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    g->ships[0].enemy_group = GROUP_COUNT;
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] { game_step(nullptr, 0); }, "src/game.c.*game_step.*Assertion `game' failed"},
        {[] { game_init(nullptr, 1, 8, 8); }, "src/game.c.*game_init.*`input'"},
        {[&] { game_player_handle_keys(g.get(), nullptr, &g->key_state); }, "`player'"},
        {[&] { enemy_shoot(&waves, 0, g.get(), g->ships); }, "`enemy->enemy_group < GROUP_COUNT'"},
        {[] { animation_is_done(nullptr, 0); }, "src/animation.c.*`anim'"}};
    for (const auto& [call, message] : cases) {
        EXPECT_DEATH(call(), message);
    }
}

}  // namespace
