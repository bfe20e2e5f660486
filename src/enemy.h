// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Enemy waves: when they come, how they fly and fire, and what a kill scores. A wave belongs to one
// of eight groups; all living ships of a group share its entry point, direction, colour and speed.
// Every random decision is drawn through the input layer, in a fixed order.

#pragma once

#include <cstdint>

#include "qmath.h"

struct game;
struct input;
struct ship;

enum : int32_t { GROUP_COUNT = 8 };

struct group_state {
    int32_t alive;           // ships of this group alive
    int32_t wave_size;       // ships of the current wave
    int32_t color;           // of the whole wave
    int32_t spawn_interval;  // least ms between two spawns of this wave
    double speed;            // factor
    int32_t shot_interval;   // least ms between two shots of one ship
    vector entry;            // entry point, playfield units
    vector direction;        // of flight, about a unit vector
};

struct enemy_handler {
    int32_t alive_count;      // enemy ships alive, all groups
    int32_t last_spawn_time;  // game time of the latest spawn, ms
    int32_t current_group;    // group of the wave being spawned; -1 before the first
    int32_t wave_spawned;     // ships of that wave spawned so far
    group_state groups[GROUP_COUNT];
};

enemy_handler* enemy_init();                 // owned by the game; free it with enemy_destroy
void enemy_destroy(enemy_handler* handler);  // null is allowed

// One step of the schedule at game time `time` (ms): starts a wave when the last one is complete,
// and spawns at most one ship. `players` is the array of player ships, of which the first counts.
void enemy_spawn_ships(enemy_handler* handler, int32_t time, game* game, input* input,
                       const ship* players, int32_t ship_count);

// Places a living enemy on its wave's path for its age and turns it to the player. The path is a
// function of the age: `time` changes nothing.
void enemy_move_ship(const enemy_handler* handler, int32_t time, ship* enemy, const ship* player);

// The first half of that: the place alone.
void enemy_place_ship(const enemy_handler* handler, ship* enemy);

// Lets the enemy fire if its interval has passed.
void enemy_shoot(const enemy_handler* handler, int32_t time, game* game, ship* enemy);

// Bookkeeping when an enemy leaves play. With `by_shot` 1 the player scores by the chain rule for
// a shot of colour `shot_color`.
void enemy_kill_handle(enemy_handler* handler, const ship* enemy, ship* player, int32_t by_shot,
                       int32_t shot_color, int32_t time);
