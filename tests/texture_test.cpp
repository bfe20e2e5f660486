// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// One picture's way into the GL, and the asset table: which file lies under which id, in which
// order they load, and what a missing one of each group leads to.

#include "texture.h"

#include "assets.h"
#include "recorder.h"

namespace {

// clang-format off
TEST(Texture, LoadingReportsWhatWasWrong) {
    const struct {
        int result, width, bytes_per_pixel;
        GLenum pending, upload_error, format;
        const char* printed;
    } cases[] = {{0, 5, 4, 0, 0, GL_RGBA, "|"},
                 {0, 5, 3, 0, 0, GL_RGB, "|"},
                 {0, 5, 1, 0, 0, GL_LUMINANCE, "|"},
                 {-4, 5, 2, 0, 0, 0, "failed to load texture: p.png\n|"},
                 {-5, 5, 4, 0, GL_INVALID_VALUE, GL_RGBA, "failed to set texture: p.png\n|"},
                 {-3, 0, 4, 0, 0, 0, "|"},                  // no file
                 {-2, 0, 4, GL_INVALID_VALUE, 0, 0, "|"}};  // noticed before the file is looked at
    for (const auto& c : cases) {
        start_recording();
        glDisable(GL_TEXTURE_2D);
        rec.images.clear();
        rec.error = c.pending;
        rec.upload_error = c.upload_error;
        rec.files["p.png"] = {c.width, 3, c.bytes_per_pixel};
        EXPECT_EQ(printed_by([&] { EXPECT_EQ(tex_load("p.png", 26), c.result); }), c.printed);
        EXPECT_EQ(rec.loads.size(), c.pending == 0 ? 1U : 0U);
        EXPECT_TRUE(rec.enabled[GL_TEXTURE_2D]);
        EXPECT_EQ(rec.images[26].format, c.format);
        if (c.result == 0) {  // no wrap mode: the digits font needs the default
            EXPECT_EQ(rec.images[26].parameters, (std::map<GLenum, GLint>{
                {GL_TEXTURE_MIN_FILTER, GL_LINEAR}, {GL_TEXTURE_MAG_FILTER, GL_LINEAR}}));
            EXPECT_EQ(rec.bound, 0U);
        }
    }
    EXPECT_DEATH(tex_load("p.png", 63), "tex_load.*name >= 0 && name < TEXTURE_COUNT");
}

// By id; the reserved ids have none.
const char* const FILES[] = {
    "player_shot_blue_1", "player_shot_red_1", "shot_enemy", "shot_enemy2", "player_shield_flash_1",
    "player_shield_flash_2", "player_shield_blue_1", "player_shield_blue_2", "player_shield_blue_3",
    "player_shield_blue_4", "player_shield_blue_5", "player_shield_blue_6", "player_shield_red_1",
    "player_shield_red_2", "player_shield_red_3", "player_shield_red_4", "player_shield_red_5",
    "player_shield_red_6", "player_shot_blue_1", "player_shot_blue_2", "player_shot_blue_3",
    "player_shot_red_1", "player_shot_red_2", "player_shot_red_3", "player_ship_1", "player_ship_2",
    "player_ship_1", "player_ship_2", "game_splash", "gui_bitmap_font", "font_numbers",
    "menu_keyboard", "enemy_blue", "enemy_blue", "enemy_blue", "enemy_blue", "enemy_blue",
    "enemy_red", "enemy_red", "enemy_red", "enemy_red", "enemy_red", "player_muzzle_flash",
    "enemy_explosion_1", "enemy_explosion_2", "enemy_explosion_3", "enemy_explosion_4", "gui_gauge",
    "gui_gauge_bar", "gui_chain_1", "gui_chain_2", "gui_chain_3", "gui_chain_4", "gui_chain_5",
    "gui_chain_6", "gui_chain_7", "gui_cursor", "", "", "bg_twirl_big", "bg_black_hole",
    "bg_black_hole_ray", "bg_space"};
const std::pair<int, int> LOAD_ORDER[] = {  // ids from - to
    {0, 0}, {2, 2}, {1, 1}, {3, 3}, {29, 29}, {49, 56}, {30, 30}, {28, 28}, {31, 31}, {42, 42},
    {59, 59}, {47, 47}, {60, 62}, {48, 48},  // static
    {18, 23}, {4, 17}, {24, 27}, {37, 41}, {32, 36}, {43, 46}};

std::string path_of(int id) {
    return std::string("graphics/") + FILES[id] + (id == TEXTURE_SPACE ? ".jpg" : ".png");
}

TEST(Texture, TableLoadsEveryIdOnceInGroupsUntilOneIsMissing) {
    start_recording();
    unload_textures();
    EXPECT_EQ(rec.names.size(), 0U);
    ASSERT_EQ(load_textures(), 0);
    strings expected;
    for (const auto& [first, last] : LOAD_ORDER) {
        for (int id = first; id <= last; id++) {
            expected.push_back(path_of(id));
            EXPECT_EQ(rec.images[id].file, path_of(id)) << "id " << id;
        }
    }
    EXPECT_EQ(rec.loads, expected);
    EXPECT_EQ(rec.images.size(), 61U);
    EXPECT_EQ(rec.names.size(), 63U);
    const std::tuple<int, int, const char*, size_t> missing[] = {
        {TEXTURE_CURSOR, -1, "static", 13},         {TEXTURE_PLAYER_SHOT_BLUE_2, -2, "shot", 25},
        {TEXTURE_SHIELD_RED_6, -3, "shield", 43},   {TEXTURE_SHIP_2, -4, "player ship", 45},
        {TEXTURE_ENEMY_RED_1, -5, "red enemy", 48}, {TEXTURE_ENEMY_BLUE_1, -6, "blue enemy", 53},
        {TEXTURE_EXPLOSION_4, -7, "explosion", 61}};
    for (const auto& [id, code, group, loads] : missing) {
        start_recording();
        rec.files[path_of(id)] = {};
        EXPECT_EQ(printed_by([code = code] { EXPECT_EQ(load_textures(), code); }),
                  std::string("|Error -3 loading ") + group + " textures\n");
        EXPECT_EQ(rec.loads.size(), loads) << group;
    }
}
// clang-format on

}  // namespace
