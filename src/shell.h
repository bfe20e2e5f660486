// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The program around the games: start-up, one video mode after the other, the menu loop and what
// its choices do. Everything runs on the main thread.

#pragma once

#include <cstddef>
#include <cstdint>

struct menu;
struct settings;

inline constexpr const char* SETTINGS_FILE = "qrvn-settings.dat";
inline constexpr const char* MUSIC_DIRECTORY = "music";

// What the program owns for the whole run and shares with the selection dispatch.
struct shell {
    struct settings* settings;
    struct menu* menu;
    int32_t running;       // 0 ends the program
    int32_t reinit;        // 1 leaves the menu loop so that the video mode is set again
    int32_t native_width;  // the desktop's size in pixels, read before the first video mode
    int32_t native_height;
};

// The whole program, from the settings file to the settings file: its exit status. A failed start
// says why on standard error and saves nothing.
int shell_run();

// Carries out a chosen menu item.
void dispatch_selection(shell* shell, int32_t selection_id);

// Replaces the text in `buffer` by the first file name of the working directory that begins with
// it and ends in its only ".rpl", cut to `capacity` - 1 bytes; unchanged without such a file. Names
// with control bytes are passed over: the settings file keeps a name on one line.
void complete_replay_name(char* buffer, size_t capacity);
