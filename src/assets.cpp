// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "assets.h"

#include <cstdio>
#include <span>

#include "texture.h"

namespace {

struct asset {
    texture_id name;
    const char* file;
};

// In load order. Ids that show the same picture load it once each: an animation's frames are
// distinct ids.
constexpr asset STATIC_ASSETS[] = {
    {TEXTURE_SHOT_BLUE, "graphics/player_shot_blue_1.png"},
    {TEXTURE_ENEMY_SHOT_BLUE, "graphics/shot_enemy.png"},
    {TEXTURE_SHOT_RED, "graphics/player_shot_red_1.png"},
    {TEXTURE_ENEMY_SHOT_RED, "graphics/shot_enemy2.png"},
    {TEXTURE_FONT, "graphics/gui_bitmap_font.png"},
    {TEXTURE_CHAIN_1, "graphics/gui_chain_1.png"},
    {TEXTURE_CHAIN_2, "graphics/gui_chain_2.png"},
    {TEXTURE_CHAIN_3, "graphics/gui_chain_3.png"},
    {TEXTURE_CHAIN_4, "graphics/gui_chain_4.png"},
    {TEXTURE_CHAIN_5, "graphics/gui_chain_5.png"},
    {TEXTURE_CHAIN_6, "graphics/gui_chain_6.png"},
    {TEXTURE_CHAIN_7, "graphics/gui_chain_7.png"},
    {TEXTURE_CURSOR, "graphics/gui_cursor.png"},
    {TEXTURE_FONT_NUMBERS, "graphics/font_numbers.png"},
    {TEXTURE_SPLASH, "graphics/game_splash.png"},
    {TEXTURE_MENU_KEYBOARD, "graphics/menu_keyboard.png"},
    {TEXTURE_MUZZLE_FLASH, "graphics/player_muzzle_flash.png"},
    {TEXTURE_TWIRL, "graphics/bg_twirl_big.png"},
    {TEXTURE_GAUGE, "graphics/gui_gauge.png"},
    {TEXTURE_BLACK_HOLE, "graphics/bg_black_hole.png"},
    {TEXTURE_BLACK_HOLE_RAY, "graphics/bg_black_hole_ray.png"},
    {TEXTURE_SPACE, "graphics/bg_space.jpg"},
    {TEXTURE_GAUGE_BAR, "graphics/gui_gauge_bar.png"},
};
constexpr asset SHOT_ASSETS[] = {
    {TEXTURE_PLAYER_SHOT_BLUE_1, "graphics/player_shot_blue_1.png"},
    {TEXTURE_PLAYER_SHOT_BLUE_2, "graphics/player_shot_blue_2.png"},
    {TEXTURE_PLAYER_SHOT_BLUE_3, "graphics/player_shot_blue_3.png"},
    {TEXTURE_PLAYER_SHOT_RED_1, "graphics/player_shot_red_1.png"},
    {TEXTURE_PLAYER_SHOT_RED_2, "graphics/player_shot_red_2.png"},
    {TEXTURE_PLAYER_SHOT_RED_3, "graphics/player_shot_red_3.png"},
};
constexpr asset SHIELD_ASSETS[] = {
    {TEXTURE_SHIELD_FLASH_1, "graphics/player_shield_flash_1.png"},
    {TEXTURE_SHIELD_FLASH_2, "graphics/player_shield_flash_2.png"},
    {TEXTURE_SHIELD_BLUE_1, "graphics/player_shield_blue_1.png"},
    {TEXTURE_SHIELD_BLUE_2, "graphics/player_shield_blue_2.png"},
    {TEXTURE_SHIELD_BLUE_3, "graphics/player_shield_blue_3.png"},
    {TEXTURE_SHIELD_BLUE_4, "graphics/player_shield_blue_4.png"},
    {TEXTURE_SHIELD_BLUE_5, "graphics/player_shield_blue_5.png"},
    {TEXTURE_SHIELD_BLUE_6, "graphics/player_shield_blue_6.png"},
    {TEXTURE_SHIELD_RED_1, "graphics/player_shield_red_1.png"},
    {TEXTURE_SHIELD_RED_2, "graphics/player_shield_red_2.png"},
    {TEXTURE_SHIELD_RED_3, "graphics/player_shield_red_3.png"},
    {TEXTURE_SHIELD_RED_4, "graphics/player_shield_red_4.png"},
    {TEXTURE_SHIELD_RED_5, "graphics/player_shield_red_5.png"},
    {TEXTURE_SHIELD_RED_6, "graphics/player_shield_red_6.png"},
};
constexpr asset SHIP_ASSETS[] = {
    {TEXTURE_SHIP_1, "graphics/player_ship_1.png"},
    {TEXTURE_SHIP_2, "graphics/player_ship_2.png"},
    {TEXTURE_SHIP_3, "graphics/player_ship_1.png"},
    {TEXTURE_SHIP_4, "graphics/player_ship_2.png"},
};
constexpr asset RED_ENEMY_ASSETS[] = {
    {TEXTURE_ENEMY_RED_1, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_2, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_3, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_4, "graphics/enemy_red.png"},
    {TEXTURE_ENEMY_RED_5, "graphics/enemy_red.png"},
};
constexpr asset BLUE_ENEMY_ASSETS[] = {
    {TEXTURE_ENEMY_BLUE_1, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_2, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_3, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_4, "graphics/enemy_blue.png"},
    {TEXTURE_ENEMY_BLUE_5, "graphics/enemy_blue.png"},
};
constexpr asset EXPLOSION_ASSETS[] = {
    {TEXTURE_EXPLOSION_1, "graphics/enemy_explosion_1.png"},
    {TEXTURE_EXPLOSION_2, "graphics/enemy_explosion_2.png"},
    {TEXTURE_EXPLOSION_3, "graphics/enemy_explosion_3.png"},
    {TEXTURE_EXPLOSION_4, "graphics/enemy_explosion_4.png"},
};

struct asset_group {
    int32_t code;  // of load_textures when a picture of the group cannot be loaded
    const char* title;
    std::span<const asset> assets;
};

constexpr asset_group ASSET_GROUPS[] = {
    {-1, "static", STATIC_ASSETS},       {-2, "shot", SHOT_ASSETS},
    {-3, "shield", SHIELD_ASSETS},       {-4, "player ship", SHIP_ASSETS},
    {-5, "red enemy", RED_ENEMY_ASSETS}, {-6, "blue enemy", BLUE_ENEMY_ASSETS},
    {-7, "explosion", EXPLOSION_ASSETS},
};

}  // namespace

int32_t load_textures() {
    tex_init();
    for (const asset_group& group : ASSET_GROUPS) {
        for (const asset& asset : group.assets) {
            if (const int32_t result = tex_load(asset.file, asset.name); result != 0) {
                std::fprintf(stderr, "Error %d loading %s textures\n", result, group.title);
                return group.code;
            }
        }
    }
    return 0;
}

void unload_textures() { tex_destroy(); }
