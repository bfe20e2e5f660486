// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Simulation; game_draw is in game_draw.cpp.

#include "game.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "animation.h"
#include "assertion.h"
#include "enemy.h"
#include "game_batch.h"
#include "gfx.h"
#include "sound.h"
#include "starfield.h"

namespace {

constexpr int32_t PLAYER_COUNT = 1;
constexpr int32_t FIRST_SHOT_COUNT = 100;

constexpr double PLAYER_SPEED = 2.5;           // units/s, each way
constexpr double PLAYER_SHOT_SPEED = 10.0;     // units/s
constexpr double ENEMY_SHOT_SPEED = 5.0;       // units/s
constexpr int32_t PLAYER_SHOT_INTERVAL = 100;  // least ms between two shots
constexpr int32_t HARMLESS_AGE = 200;          // ms for which a shot cannot touch the player

// Distances in playfield units.
constexpr double HOLE_RADIUS = 1.0;
constexpr double FIELD_EDGE = 15.0;  // for shots and enemies; the player has the shrinking radius
constexpr double INNER_PULL = 2.0;
constexpr double OUTER_PULL = 4.0;
constexpr double ABSORB_DISTANCE = 0.5;
constexpr double PLAYER_HIT_DISTANCE = 0.2;
constexpr double ENEMY_HIT_DISTANCE = 0.5;
constexpr double RAM_DISTANCE = 0.2;

constexpr int32_t ABSORB_POINTS = 15;

constexpr double LARGEST_RADIUS = 10.0;
constexpr double MS_PER_RADIUS_UNIT = 15000.0;

constexpr float STARFIELD_RADIUS = 20.0F;

// Pools are grown by realloc and cleared as bytes.
static_assert(std::is_trivially_copyable_v<shot> && std::is_trivially_copyable_v<ship>);

template <typename record>
record* allocate(size_t count) {
    auto* records = static_cast<record*>(std::calloc(count, sizeof(record)));
    assert(records);
    return records;
}

int32_t step_length(const game* game) { return game->time - game->previous_time; }

void replace_animation(animation** owner, int32_t type, int32_t start_time) {
    animation_destroy(*owner);
    *owner = animation_init(type, start_time);
}

void destroy_ship_animations(ship* ship) {
    animation_destroy(ship->animation);
    animation_destroy(ship->shield_animation);
    animation_destroy(ship->shield_flash);
    animation_destroy(ship->muzzle_flash);
    animation_destroy(ship->chain_animation);
}

void init_player(game* game, int32_t index) {
    ship* player = &game->players[index];
    player->position = {static_cast<double>(index), -2.0};
    player->angle = MATH_HALF_PI;
    player->alive = 1;
    player->player_number = index + 1;
    player->shield_flash = animation_init(ANIMATION_SHIELD_FLASH, ANIMATION_LONG_AGO);
    player->muzzle_flash = animation_init(ANIMATION_MUZZLE_FLASH, ANIMATION_LONG_AGO);
    player->animation = animation_init(ANIMATION_SHIP, 0);
    game_set_ship_color(game, player, index % 2);
    player->chain_animation = animation_init(ANIMATION_CHAIN, ANIMATION_LONG_AGO);
}

double playfield_radius(int32_t time) {
    const double radius = (int64_t{GAME_DURATION} - time) / MS_PER_RADIUS_UNIT;
    return std::min(radius, LARGEST_RADIUS);
}

// Pull of the hole on a shot at distance d, per unit of distance.
double pull_at(double d) {
    if (d <= INNER_PULL) {
        return 10.0 / ((d * d) / 4.0);
    }
    if (d <= OUTER_PULL) {
        return 3.0 / ((d * d) / 16.0);
    }
    return 0.0;
}

void move(vector* position, vector velocity, int32_t dt) {
    position->x = position->x + (velocity.x * dt) / 1000.0;
    position->y = position->y + (velocity.y * dt) / 1000.0;
}

void lose_player(game* game, ship* player) {
    player->alive = 0;
    game->over = 1;
}

// The hole and the edge take the player with its sprite; the move happens all the same.
void update_player(game* game, ship* player) {
    const double d = math_distance(&player->position, nullptr);
    if (d < HOLE_RADIUS || d > game->radius) {
        lose_player(game, player);
        player_play_sound(SOUND_GAME_OVER);
    }
    move(&player->position, player->velocity, step_length(game));
}

// Fire, and the ways for an enemy to leave play or end the game where it is now.
void act_enemy(game* game, ship* enemy) {
    ship* player = &game->players[0];
    enemy_shoot(game->enemy_handler, game->time, game, enemy);
    if (!is_clear(enemy->position, HOLE_CLEAR, EDGE_CLEAR)) {
        const double d = math_distance(&enemy->position, nullptr);
        if (d < HOLE_RADIUS || d > FIELD_EDGE) {
            game_kill_ship(game, enemy, 0);
            enemy_kill_handle(game->enemy_handler, enemy, player, 0, 0, game->time);
            player_play_sound(SOUND_EXPLODE);
        }
    }
    if (enemy->alive != 0 && squared_distance(enemy->position, player->position) < RAM_BOUND &&
        math_distance(&enemy->position, &player->position) < RAM_DISTANCE) {
        lose_player(game, player);  // silently, and the enemy lives on
    }
}

void test_shot_against_player(game* game, ship* player, int32_t index) {
    shot* shot = &game->shots[index];
    if (shot->age <= HARMLESS_AGE ||
        squared_distance(player->position, shot->position) > ABSORB_BOUND) {
        return;
    }
    const double d = math_distance(&player->position, &shot->position);
    if (d < ABSORB_DISTANCE && shot->from_enemy == 1 && shot->color == player->color) {
        game_remove_shot(game, shot);
        player->score += ABSORB_POINTS;
        animation_restart(player->shield_flash, game->time);
        player_play_sound(SOUND_SHIELD_HIT);
    } else if (d < PLAYER_HIT_DISTANCE && (shot->from_enemy == 0 || shot->color != player->color)) {
        game_kill_ship(game, player, 0);
        game->over = 1;
        game_remove_shot(game, shot);
        player_play_sound(SOUND_GAME_OVER);
    }
}

void hit_enemy(game* game, ship* enemy, int32_t slot) {
    const int32_t shot_color = game->shots[slot].color;  // return fire may move the pool
    game_kill_ship(game, enemy, enemy->color != shot_color ? 1 : 0);
    enemy_kill_handle(game->enemy_handler, enemy, &game->players[0], 1, shot_color, game->time);
    game_remove_shot(game, &game->shots[slot]);
    player_play_sound(SOUND_EXPLODE);
}

void test_shots_against_enemy(game* game, ship* enemy, const shots_in_flight& shots) {
    if (enemy->alive == 0 || !any_near(shots, enemy->position)) {
        return;
    }
    for (int32_t i = 0; i < shots.player_count; ++i) {
        // A shot that has hit is gone, and its slot may hold an enemy's by now.
        const int32_t slot = shots.player_slots[i];
        const shot& shot = game->shots[slot];
        if (shot.active != 0 && shot.from_enemy == 0 &&
            math_distance(&enemy->position, &shot.position) < ENEMY_HIT_DISTANCE) {
            hit_enemy(game, enemy, slot);
            return;
        }
    }
}

void test_shots_against_player(game* game, ship* player, const shots_in_flight& shots) {
    for (int32_t i = 0; i < shots.count && player->alive != 0; ++i) {
        if (game->shots[shots.slots[i]].active != 0) {
            test_shot_against_player(game, player, shots.slots[i]);
        }
    }
}

void advance_ship(game* game, ship* ship) {
    ship->age += step_length(game);
    if (ship->player_number != 0) {
        update_player(game, ship);
    } else if (ship->alive != 0) {
        enemy_move_ship(game->enemy_handler, game->time, ship, &game->players[0]);
        act_enemy(game, ship);
    }
}

// `shots` begins at the first slot; what did not fit is collected here.
void test_shots_against_ship(game* game, ship* ship, const shots_in_flight& shots) {
    const auto test =
        ship->player_number != 0 ? test_shots_against_player : test_shots_against_enemy;
    test(game, ship, shots);
    for (int32_t next = shots.end; next < game->shot_count && ship->alive != 0;) {
        shots_in_flight rest;
        collect_shots(game, next, &rest);
        test(game, ship, rest);
        next = rest.end;
    }
}

// A shot's flight in this step, but for its angle. Returns whether that has to follow the velocity.
bool fly(game* game, shot* shot) {
    const int32_t dt = step_length(game);
    const bool has_flown = shot->age > 0;  // so its angle is that of its velocity already
    shot->age += dt;
    if (has_flown && is_clear(shot->position, PULL_CLEAR, EDGE_CLEAR) && shot->velocity.x != 0.0 &&
        shot->velocity.y != 0.0) {
        // No pull: adding nothing leaves a velocity other than zero, and so the angle, as they are.
        move(&shot->position, shot->velocity, dt);
        return false;
    }
    const double d = math_distance(&shot->position, nullptr);
    if (d <= HOLE_RADIUS || d > FIELD_EDGE) {
        game_remove_shot(game, shot);
        return false;
    }
    const double pull = pull_at(d);
    const vector acceleration = {-pull * shot->position.x, -pull * shot->position.y};
    shot->velocity.x = shot->velocity.x + (dt * acceleration.x) / 1000.0;
    shot->velocity.y = shot->velocity.y + (dt * acceleration.y) / 1000.0;
    move(&shot->position, shot->velocity, dt);
    return true;
}

// As game_update_shot for every shot in flight; none of them looks at another's angle.
void update_shots(game* game) {
    angle_batch angles;
    for (int32_t i = 0; i < game->shot_count; ++i) {
        shot* shot = &game->shots[i];
        if (shot->active == 1 && fly(game, shot)) {
            angles.add(shot->velocity, &shot->angle);
        }
    }
    angles.finish();
}

// As game_update_ship for every ship in turn. Enemies are all moved first: where one flies depends
// on its own age, its wave and the player's place, none of which another enemy's turn changes, and
// one loop of nothing but moves is what a processor does best.
void update_ships(game* game) {
    shots_in_flight shots;
    collect_shots(game, 0, &shots);
    const int32_t dt = step_length(game);
    const vector target = game->players[0].position;
    angle_batch headings;
    for (int32_t i = 0; i < game->ship_count; ++i) {
        ship* enemy = &game->ships[i];
        enemy->age += dt;
        if (enemy->alive != 0) {
            enemy_place_ship(game->enemy_handler, enemy);
            headings.add({target.x - enemy->position.x, target.y - enemy->position.y},
                         &enemy->angle);
        }
    }
    headings.finish();
    for (int32_t i = 0; i < game->ship_count; ++i) {
        ship* enemy = &game->ships[i];
        if (enemy->alive != 0) {
            act_enemy(game, enemy);
            test_shots_against_ship(game, enemy, shots);
        }
    }
    for (int32_t i = 0; i < game->player_count; ++i) {
        advance_ship(game, &game->players[i]);
        test_shots_against_ship(game, &game->players[i], shots);
    }
}

}  // namespace

