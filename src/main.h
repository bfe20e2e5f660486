// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The program entry and shell: start-up, the video mode, the asset table, the menu loop, the
// choices of the menu and the games that it starts. Everything runs on the main thread.

#pragma once

#include <cstddef>
#include <cstdint>

struct game;
struct input;
struct menu;
struct settings;

inline constexpr const char* SETTINGS_FILE = "qrvn-settings.dat";
inline constexpr const char* REPLAY_FILE = "replay.rpl";
inline constexpr const char* MUSIC_DIRECTORY = "music";

// What the entry owns for the whole run and shares with the selection dispatch.
struct shell {
    struct settings* settings;
    struct menu* menu;
    int32_t running;       // 0 ends the program
    int32_t reinit;        // 1 leaves the menu loop so that the video mode is set again
    int32_t native_width;  // the desktop's size in pixels, read before the first video mode
    int32_t native_height;
};

// Sets the video mode (pixels) and the GL state that menus and scenes start from: 0, or -1 if the
// mode cannot be set.
int32_t init_video(int32_t width, int32_t height, int32_t fullscreen);

// The GL state alone, all of it: SDL may or may not have kept the context of an earlier mode.
void init_gl_state(int32_t width, int32_t height);

// Loads every picture of the asset table: 0, or the negative code of the group that failed, with a
// message on standard error.
int32_t load_textures();
void unload_textures();

// Carries out a chosen menu item.
void dispatch_selection(shell* shell, int32_t selection_id);

// Runs one game or playback with its end screens. A live game is saved to REPLAY_FILE and uploaded
// if the player agrees. Sets *running to 0 or *reinit to 1 when a screen asks for it.
void play_game(int32_t width, int32_t height, menu* menu, input* input, const char* player_name,
               int32_t* running, int32_t* reinit);

// Takes every pending event of a game frame.
void poll_game_events(game* game, input* input);

// Replaces the text in `buffer` by the first file name of the working directory that begins with
// it and ends in its only ".rpl", cut to `capacity` - 1 bytes; unchanged without such a file.
void complete_replay_name(char* buffer, size_t capacity);
