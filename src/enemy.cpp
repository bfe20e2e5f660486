// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "enemy.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <iterator>

#include "animation.h"
#include "assertion.h"
#include "game.h"
#include "input.h"
#include "sound.h"

namespace {

struct group_row {
    double speed;
    int32_t spawn_interval;     // ms
    double shot_interval_base;  // ms, divided by the difficulty
    double weave;               // amplitude, playfield units
};

constexpr group_row GROUP_ROWS[] = {
    {0.8, 300, 6000.0, 3.0}, {1.3, 200, 6000.0, 1.0}, {1.8, 150, 4000.0, 3.0},
    {2.0, 100, 6000.0, 1.0}, {1.0, 300, 6000.0, 3.0}, {1.3, 130, 6000.0, 1.0},
    {0.7, 200, 6000.0, 1.2}, {1.1, 200, 6000.0, 1.2},
};
static_assert(std::size(GROUP_ROWS) == GROUP_COUNT);

constexpr int32_t CHAIN_LENGTH = 3;  // kills that complete a chain

// Points for a kill, times its place in the chain, and for completing the chain: with shots of
// the enemy's colour, and of the other.
constexpr int32_t KILL_POINTS[] = {9, 27};
constexpr int32_t CHAIN_POINTS[] = {270, 540};

double difficulty(int32_t score, int32_t time) {
    return (score / 8000.0) * 0.5 + 0.3 + (time / 150000.0) * 0.2;
}

bool draw_group(enemy_handler* handler) {
    const auto group = static_cast<int32_t>(input_random() & 7U);
    if (handler->groups[group].alive > 0) {
        return false;
    }
    handler->current_group = group;
    handler->wave_spawned = 0;
    return true;
}

// Draws the new wave of the current group. One statement a draw: their order is the recording's.
void draw_wave(group_state* group, const group_row& row, double d) {
    group->color = static_cast<int32_t>(input_random() & 1U);
    const double place = input_random() % 24U;
    const double angle = place * MATH_TWO_PI / 24.0;
    group->entry = {10.0 * math_cos(angle), 10.0 * math_sin(angle)};
    const double offset_x = input_random() % 20U;
    group->direction.x = -math_cos(angle + offset_x / 60.0);
    const double offset_y = input_random() % 20U;
    group->direction.y = -math_sin(angle + offset_y / 60.0);
    group->wave_size = 3;
    if (d > 0.4) {
        group->wave_size += 3 * static_cast<int32_t>(input_random() & 1U);
    }
    group->speed = row.speed;
    group->spawn_interval = row.spawn_interval;
    group->shot_interval = static_cast<int32_t>(row.shot_interval_base / d);
}

// sin(age / 1000). Ages are whole milliseconds and come again with every ship: each sine is taken
// once, and 0 marks those that have not been (that of age 0 is as quick as a look-up).
double weave_sine(int32_t age) {
    constexpr int32_t KEPT_AGES = 32768;  // longer than a ship crosses the field
    static double sines[KEPT_AGES];
    if (age < 0 || age >= KEPT_AGES) {
        return math_sin(age / 1000.0);
    }
    if (sines[age] == 0.0) {
        sines[age] = math_sin(age / 1000.0);
    }
    return sines[age];
}

// The direction across a flight line, along which a ship weaves. All living ships of a group share
// their line, so the last result of each group serves nearly every call: a function of the
// velocity's bits alone, whatever was asked before.
vector across_flight_line(vector velocity, int32_t group) {
    struct result {
        bool known;
        uint64_t x_bits;
        uint64_t y_bits;
        vector across;
    };
    static result results[GROUP_COUNT];
    const auto x_bits = std::bit_cast<uint64_t>(velocity.x);
    const auto y_bits = std::bit_cast<uint64_t>(velocity.y);
    result& last = results[group];
    if (!last.known || last.x_bits != x_bits || last.y_bits != y_bits) {
        const double heading = math_vector_angle(velocity);
        const vector across = {math_cos(heading + MATH_HALF_PI), math_sin(heading + MATH_HALF_PI)};
        last = {true, x_bits, y_bits, across};
    }
    return last.across;
}

void score_kill(const ship* enemy, ship* player, int32_t shot_color, int32_t time) {
    const int32_t other_color = enemy->color != shot_color ? 1 : 0;
    if (player->chain_count == CHAIN_LENGTH) {
        player->chain_count = 0;
    }
    if (player->chain_count == 0) {
        player->chain_count = 1;
        player->chain_color = enemy->color;
    } else if (enemy->color == player->chain_color) {
        player->chain_count += 1;
        if (player->chain_count == CHAIN_LENGTH) {
            animation_restart(player->chain_animation, time);
            player->score += CHAIN_POINTS[other_color];
            player_play_sound(SOUND_CHAIN);
        }
    } else {
        player->chain_count = 0;
    }
    player->chain_shown = player->chain_count;
    player->score += player->chain_count * KILL_POINTS[other_color];
}

}  // namespace

