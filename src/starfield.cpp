// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

#include "starfield.h"

#include <GL/gl.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "assertion.h"
#include "gl_guard.h"
#include "qmath.h"

namespace {

// Distances from the origin at which a star is replaced: swallowed, and lost (as a factor of the
// field's radius).
constexpr double SWALLOWED_DISTANCE = 0.3;
constexpr double LOST_FACTOR = 1.1;

constexpr double MS_PER_TURN = 10000.0;

}  // namespace

starfield* starfield_init(float radius) {
    auto* starfield = static_cast<struct starfield*>(std::calloc(1, sizeof(struct starfield)));
    assert(starfield);
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    starfield->radius = radius;
    for (star& star : starfield->stars) {
        starfield_new_star(starfield, &star);
    }
    return starfield;
}

void starfield_destroy(starfield* starfield) { std::free(starfield); }

void starfield_new_star(const starfield* starfield, star* star) {
    assert(starfield);
    assert(star);
    const double angle = (std::rand() % 1000) * MATH_PI / 500.0;
    const double distance = starfield->radius * ((std::rand() % 1000) / 2000.0 + 0.5);
    star->x = math_sin(angle) * distance;
    star->y = math_cos(angle) * distance;
    star->speed = (std::rand() % 100) / 2000.0 + 0.05;
    star->size = (std::rand() % 10) / 5.0;
}

void starfield_update(starfield* starfield, int32_t elapsed) {
    assert(starfield);
    for (star& star : starfield->stars) {
        const double direction = math_vector_angle({star.x, star.y});
        star.x -= std::cos(direction) * star.speed;
        star.y -= std::sin(direction) * star.speed;
        const vector position = {star.x, star.y};
        const double distance = math_distance(&position, nullptr);
        if (distance < SWALLOWED_DISTANCE || distance > LOST_FACTOR * starfield->radius) {
            starfield_new_star(starfield, &star);
        }
    }
    starfield->rotation += elapsed / MS_PER_TURN;
}

void starfield_draw(const starfield* starfield) {
    assert(starfield);
    glDisable(GL_TEXTURE_2D);
    glColor3f(1.0F, 1.0F, 1.0F);
    const matrix_guard matrix;
    glRotated(starfield->rotation * 360.0, 0.0, 0.0, 1.0);
    glBegin(GL_POINTS);
    double point_size = -1.0;
    for (const star& star : starfield->stars) {
        if (star.size != point_size) {
            glEnd();
            point_size = star.size;
            if (point_size > 0.0) {  // GL rejects 0; such a star keeps the size before it
                glPointSize(static_cast<float>(point_size));
            }
            glBegin(GL_POINTS);
        }
        glVertex3d(star.x, star.y, 0.0);
    }
    glEnd();
}
