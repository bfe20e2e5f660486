// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Draws the single things of a scene: camera, background, hole, ships, shots, in playfield units
// around the black hole. Blending stays on; whoever changes the colour or the blend function puts
// back white and the resting blend. Reads the game's records and never changes them.

#pragma once

#include <cstdint>

#include "qmath.h"

struct ship;
struct shot;

// The scene-drawing record of one game. It carries no state: everything drawn comes from the game.
struct gfx {
    int32_t reserved;
};

gfx* gfx_init();             // owned by the game; free it with gfx_destroy
void gfx_destroy(gfx* gfx);  // null is allowed

// Clears the frame and sets the camera: `focus` is the first player's position, the size is the
// window's in pixels. The view centre lies three quarters of the way from the hole to the focus,
// and the view zooms in towards the hole.
void gfx_begin_frame(gfx* gfx, vector focus, int32_t width, int32_t height);

void gfx_draw_background(gfx* gfx);  // needs GL_TEXTURE_2D enabled

// Rings of the playfield from `radius` inward, and the hole's layers at game time `time` (ms).
// Needs GL_TEXTURE_2D disabled, leaves it enabled.
void gfx_draw_black_hole(gfx* gfx, double radius, int32_t time);
void gfx_draw_disc(gfx* gfx, float radius);    // translucent black; needs texturing off
void gfx_draw_circle(gfx* gfx, float radius);  // red outline; turns texturing off

// One ship with its shield, flashes and sprite; nothing for a dead one whose explosion is over.
void gfx_draw_ship(gfx* gfx, const ship* ship, int32_t time);

// One shot; leaves texturing disabled.
void gfx_draw_shot(gfx* gfx, const shot* shot, int32_t time);