enemy_handler* enemy_init() {
    auto* handler = static_cast<enemy_handler*>(std::calloc(1, sizeof(enemy_handler)));
    assert(handler);
    handler->current_group = -1;
    return handler;
}

void enemy_destroy(enemy_handler* handler) { std::free(handler); }

void enemy_spawn_ships(enemy_handler* handler, int32_t time, game* game, input* input,
                       const ship* players, int32_t ship_count) {
    assert(handler);
    assert(game);
    assert(input);
    assert(players);
    const double d = difficulty(players[0].score, time);
    const auto slots = static_cast<double>(ship_count);
    const auto cap = static_cast<int32_t>(std::min(1.2 * d * slots, slots));
    if (handler->alive_count >= cap) {
        return;
    }

    const int32_t current = handler->current_group;
    if (current < 0 || handler->wave_spawned >= handler->groups[current].wave_size) {
        if (!draw_group(handler)) {
            return;
        }
        const int32_t drawn = handler->current_group;
        draw_wave(&handler->groups[drawn], GROUP_ROWS[drawn], d);
    }

    const int32_t group_index = handler->current_group;
    group_state& group = handler->groups[group_index];
    if (int64_t{handler->last_spawn_time} + group.spawn_interval > time) {
        return;
    }
    ship* ship = game_spawn_ship(game, group.color);
    if (ship == nullptr) {
        return;
    }
    handler->alive_count += 1;
    handler->last_spawn_time = time;
    group.alive += 1;
    handler->wave_spawned += 1;
    ship->enemy_group = group_index;
    // As if it had fired that long ago: today's difficulty, the wave's interval.
    ship->last_shot_time = static_cast<int32_t>(time - group.shot_interval * d);
    ship->velocity = group.direction;
}

void enemy_move_ship(const enemy_handler* handler, [[maybe_unused]] int32_t time, ship* enemy,
                     const ship* player) {
    assert(player);
    enemy_place_ship(handler, enemy);
    enemy->angle = math_vector_angle(
        {player->position.x - enemy->position.x, player->position.y - enemy->position.y});
}

void enemy_place_ship(const enemy_handler* handler, ship* enemy) {
    assert(handler);
    assert(enemy);
    assert(enemy->enemy_group >= 0);
    assert(enemy->enemy_group < GROUP_COUNT);
    const group_state& group = handler->groups[enemy->enemy_group];
    // A function of the age, never integrated: the path does not depend on the frame times.
    const double weave = GROUP_ROWS[enemy->enemy_group].weave * weave_sine(enemy->age);
    enemy->position.x = group.entry.x + enemy->velocity.x * group.speed * enemy->age / 500.0;
    enemy->position.y = group.entry.y + enemy->velocity.y * group.speed * enemy->age / 500.0;
    const vector across = across_flight_line(enemy->velocity, enemy->enemy_group);
    enemy->position.x += across.x * weave;
    enemy->position.y += across.y * weave;
}

void enemy_shoot(const enemy_handler* handler, int32_t time, game* game, ship* enemy) {
    assert(handler);
    assert(game);
    assert(enemy);
    assert(enemy->enemy_group >= 0);
    assert(enemy->enemy_group < GROUP_COUNT);
    const int32_t interval = handler->groups[enemy->enemy_group].shot_interval;
    if (interval > 0 && int64_t{time} - enemy->last_shot_time > interval) {
        game_ship_shoot(game, enemy);
    }
}

void enemy_kill_handle(enemy_handler* handler, const ship* enemy, ship* player, int32_t by_shot,
                       int32_t shot_color, int32_t time) {
    assert(handler);
    assert(enemy);
    assert(player);
    assert(enemy->enemy_group >= 0);
    assert(enemy->enemy_group < GROUP_COUNT);
    if (by_shot == 1) {
        score_kill(enemy, player, shot_color, time);
    }
    handler->alive_count -= 1;
    handler->groups[enemy->enemy_group].alive -= 1;
}
