// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The sound effects, by small numbers, and the call that plays one. This is all that the simulation
// knows of sound: the program answers the call with its player, a headless program in silence.

#pragma once

#include <cstdint>

enum sound_id : uint32_t {
    SOUND_SHOOT_PLAYER,
    SOUND_SHOOT_ENEMY,
    SOUND_EXPLODE,
    SOUND_SHIELD_CHANGE,
    SOUND_SHIELD_HIT,
    SOUND_GAME_START,
    SOUND_GAME_OVER,
    SOUND_CHAIN,
    SOUND_MENU_MOVE,
    SOUND_MENU_SELECT,
    SOUND_MENU_BACK,
    SOUND_COUNT
};

// Plays an effect once on a free channel. Without a player, or for an id that does not exist,
// nothing happens.
void player_play_sound(uint32_t id);
