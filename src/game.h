// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The world of one game and its step. game_step is called once per drawn frame and advances the
// world by the difference of two game times; keys, times and random numbers come from the input
// layer alone, so a recording replays the game bit for bit. The order of everything in here is
// part of the recording format: a change of order, of a formula's shape or of a comparison makes
// old replays play differently.
//
// Units: positions in playfield units around the black hole at the origin, velocities in units
// per second, times in milliseconds of game time, angles in radians.

#pragma once

#include <cstdint>

#include "input.h"
#include "qmath.h"

struct animation;
struct enemy_handler;
struct gfx;
struct starfield;

enum color : int32_t { COLOR_BLUE = 0, COLOR_RED = 1 };

inline constexpr int32_t GAME_SHIP_COUNT = 100;   // enemy slots of a session's game
inline constexpr int32_t GAME_DURATION = 150000;  // ms until the playfield has shrunk to nothing

// An enemy ship, or a player's ship (player_number of 1 or more).
struct ship {
    vector position;
    vector velocity;  // player: set from the keys each step; enemy: the wave's direction
    double angle;     // heading; shots leave along it
    int32_t color;    // the player's shield colour, or the enemy's colour
    int32_t player_number;
    int32_t alive;
    int32_t age;                        // ms since it was put in play
    int32_t chain_color;                // player: colour of the chain being built
    int32_t chain_count;                // player: kills in it, 0 to 3
    int32_t score;                      // player
    int32_t chain_shown;                // player: chain level that the HUD shows
    struct animation* chain_animation;  // owned; player
    int32_t last_shot_time;
    int32_t enemy_group;                 // enemy: 0 to 7
    struct animation* animation;         // owned; the sprite, or the explosion
    struct animation* shield_animation;  // owned; player
    struct animation* muzzle_flash;      // owned
    struct animation* shield_flash;      // owned; player
};

struct shot {
    vector position;
    vector velocity;
    int32_t age;                  // ms since it was fired
    struct animation* animation;  // owned; player shots only
    double angle;                 // direction of flight, for drawing
    int32_t from_enemy;
    int32_t color;   // of the ship that fired, at that moment
    int32_t active;  // 1 in flight, 0 a free slot
};

struct game {
    int32_t over;                         // 1 once the game has ended; never 0 again
    struct input* input;                  // not owned
    struct enemy_handler* enemy_handler;  // owned
    int32_t time;
    int32_t previous_time;
    struct key_state key_state;  // the keys of this step
    int32_t ship_count;
    struct ship* ships;  // owned; enemy slots
    int32_t player_count;
    struct ship* players;     // owned
    int32_t free_shot_index;  // slot handed out last
    int32_t shot_count;
    struct shot* shots;  // owned; the pool grows and moves: hold an index, not a pointer, across
                         // anything that may fire
    double radius;       // of the playfield disc
    int32_t width;       // window pixels, for drawing
    int32_t height;
    struct gfx* gfx;              // owned
    struct starfield* starfield;  // owned
};

// A new game with `ship_count` enemy slots for a window of the given pixels. The input layer stays
// the caller's and must outlive the game. Free it with game_destroy.
game* game_init(input* input, int32_t ship_count, int32_t width, int32_t height);
void game_destroy(game* game);  // null is allowed

void game_step(game* game, int32_t time);  // one step to game time `time`; nothing once over
void game_quit(game* game);
int32_t game_is_over(const game* game);
int32_t game_get_score(const game* game);
key_state game_get_key_state(const game* game);

// A free slot of the shot pool, which grows when there is none. The search starts behind the slot
// handed out last and never examines that one. The slot is not marked in flight.
int32_t game_find_free_shot(game* game);

// Puts the first free enemy slot in play, or returns null when all are alive or exploding. The
// caller sets group, times and velocity.
ship* game_spawn_ship(game* game, int32_t color);

void game_player_handle_keys(game* game, ship* player, const key_state* keys);
void game_update_ship(game* game, ship* ship);
void game_update_shot(game* game, shot* shot);
void game_ship_shoot(game* game, ship* ship);                      // may move game->shots
void game_kill_ship(game* game, ship* ship, int32_t return_fire);  // may move game->shots
void game_remove_shot(game* game, shot* shot);
void game_set_ship_color(game* game, ship* ship, int32_t color);

// Draws one frame of the game, HUD included; the caller swaps buffers. Needs GL_TEXTURE_2D
// enabled, as menus, prompts and the HUD leave it.
void game_draw(const game* game);
