// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// What the main menu contains, and the pictures behind menus and screens. The drawing works in the
// menu's projection: pixels, origin at the top left, y down.

#pragma once

#include <cstdint>

struct menu;
struct menu_item;

enum selection_id : int32_t {
    SELECTION_UNCONFIGURED = 0,
    SELECTION_START_GAME = 1,
    SELECTION_LOAD_REPLAY = 2,
    SELECTION_QUIT = 3,
    SELECTION_WINDOWED_800 = 4,
    SELECTION_WINDOWED_1024 = 5,
    SELECTION_WINDOWED_1280 = 6,
    SELECTION_FULLSCREEN_NATIVE = 7,
    SELECTION_FULLSCREEN_800 = 8,
    SELECTION_FULLSCREEN_1024 = 9,
    SELECTION_MUSIC_ON = 10,
    SELECTION_MUSIC_OFF = 11
};

// Each makes the item the owner of its list; the arrays are freed by menu_destroy.
void menu_build_main(menu_item* root);
void menu_build_settings(menu_item* item);
void menu_build_resolution(menu_item* item);

void menu_draw_background(const menu* menu);  // space, with a dark panel in the middle
void menu_draw_splash(const menu* menu);      // the title; leaves the colour white

// The keyboard picture, `size` pixels wide and half as high, at the current position.
void menu_draw_keyboard(const menu* menu, int32_t size);
