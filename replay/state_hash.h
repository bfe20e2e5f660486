// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// One number for the whole course of a game: 64-bit FNV-1a over the game's state, chained from step
// to step and never reset, so two games with the same final hash were the same at every step.
//
// Fed after each game_step of a running game, integers as 4 bytes and doubles as the 8 bytes of
// their bits, least significant byte first, in this order:
//   1. time, over, radius
//   2. the player: position, velocity, angle, color, alive, age, chain_color, chain_count, score,
//      chain_shown, last_shot_time
//   3. every enemy slot: alive; if it is not 0 also position, velocity, angle, color, age,
//      last_shot_time, enemy_group
//   4. shot_count, free_shot_index
//   5. every shot slot: active; if it is not 0 also position, velocity, age, angle, from_enemy,
//      color
//   6. the waves: alive_count, last_spawn_time, current_group, wave_spawned
//   7. every group: alive; once it has started a wave also wave_size, color, spawn_interval, speed,
//      shot_interval, entry, direction
// What a dead slot still holds, pointers, padding and decoration stay out: they differ between
// equal games.

#pragma once

#include <cstdint>

struct game;

inline constexpr uint64_t STATE_HASH_START = 0xcbf29ce484222325U;  // before the first step

// The hash after a step, from the hash before it and the game as the step left it.
uint64_t state_hash_step(uint64_t hash, const game* game);
