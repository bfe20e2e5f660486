// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "menu_tree.h"

#include <GL/gl.h>

#include <cstdlib>
#include <cstring>
#include <span>

#include "assertion.h"
#include "gl_guard.h"
#include "menu.h"
#include "quads.h"
#include "texture.h"

namespace {

struct item_row {
    const char* title;
    int32_t id;
};

constexpr item_row MAIN_ROWS[] = {
    {"Start game", SELECTION_START_GAME},
    {"Load replay", SELECTION_LOAD_REPLAY},
    {"Settings", SELECTION_UNCONFIGURED},
    {"Quit", SELECTION_QUIT},
};
constexpr size_t SETTINGS_PLACE = 2;

constexpr item_row SETTINGS_ROWS[] = {
    {"Resolution", SELECTION_UNCONFIGURED},
    {"Music ON", SELECTION_MUSIC_ON},
    {"Music OFF", SELECTION_MUSIC_OFF},
};
constexpr size_t RESOLUTION_PLACE = 0;

constexpr item_row RESOLUTION_ROWS[] = {
    {"Windowed 800x600", SELECTION_WINDOWED_800},
    {"Windowed 1024x768", SELECTION_WINDOWED_1024},
    {"Windowed 1280x720", SELECTION_WINDOWED_1280},
    {"Native Fullscreen", SELECTION_FULLSCREEN_NATIVE},
    {"800x600 Fullscreen", SELECTION_FULLSCREEN_800},
    {"1024x768 Fullscreen", SELECTION_FULLSCREEN_1024},
};

constexpr int32_t OPEN_AT_FIRST_ENTRY = 0;
constexpr int32_t CLOSED = -1;

void build_list(menu_item* owner, int32_t selected, std::span<const item_row> rows) {
    owner->selected = selected;
    owner->item_count = static_cast<int32_t>(rows.size());
    owner->items = static_cast<menu_item*>(std::calloc(rows.size(), sizeof(menu_item)));
    assert(owner->items);
    for (size_t i = 0; i < rows.size(); ++i) {
        assert(std::strlen(rows[i].title) < sizeof(owner->items[i].title));
        std::strcpy(owner->items[i].title, rows[i].title);
        owner->items[i].id = rows[i].id;
    }
}

void textured_corner(float s, float t, float x, float y) {
    glTexCoord2f(s, t);
    glVertex2f(x, y);
}

}  // namespace

void menu_build_main(menu_item* root) {
    assert(root);
    build_list(root, OPEN_AT_FIRST_ENTRY, MAIN_ROWS);
    menu_build_settings(&root->items[SETTINGS_PLACE]);
}

void menu_build_settings(menu_item* item) {
    assert(item);
    build_list(item, CLOSED, SETTINGS_ROWS);
    menu_build_resolution(&item->items[RESOLUTION_PLACE]);
}

void menu_build_resolution(menu_item* item) {
    assert(item);
    build_list(item, CLOSED, RESOLUTION_ROWS);
}

void menu_draw_background(const menu* menu) {
    assert(menu);
    glEnable(GL_TEXTURE_2D);
    tex_bind(TEXTURE_SPACE);
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    {
        const matrix_guard matrix;
        glTranslated(menu->width / 2, menu->height / 2, 0.0);
        const double scale = menu->width > menu->height ? menu->width / 2 : menu->height / 2;
        glScaled(scale, scale, 1.0);
        // Upside down, since y points down here and the corners keep the scene's texture rows.
        glBegin(GL_QUADS);
        textured_corner(0.0F, 1.0F, -1.0F, -1.0F);
        textured_corner(0.0F, 0.0F, -1.0F, 1.0F);
        textured_corner(1.0F, 0.0F, 1.0F, 1.0F);
        textured_corner(1.0F, 1.0F, 1.0F, -1.0F);
        glEnd();
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glColor4f(0.0F, 0.0F, 0.0F, 0.5F);
    const matrix_guard matrix;
    glTranslated(menu->width / 2 - 400, 0.0, 0.0);
    glBegin(GL_QUADS);
    glVertex2i(0, 0);
    glVertex2i(0, menu->height);
    glVertex2i(800, menu->height);
    glVertex2i(800, 0);
    glEnd();
}

void menu_draw_splash(const menu* menu) {
    assert(menu);
    glEnable(GL_TEXTURE_2D);
    tex_bind(TEXTURE_SPLASH);
    glColor3f(1.0F, 1.0F, 1.0F);
    const matrix_guard matrix;
    glTranslated(menu->width / 2 - 300, 50.0, 0.0);
    glScaled(1.5, 1.5, 1.0);
    draw_picture(400.0F, 50.0F);
}

void menu_draw_keyboard(const menu* menu, int32_t size) {
    assert(menu);
    glEnable(GL_TEXTURE_2D);
    tex_bind(TEXTURE_MENU_KEYBOARD);
    glColor3f(1.0F, 1.0F, 1.0F);
    draw_picture(static_cast<float>(size), static_cast<float>(size / 2));
}
