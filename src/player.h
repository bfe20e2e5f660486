// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Sound effects and the endless random playlist, on SDL_mixer. One player per process; while there
// is none (no audio device, say), every operation does nothing or answers -1, and the game runs
// silently.

#pragma once

#include <cstdint>

#include "sound.h"

// Opens the audio device and loads the effects and every track of `music_dir` (borrowed: the text
// must outlive the player). 0; -1 if there is a player already; -2 if the device cannot be opened,
// with a message on standard output.
int32_t player_init(const char* music_dir);
void player_destroy();  // nothing without a player

// 0; -1 no player, -2 no tracks, -3 already playing, -4 the track could not be played.
int32_t player_music_start();
void player_music_stop();

// Reads the music directory anew, for use while music is stopped: 0; -1 no player, -2 the
// directory cannot be opened. Tracks are in the directory's own order.
int32_t player_scan_music();
int32_t player_load_sounds();  // always 0: a missing effect is silent

// The mixer calls this on its own thread when a track ends; draws the next one with std::rand,
// which the main thread calls as well (for the first track and for the stars). glibc's takes a lock
// of its own; where another C library promises nothing, the worst is an unlucky track or star.
void player_music_finished();
