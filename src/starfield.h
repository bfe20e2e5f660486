// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// The drifting stars behind a game: decoration that the game never reads. Its randomness is the
// platform's rand, so two showings of one recording have different stars.

#pragma once

#include <cstdint>

inline constexpr int32_t STARFIELD_STAR_COUNT = 200;

struct star {
    double x;  // playfield units, before the field's rotation
    double y;
    double speed;  // drift towards the origin, playfield units a step
    double size;   // pixels
};

struct starfield {
    double radius;    // playfield units
    double rotation;  // turns
    struct star stars[STARFIELD_STAR_COUNT];
};

// A new field of the given radius, filled; seeds rand from the calendar. Free it with
// starfield_destroy.
starfield* starfield_init(float radius);
void starfield_destroy(starfield* starfield);  // null is allowed

// Gives one star a new place, speed and size.
void starfield_new_star(const starfield* starfield, star* star);

// One game step: every star drifts by its speed, whatever the time; the field turns with the
// `elapsed` ms.
void starfield_update(starfield* starfield, int32_t elapsed);

// Draws the points in the current transformation; leaves texturing disabled.
void starfield_draw(const starfield* starfield);
