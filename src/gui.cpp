// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "gui.h"

#include <GL/gl.h>
#include <SDL.h>

#include <algorithm>
#include <cmath>

#include "animation.h"
#include "assertion.h"
#include "font.h"
#include "game.h"
#include "gl_guard.h"
#include "input.h"
#include "quads.h"
#include "texture.h"

namespace {

// The largest gauge value seen: the full scale. And the bar's width in pixels as last drawn.
int32_t gauge_max = 1;
int32_t gauge_shown = 0;

constexpr float DIGIT_CELL_WIDTH = 51.0F;  // of the digits font at the HUD's scale

void textured_corner(float s, float t, int32_t x, int32_t y) {
    glTexCoord2f(s, t);
    glVertex2i(x, y);
}

// The bar closes half of the distance to its target each frame; a last pixel stays open.
void follow_target(int32_t width, int32_t value) {
    const auto target = static_cast<int32_t>(int64_t{width} * value / gauge_max);
    if (target != gauge_shown) {
        gauge_shown = gauge_shown + (target - gauge_shown) / 2;
    }
    gauge_max = std::max(gauge_max, value);
}

// The bar shows the part of its picture that lies under it: picture and screen share their
// horizontal coordinate.
void draw_bar(int32_t width, int32_t gauge_height, int32_t color) {
    const int32_t middle = width / 2;
    const int32_t half = gauge_shown / 2;
    const auto share = static_cast<float>(gauge_shown / (2.0 * width));
    tex_bind(TEXTURE_GAUGE_BAR);
    glBegin(GL_QUADS);
    if (color != COLOR_BLUE) {
        const float left = 0.5F - share;
        textured_corner(left, 0.0F, middle - half, 0);
        textured_corner(left, 1.0F, middle - half, gauge_height);
        textured_corner(0.5F, 1.0F, middle, gauge_height);
        textured_corner(0.5F, 0.0F, middle, 0);
    } else {
        const float right = 0.5F + share;
        textured_corner(0.5F, 0.0F, middle, 0);
        textured_corner(0.5F, 1.0F, middle, gauge_height);
        textured_corner(right, 1.0F, middle + half, gauge_height);
        textured_corner(right, 0.0F, middle + half, 0);
    }
    glEnd();
}

}  // namespace

void gui_ortho_begin(int32_t width, int32_t height) {
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, width, height, 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
}

void gui_ortho_end() {
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

void gui_draw(const ship* player, const input* input, int32_t time_left, int32_t now) {
    assert(player);
    assert(input);
    const SDL_Surface* surface = SDL_GetVideoSurface();
    assert(surface);
    const int32_t width = surface->w;
    const int32_t height = surface->h;
    gui_ortho_begin(width, height);

    glColor3f(1.0F, 1.0F, 1.0F);
    font_print(10.0F, static_cast<float>(height - 20), 0.5F, "%3.2f",
               static_cast<double>(input_get_fps(input)));
    glColor4f(1.0F, 1.0F, 1.0F, 0.8F);
    font_print_digits(20.0F, 15.0F, 0.5F, "%-10d", time_left / 100);  // tenths of a second
    font_print_digits(static_cast<float>(width - 530), 15.0F, 0.5F, "%10d", player->score);

    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    glEnable(GL_TEXTURE_2D);
    {
        const matrix_guard matrix;
        glTranslated(width / 2, 100.0, 0.0);
        animation_render(player->chain_animation, now);
    }
    gui_draw_gauge(width, height, player->chain_count, player->chain_shown, player->chain_color);
    gui_ortho_end();
}

void gui_draw_gauge(int32_t width, int32_t height, int32_t value, int32_t number, int32_t color) {
    const int32_t gauge_height = width / 8;
    follow_target(width, value);

    const int32_t digits =
        number <= 0 ? 1 : static_cast<int32_t>(std::floor(std::log10(number))) + 1;
    glColor4f(1.0F, 1.0F, 1.0F, 0.8F);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const auto number_x =
        static_cast<float>(width / 2) - static_cast<float>(digits) * DIGIT_CELL_WIDTH / 2.0F;
    const auto number_y = static_cast<float>(height - 0.75 * gauge_height);
    font_print_digits(number_x, number_y, 0.5F, "%d", number);

    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    glEnable(GL_TEXTURE_2D);
    const matrix_guard matrix;
    glTranslated(0.0, height - gauge_height, 0.0);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    draw_bar(width, gauge_height, color);
    tex_bind(TEXTURE_GAUGE);
    draw_picture(static_cast<float>(width), static_cast<float>(gauge_height));
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}