game* game_init(input* input, int32_t ship_count, int32_t width, int32_t height) {
    assert(input);
    auto* game = allocate<struct game>(1);
    game->input = input;
    game->enemy_handler = enemy_init();
    game->width = width;
    game->height = height;

    game->ship_count = ship_count;
    game->ships = allocate<ship>(static_cast<size_t>(ship_count));
    for (int32_t i = 0; i < ship_count; ++i) {
        game->ships[i].muzzle_flash = animation_init(ANIMATION_MUZZLE_FLASH, ANIMATION_LONG_AGO);
    }

    game->player_count = PLAYER_COUNT;
    game->players = allocate<ship>(PLAYER_COUNT);
    for (int32_t i = 0; i < PLAYER_COUNT; ++i) {
        init_player(game, i);
    }

    game->shot_count = FIRST_SHOT_COUNT;
    game->shots = allocate<shot>(FIRST_SHOT_COUNT);

    game->gfx = gfx_init();
    game->starfield = starfield_init(STARFIELD_RADIUS);
    return game;
}

void game_destroy(game* game) {
    if (game == nullptr) {
        return;
    }
    enemy_destroy(game->enemy_handler);
    for (int32_t i = 0; i < game->ship_count; ++i) {
        destroy_ship_animations(&game->ships[i]);
    }
    std::free(game->ships);
    for (int32_t i = 0; i < game->player_count; ++i) {
        destroy_ship_animations(&game->players[i]);
    }
    std::free(game->players);
    for (int32_t i = 0; i < game->shot_count; ++i) {
        animation_destroy(game->shots[i].animation);
    }
    std::free(game->shots);
    gfx_destroy(game->gfx);
    starfield_destroy(game->starfield);
    std::free(game);
}

