// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "gfx.h"

#include <GL/gl.h>

#include <cmath>
#include <cstdlib>

#include "animation.h"
#include "assertion.h"
#include "game.h"
#include "gl_guard.h"
#include "quads.h"
#include "texture.h"

namespace {

constexpr double SPRITE_DEPTH = 0.1;  // has no visible effect: there is no depth test
constexpr double SHIP_SCALE = 0.3;
constexpr double BACKGROUND_SCALE = 20.0;

constexpr int32_t RING_COUNT = 10;
constexpr double SMALLEST_RING = 0.5;

// The outline's points, all in single precision. Decoration, so the platform's sine will do.
void emit_circle(float radius) {
    for (int32_t k = 0;; ++k) {
        const float t = 0.05F * static_cast<float>(k);
        if (!(t < 6.28F)) {
            break;
        }
        glVertex3f(radius * std::cos(t), radius * std::sin(t), 0.0F);
    }
}

void rotate_to_heading(double angle) { glRotated(math_heading_to_degrees(angle), 0.0, 0.0, 1.0); }

}  // namespace

gfx* gfx_init() {
    auto* gfx = static_cast<struct gfx*>(std::calloc(1, sizeof(struct gfx)));
    assert(gfx);
    return gfx;
}

void gfx_destroy(gfx* gfx) { std::free(gfx); }

void gfx_begin_frame(gfx* gfx, vector focus, int32_t width, int32_t height) {
    assert(gfx);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glTranslated(width / 2, height / 2, 0.0);
    glScaled(45.0, 45.0, 1.0);
    glScaled(height / 600.0, height / 600.0, 1.0);
    const double zoom = 2.0 - 0.12 * math_distance(&focus, nullptr);
    glScaled(zoom, zoom, zoom);
    glTranslated(-0.75 * focus.x, -0.75 * focus.y, 0.0);
}

void gfx_draw_background(gfx* gfx) {
    assert(gfx);
    tex_bind(TEXTURE_SPACE);
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    const matrix_guard matrix;
    glScaled(BACKGROUND_SCALE, BACKGROUND_SCALE, 1.0);
    draw_unit_quad();
}

void gfx_draw_black_hole(gfx* gfx, double radius, int32_t time) {
    assert(gfx);
    bool disc_drawn = false;
    for (int32_t i = 0; i < RING_COUNT; ++i) {
        const double ring = radius - i;
        if (!(ring > SMALLEST_RING)) {
            continue;
        }
        glLineWidth(i == RING_COUNT - 1 ? 1.0F : static_cast<float>((RING_COUNT - i) / 2));
        if (!disc_drawn) {
            disc_drawn = true;
            gfx_draw_disc(gfx, static_cast<float>(ring));
        }
        gfx_draw_circle(gfx, static_cast<float>(ring));
    }

    // The layers turn by multiples of one angle; scales and rotations of a layer build on those
    // of the layer before it.
    const float angle = static_cast<float>(-int64_t{time}) / 100.0F;  // degrees
    glEnable(GL_TEXTURE_2D);
    {
        const matrix_guard matrix;
        glRotatef(angle, 0.0F, 0.0F, 1.0F);
        glScalef(10.0F, 10.0F, 1.0F);
        tex_bind(TEXTURE_TWIRL);
        glColor4f(1.0F, 1.0F, 1.0F, 0.1F);
        draw_unit_quad();
        glScalef(2.0F, 2.0F, 1.0F);
        glRotatef(angle, 0.0F, 0.0F, 1.0F);
        glColor4f(1.0F, 0.7F, 0.7F, 0.1F);
        draw_unit_quad();
    }
    tex_bind(TEXTURE_BLACK_HOLE_RAY);
    {
        const matrix_guard matrix;
        glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
        glScalef(3.0F, 3.0F, 1.0F);
        glRotatef(4.0F * angle, 0.0F, 0.0F, 1.0F);
        draw_unit_quad();
        glRotatef(-6.0F * angle, 0.0F, 0.0F, 1.0F);
        draw_unit_quad();
        glColor4f(1.0F, 1.0F, 1.0F, 0.5F);
        glScalef(2.0F, 2.0F, 1.0F);
        glRotatef(-6.0F * angle, 0.0F, 0.0F, 1.0F);
        draw_unit_quad();
    }
    const matrix_guard matrix;
    tex_bind(TEXTURE_BLACK_HOLE);
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    draw_unit_quad();
}

void gfx_draw_disc(gfx* gfx, float radius) {
    assert(gfx);
    glColor4f(0.0F, 0.0F, 0.0F, 0.3F);
    glBegin(GL_POLYGON);
    emit_circle(radius);
    glEnd();
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
}

void gfx_draw_circle(gfx* gfx, float radius) {
    assert(gfx);
    glDisable(GL_TEXTURE_2D);
    glColor3f(1.0F, 0.0F, 0.0F);
    glBegin(GL_LINE_LOOP);
    emit_circle(radius);
    glEnd();
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
}

void gfx_draw_ship(gfx* gfx, const ship* ship, int32_t time) {
    assert(gfx);
    assert(ship);
    if (ship->alive == 0 &&
        (ship->animation == nullptr || animation_is_done(ship->animation, time) != 0)) {
        return;
    }
    const matrix_guard matrix;
    glTranslated(ship->position.x, ship->position.y, SPRITE_DEPTH);
    glScaled(SHIP_SCALE, SHIP_SCALE, 1.0);
    if (ship->player_number != 0) {
        if (ship->alive != 0) {
            glColor3f(1.0F, 1.0F, 1.0F);
        } else {
            glColor3f(1.0F, 0.0F, 0.0F);
        }
    }
    if (ship->shield_animation != nullptr) {  // the shield does not turn with the ship
        animation_render(ship->shield_animation, time);
    }
    if (ship->shield_flash != nullptr) {
        animation_render(ship->shield_flash, time);
    }
    rotate_to_heading(ship->angle);
    assert(ship->animation);
    animation_render(ship->animation, time);
    {
        const additive_guard additive;
        animation_render(ship->muzzle_flash, time);
    }
    glColor3f(1.0F, 1.0F, 1.0F);
}

void gfx_draw_shot(gfx* gfx, const shot* shot, int32_t time) {
    assert(gfx);
    assert(shot);
    constexpr texture_id TEXTURES[2][2] = {
        // by side and colour
        {TEXTURE_SHOT_BLUE, TEXTURE_SHOT_RED},
        {TEXTURE_ENEMY_SHOT_BLUE, TEXTURE_ENEMY_SHOT_RED},
    };
    const bool from_enemy = shot->from_enemy != 0;
    glColor3f(1.0F, 1.0F, 1.0F);
    {
        const matrix_guard matrix;
        glTranslated(shot->position.x, shot->position.y, SPRITE_DEPTH);
        rotate_to_heading(shot->angle);
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
        const additive_guard additive;
        if (from_enemy) {  // stretched along its flight
            const auto speed = static_cast<float>(math_distance(&shot->velocity, nullptr));
            glScalef(0.1F, 0.1F + 0.025F * speed, 1.0F);
        } else {
            glScalef(0.4F, 0.4F, 1.0F);
        }
        tex_bind(TEXTURES[from_enemy ? 1 : 0][shot->color == COLOR_BLUE ? 0 : 1]);
        if (shot->animation != nullptr) {
            animation_render(shot->animation, time);
        } else {
            draw_unit_quad();
        }
    }
    glDisable(GL_TEXTURE_2D);
}
