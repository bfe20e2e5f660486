// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Sound effects and the endless random playlist, on SDL_mixer. One player per process; while there
// is none (no audio device, say), every operation does nothing or answers -1, and the game runs
// silently.

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

// Opens the audio device and loads the effects and every track of `music_dir` (borrowed: the text
// must outlive the player). 0; -1 if there is a player already; -2 if the device cannot be opened,
// with a message on standard output.
int32_t player_init(const char* music_dir);
void player_destroy();  // nothing without a player

// Plays an effect once on a free channel; an id that does not exist is ignored.
void player_play_sound(uint32_t id);

// 0; -1 no player, -2 no tracks, -3 already playing, -4 the track could not be played.
int32_t player_music_start();
void player_music_stop();

// Reads the music directory anew, for use while music is stopped: 0; -1 no player, -2 the
// directory cannot be opened. Tracks are in the directory's own order.
int32_t player_scan_music();
int32_t player_load_sounds();  // always 0: a missing effect is silent

// The mixer calls this on its own thread when a track ends; draws the next one.
void player_music_finished();