// Every phase visits its pool in index order. `over` may be set in the middle: the rest of the
// step still runs.
void game_step(game* game, int32_t time) {
    assert(game);
    if (game->over == 1) {
        return;
    }
    game->previous_time = game->time;
    game->time = time;
    if (game->time == 0) {
        player_play_sound(SOUND_GAME_START);
    }
    input_get_key_state(game->input, &game->key_state);
    for (int32_t i = 0; i < game->player_count; ++i) {
        game_player_handle_keys(game, &game->players[i], &game->key_state);
    }
    game->radius = playfield_radius(game->time);
    update_shots(game);
    enemy_spawn_ships(game->enemy_handler, game->time, game, game->input, game->players,
                      game->ship_count);
    update_ships(game);
    starfield_update(game->starfield, step_length(game));
}

void game_quit(game* game) {
    assert(game);
    game->over = 1;
}

int32_t game_is_over(const game* game) {
    assert(game);
    return game->over;
}

int32_t game_get_score(const game* game) {
    assert(game);
    return game->players[0].score;
}

key_state game_get_key_state(const game* game) {
    assert(game);
    return game->key_state;
}

int32_t game_find_free_shot(game* game) {
    assert(game);
    int32_t i = game->free_shot_index;
    while (true) {
        i = (i + 1) % game->shot_count;
        if (i == game->free_shot_index) {
            break;
        }
        if (game->shots[i].active == 0) {
            game->free_shot_index = i;
            return i;
        }
    }

    const int32_t old_count = game->shot_count;
    const size_t old_size = static_cast<size_t>(old_count) * sizeof(shot);
    game->shots = static_cast<shot*>(
        old_count <= INT_MAX / 2 ? std::realloc(game->shots, 2 * old_size) : nullptr);
    assert(game->shots);
    std::memset(static_cast<void*>(game->shots + old_count), 0, old_size);
    game->shot_count = 2 * old_count;
    game->free_shot_index = old_count;
    return old_count;
}

