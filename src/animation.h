// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Moving pictures: a list of textures shown at a fixed rate, looping or once. An animation has no
// clock; the frame is a function of the game time that the caller passes, so a replay shows the
// same pictures. The game also asks whether one has played out, which makes that part of the
// simulation. Whoever creates an animation owns it.

#pragma once

#include <cstdint>

#include "texture_id.h"

enum animation_type : int32_t {
    ANIMATION_SHIP,
    ANIMATION_SHIELD_FLASH,
    ANIMATION_SHIELD_BLUE,
    ANIMATION_SHIELD_RED,
    ANIMATION_SHOT_BLUE,
    ANIMATION_SHOT_RED,
    ANIMATION_ENEMY_RED,
    ANIMATION_ENEMY_BLUE,
    ANIMATION_EXPLOSION,
    ANIMATION_MUZZLE_FLASH,
    ANIMATION_CHAIN,
    ANIMATION_TYPE_COUNT
};

// A start time that lies so far back that a one-shot animation is over when a game begins: it
// shows only once restarted.
inline constexpr int32_t ANIMATION_LONG_AGO = -10000;

struct animation {
    int32_t start_time;  // game time of frame 0, ms
    double scale_x;      // half the quad's width, in the caller's units
    double scale_y;      // half its height; negative turns the picture upside down
    double offset_x;     // centre of the quad, in the caller's units
    double offset_y;
    int32_t loop;        // 1: for ever, 0: once
    texture_id* frames;  // owned
    int32_t frame_count;
    int32_t frame_duration;  // ms
};

// A new animation whose frame 0 begins at `start_time` (ms). A type that does not exist has no
// frames. The caller frees it with animation_destroy.
animation* animation_init(int32_t type, int32_t start_time);
void animation_destroy(animation* anim);  // null is allowed

int32_t animation_is_done(const animation* anim, int32_t time);  // 1: a one-shot has played out
int32_t animation_is_looping(const animation* anim);
void animation_restart(animation* anim, int32_t time);

// Index into `frames` of the frame due at `time` (ms); frame 0 before the start. For animations
// with frames that are not done.
int32_t animation_frame_index(const animation* anim, int32_t time);

// Draws the frame due at `time` in the caller's transformation, colour and blend mode (texturing
// is the caller's to enable), or nothing when done.
void animation_render(const animation* anim, int32_t time);
