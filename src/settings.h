// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The choices that outlive a run, and the text file that keeps them. The program owns one record
// from start to exit; menus change its fields directly. Values are never validated here: a video
// mode that cannot be set is the shell's affair.

#pragma once

#include <cstdint>

inline constexpr int32_t SETTINGS_TEXT_MAX = 50;  // characters in `name` and `replay`

struct settings {
    int32_t width;                     // pixels of the video mode
    int32_t height;                    // pixels of the video mode
    int32_t fullscreen;                // non-zero: full screen
    char name[SETTINGS_TEXT_MAX + 1];  // player name, zero-filled behind the text when loaded
    char replay[SETTINGS_TEXT_MAX +
                1];  // file offered for playback, zero-filled behind the text when loaded
    int32_t mouse;   // kept in the file, not used
    int32_t music;   // non-zero: music plays
};

// A new record with the defaults; the caller frees it with settings_destroy.
settings* settings_init();

// Reads the seven lines of the file at `path` into the record. Returns 1 when all were read. At
// the first missing or malformed line it returns 0 and the fields read so far keep their new
// values; a file that cannot be opened changes nothing.
int32_t settings_load(settings* s, const char* path);

// Writes the seven lines, replacing the file. Returns 0 if it cannot be opened for writing, else
// 1; whether every byte reached the disk is not examined.
int32_t settings_save(const settings* s, const char* path);

// Frees the record; null is allowed.
void settings_destroy(settings* s);