ship* game_spawn_ship(game* game, int32_t color) {
    assert(game);
    for (int32_t i = 0; i < game->ship_count; ++i) {
        ship* ship = &game->ships[i];
        const bool exploding = ship->animation != nullptr &&
                               animation_is_looping(ship->animation) == 0 &&
                               animation_is_done(ship->animation, game->time) == 0;
        if (ship->alive != 0 || exploding) {
            continue;
        }
        ship->alive = 1;
        ship->age = 0;
        ship->player_number = 0;
        ship->color = color;
        replace_animation(&ship->animation,
                          color == COLOR_BLUE ? ANIMATION_ENEMY_BLUE : ANIMATION_ENEMY_RED,
                          game->time);
        return ship;
    }
    return nullptr;
}

void game_player_handle_keys(game* game, ship* player, const key_state* keys) {
    assert(game);
    assert(player);
    assert(keys);
    const int32_t* held = keys->keys;
    player->velocity = {0.0, 0.0};
    if (held[KEY_FORWARD] != 0) {
        player->velocity = {math_cos(player->angle) * PLAYER_SPEED,
                            math_sin(player->angle) * PLAYER_SPEED};
    }
    if (held[KEY_BACKWARD] != 0) {  // wins over forward
        player->velocity = {math_cos(player->angle) * -PLAYER_SPEED,
                            math_sin(player->angle) * -PLAYER_SPEED};
    }

    const double turn = step_length(game) * MATH_PI / 800.0;
    if (held[KEY_TURN_LEFT] != 0) {
        player->angle += turn;
    }
    if (held[KEY_TURN_RIGHT] != 0) {
        player->angle -= turn;
    }
    player->angle = math_wrap(player->angle + MATH_TWO_PI, MATH_TWO_PI);

    // Sideways along the new heading. With both held the two are added in turn, which does not
    // cancel to the last bit.
    if (held[KEY_STRAFE_LEFT] != 0) {
        player->velocity.x += math_sin(player->angle) * -PLAYER_SPEED;
        player->velocity.y += math_cos(player->angle) * PLAYER_SPEED;
    }
    if (held[KEY_STRAFE_RIGHT] != 0) {
        player->velocity.x += math_sin(player->angle) * PLAYER_SPEED;
        player->velocity.y += math_cos(player->angle) * -PLAYER_SPEED;
    }

    if (held[KEY_SHIELD] != 0) {
        game_set_ship_color(game, player, player->color == COLOR_BLUE ? COLOR_RED : COLOR_BLUE);
        player_play_sound(SOUND_SHIELD_CHANGE);
    }
    if (held[KEY_FIRE] != 0) {
        game_ship_shoot(game, player);
    }
}

