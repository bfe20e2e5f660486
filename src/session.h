// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// One game or playback from its first frame to its last end screen. Everything runs on the main
// thread, in a video mode that has its pictures and its font.

#pragma once

#include <cstdint>

struct game;
struct input;
struct menu;

inline constexpr const char* REPLAY_FILE = "replay.rpl";

// Runs one game or playback with its end screens. A live game is saved to REPLAY_FILE and uploaded
// if the player agrees. Sets *running to 0 or *reinit to 1 when a screen asks for it.
void play_game(int32_t width, int32_t height, menu* menu, input* input, const char* player_name,
               int32_t* running, int32_t* reinit);

// Takes every pending event of a game frame.
void poll_game_events(game* game, input* input);
