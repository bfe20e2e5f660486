// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The pictures of the current video mode, addressed by small numbers. The module holds only the GL
// names; the asset table that says which file has which id lives with the program entry.

#pragma once

#include <cstdint>

using texture_id = int32_t;

enum texture_name : texture_id {
    TEXTURE_SHOT_BLUE,
    TEXTURE_SHOT_RED,
    TEXTURE_ENEMY_SHOT_BLUE,
    TEXTURE_ENEMY_SHOT_RED,
    TEXTURE_SHIELD_FLASH_1,
    TEXTURE_SHIELD_FLASH_2,
    TEXTURE_SHIELD_BLUE_1,
    TEXTURE_SHIELD_BLUE_2,
    TEXTURE_SHIELD_BLUE_3,
    TEXTURE_SHIELD_BLUE_4,
    TEXTURE_SHIELD_BLUE_5,
    TEXTURE_SHIELD_BLUE_6,
    TEXTURE_SHIELD_RED_1,
    TEXTURE_SHIELD_RED_2,
    TEXTURE_SHIELD_RED_3,
    TEXTURE_SHIELD_RED_4,
    TEXTURE_SHIELD_RED_5,
    TEXTURE_SHIELD_RED_6,
    TEXTURE_PLAYER_SHOT_BLUE_1,
    TEXTURE_PLAYER_SHOT_BLUE_2,
    TEXTURE_PLAYER_SHOT_BLUE_3,
    TEXTURE_PLAYER_SHOT_RED_1,
    TEXTURE_PLAYER_SHOT_RED_2,
    TEXTURE_PLAYER_SHOT_RED_3,
    TEXTURE_SHIP_1,
    TEXTURE_SHIP_2,
    TEXTURE_SHIP_3,
    TEXTURE_SHIP_4,
    TEXTURE_SPLASH,
    TEXTURE_FONT,
    TEXTURE_FONT_NUMBERS,
    TEXTURE_MENU_KEYBOARD,
    TEXTURE_ENEMY_BLUE_1,
    TEXTURE_ENEMY_BLUE_2,
    TEXTURE_ENEMY_BLUE_3,
    TEXTURE_ENEMY_BLUE_4,
    TEXTURE_ENEMY_BLUE_5,
    TEXTURE_ENEMY_RED_1,
    TEXTURE_ENEMY_RED_2,
    TEXTURE_ENEMY_RED_3,
    TEXTURE_ENEMY_RED_4,
    TEXTURE_ENEMY_RED_5,
    TEXTURE_MUZZLE_FLASH,
    TEXTURE_EXPLOSION_1,
    TEXTURE_EXPLOSION_2,
    TEXTURE_EXPLOSION_3,
    TEXTURE_EXPLOSION_4,
    TEXTURE_GAUGE,
    TEXTURE_GAUGE_BAR,
    TEXTURE_CHAIN_1,
    TEXTURE_CHAIN_2,
    TEXTURE_CHAIN_3,
    TEXTURE_CHAIN_4,
    TEXTURE_CHAIN_5,
    TEXTURE_CHAIN_6,
    TEXTURE_CHAIN_7,
    TEXTURE_CURSOR,
    TEXTURE_RESERVED_57,  // named, never loaded: the ids behind keep their numbers
    TEXTURE_RESERVED_58,
    TEXTURE_TWIRL,
    TEXTURE_BLACK_HOLE,
    TEXTURE_BLACK_HOLE_RAY,
    TEXTURE_SPACE,
    TEXTURE_COUNT
};

void tex_init();     // makes the GL names of a video mode
void tex_destroy();  // deletes them

// Decodes the image file and uploads it under the id. Returns 0; -2 if a GL error is pending, -3
// if the file cannot be decoded, -4 for a pixel format that is not 1, 3 or 4 bytes, -5 if the GL
// refuses it (the last two print the file name on standard output). The picture's top row becomes
// texture row t = 0. Leaves GL_TEXTURE_2D enabled.
int32_t tex_load(const char* filename, texture_id name);

// Binds the picture to GL_TEXTURE_2D. Neither checks the id nor enables texturing.
void tex_bind(texture_id name);