void game_update_ship(game* game, ship* ship) {
    assert(game);
    assert(ship);
    advance_ship(game, ship);
    shots_in_flight shots;
    collect_shots(game, 0, &shots);
    test_shots_against_ship(game, ship, shots);
}

void game_update_shot(game* game, shot* shot) {
    assert(game);
    assert(shot);
    if (fly(game, shot)) {
        shot->angle = math_vector_angle(shot->velocity);
    }
}

void game_ship_shoot(game* game, ship* ship) {
    assert(game);
    assert(ship);
    // Searched even when the shot is then refused: the search moves on all the same.
    const int32_t index = game_find_free_shot(game);
    shot* shot = &game->shots[index];
    const bool is_player = ship->player_number != 0;
    if (is_player) {
        if (int64_t{game->time} - ship->last_shot_time < PLAYER_SHOT_INTERVAL) {
            return;
        }
        shot->animation =
            animation_init(ship->color == COLOR_BLUE ? ANIMATION_SHOT_BLUE : ANIMATION_SHOT_RED, 0);
        animation_restart(shot->animation, game->time);
    }
    const double speed = is_player ? PLAYER_SHOT_SPEED : ENEMY_SHOT_SPEED;
    shot->from_enemy = is_player ? 0 : 1;
    shot->color = ship->color;
    shot->active = 1;
    shot->age = 0;
    shot->angle = ship->angle;
    shot->position = ship->position;
    shot->velocity = {math_cos(ship->angle) * speed, math_sin(ship->angle) * speed};
    player_play_sound(is_player ? SOUND_SHOOT_PLAYER : SOUND_SHOOT_ENEMY);
    ship->last_shot_time = game->time;
    animation_restart(ship->muzzle_flash, game->time);
}

void game_kill_ship(game* game, ship* ship, int32_t return_fire) {
    assert(game);
    assert(ship);
    ship->alive = 0;
    ship->velocity = {0.0, 0.0};
    replace_animation(&ship->animation, ANIMATION_EXPLOSION, game->time);
    if (return_fire != 0) {
        game_ship_shoot(game, ship);
    }
}

void game_remove_shot(game* game, shot* shot) {
    assert(game);
    assert(shot);
    shot->active = 0;
    animation_destroy(shot->animation);
    shot->animation = nullptr;
}

void game_set_ship_color(game* game, ship* ship, int32_t color) {
    assert(game);
    assert(ship);
    ship->color = color;
    replace_animation(&ship->shield_animation,
                      color == COLOR_BLUE ? ANIMATION_SHIELD_BLUE : ANIMATION_SHIELD_RED,
                      game->time);
}
